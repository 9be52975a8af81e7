#include "qt_iconwidget.h"

#include <QPainter>

namespace NS_QT {

IconWidget::IconWidget(QWidget* parent) : IconWidget({}, IconSet::Size24, parent) {}

IconWidget::IconWidget(const QIcon& icon, int32_t sizeCode, QWidget* parent)
    : QWidget(parent), d_icon(icon), d_sizeCode(sizeCode) {}

void IconWidget::setIcon(const QIcon& icon) {
    d_icon = icon;
    update();
}

void IconWidget::setSizeCode(int32_t sizeCode) {
    if (d_sizeCode == sizeCode)
        return;
    d_sizeCode = sizeCode;
    updateGeometry();
    update();
}

QSize IconWidget::sizeHint() const {
    const int edge = IconSet::edgeLength(d_sizeCode);
    return {edge, edge};
}

void IconWidget::paintEvent(QPaintEvent*) {
    const int32_t mode = isEnabled() ? IconSet::Normal : IconSet::Disabled;
    const QPixmap picture = IconSet::pixmap(d_icon, d_sizeCode, mode, window()->windowHandle());
    const QSize size = picture.size() / picture.devicePixelRatio();
    const QPoint topLeft = rect().center() + QPoint(1 - size.width() / 2, 1 - size.height() / 2);
    QPainter(this).drawPixmap(topLeft, picture);
}

} // namespace NS_QT
