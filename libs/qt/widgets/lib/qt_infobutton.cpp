#include "qt_infobutton.h"

#include <QEvent>
#include <QMessageBox>
#include <QPointer>
#include <QStyle>

namespace NS_QT {

InfoButton::InfoButton(int32_t kind, const QString& title, const QString& text, QWidget* parent)
    : QPushButton(parent), d_kind(kind), d_title(title), d_text(text) {
    setAccessibleName(title);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateIcon();
    connect(this, &QPushButton::clicked, this, &InfoButton::showMessage);
}

// Not one of QMessageBox's static functions: these keep the box on the stack, where it
// must not be when its parent is deleted meanwhile.
void InfoButton::showMessage() {
    const auto icon = isWarning() ? QMessageBox::Warning : QMessageBox::Information;
    const QPointer<QMessageBox> box = new QMessageBox(icon, d_title, d_text, QMessageBox::Ok, this);
    box->exec();
    delete box;
}

void InfoButton::changeEvent(QEvent* event) {
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::StyleChange)
        updateIcon();
}

void InfoButton::updateIcon() {
    const auto sign = isWarning() ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    setIcon(style()->standardIcon(sign, nullptr, this));
}

} // namespace NS_QT
