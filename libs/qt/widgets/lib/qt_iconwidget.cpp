#include "qt_iconwidget.h"

#include "qt_buttonaccess.h"

#include <QAccessibleWidget>
#include <QPainter>

namespace NS_QT {
namespace {

class IconAccess : public QAccessibleWidget {
public:
    explicit IconAccess(QWidget* icon) : QAccessibleWidget(icon, QAccessible::Graphic) {}

    QString text(QAccessible::Text kind) const override {
        return nameOrToolTip(*widget(), kind, QAccessibleWidget::text(kind));
    }
};

QAccessibleInterface* makeIconAccess(const QString& className, QObject* object) {
    const bool isIcon = className == QLatin1String(IconWidget::staticMetaObject.className());
    return isIcon ? new IconAccess(static_cast<IconWidget*>(object)) : nullptr;
}

} // namespace

IconWidget::IconWidget(QWidget* parent) : IconWidget({}, IconSet::Size24, parent) {}

IconWidget::IconWidget(const QIcon& icon, int32_t sizeCode, QWidget* parent)
    : QWidget(parent), d_icon(icon), d_sizeCode(sizeCode), d_edge(IconSet::edgeLength(sizeCode)) {
    QAccessible::installFactory(&makeIconAccess); // again does no harm
}

void IconWidget::setIcon(const QIcon& icon) {
    if (d_icon.cacheKey() == icon.cacheKey())
        return;
    d_icon = icon;
    update();
    emit iconChanged();
}

void IconWidget::setSizeCode(int32_t sizeCode) {
    if (d_sizeCode == sizeCode)
        return;
    d_sizeCode = sizeCode;
    d_edge = IconSet::edgeLength(sizeCode);
    updateGeometry();
    update();
    emit sizeCodeChanged();
}

QSize IconWidget::sizeHint() const { return {d_edge, d_edge}; }

void IconWidget::paintEvent(QPaintEvent*) {
    const auto mode = IconSet::mode(isEnabled() ? IconSet::Normal : IconSet::Disabled);
    const QPixmap picture = d_icon.pixmap(window()->windowHandle(), sizeHint(), mode, QIcon::Off);
    const QSize size = picture.size() / picture.devicePixelRatio();
    const QPoint topLeft = rect().center() + QPoint(1 - size.width() / 2, 1 - size.height() / 2);
    QPainter(this).drawPixmap(topLeft, picture);
}

} // namespace NS_QT
