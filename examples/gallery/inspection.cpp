#include "inspection.h"

#include "qt_button.h"
#include "qt_buttonstrip.h"
#include "qt_iconwidget.h"

#include <QAccessible>
#include <QWindow>

namespace gallery {
namespace {

QString name(QWidget* widget) {
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

// The picture that the widget shows; null for widgets that have none.
QPixmap pictureOf(QWidget* widget) {
    if (const auto* const button = qobject_cast<QT_Button*>(widget))
        return button->picture();
    if (const auto* const strip = qobject_cast<QT_ButtonStrip*>(widget))
        return strip->picture();
    if (const auto* const icon = qobject_cast<NS_QT::IconWidget*>(widget))
        return NS_QT::IconSet::pixmap(icon->icon(), icon->sizeCode(), NS_QT::IconSet::Normal,
                                      widget->window()->windowHandle());
    return {};
}

} // namespace

QStringList inspect(const QWidget& window) {
    QStringList faults;
    const auto blame = [&](const QWidget* widget, const char* fault) {
        faults << QString("%1: %2").arg(widget->metaObject()->className(), fault);
    };
    for (QWidget* const widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisible())
            continue;
        const bool takesFocus =
            widget->focusPolicy() != Qt::NoFocus && widget->focusProxy() == nullptr;
        if (takesFocus && name(widget).isEmpty())
            blame(widget, "takes the focus and has no name");
        const QPixmap picture = pictureOf(widget);
        if (!picture.isNull() && picture.devicePixelRatio() < widget->devicePixelRatioF())
            blame(widget, "its picture is enlarged");
    }
    return faults;
}

} // namespace gallery
