#include "qt_presswidget.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace NS_QT {

PressWidget::PressWidget(QWidget* parent) : QWidget(parent) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PressWidget::drawFocus(QPainter& painter, const QRect& rect) const {
    d_focusMark.draw(*this, painter, rect);
}

void PressWidget::begin(int target, int key) {
    takePressBack();
    d_target = target;
    d_key = key;
    d_isHeld = true;
    ++d_number;
    pressBegan();
}

void PressWidget::release(bool inside) {
    d_isHeld = false;
    pressReleased(inside);
}

void PressWidget::endPress() {
    d_target = -1;
    d_key = 0;
    d_isHeld = false;
}

// Once released, a press ends when its slots have returned.
void PressWidget::takePressBack() {
    if (!d_isHeld)
        return;
    const int target = d_target;
    endPress();
    pressTakenBack(target);
}

void PressWidget::mousePressEvent(QMouseEvent* event) {
    const int target = event->button() == Qt::LeftButton ? targetAt(event->pos()) : -1;
    if (target == -1)
        event->ignore();
    else if (!d_isHeld || target != d_target)
        begin(target, 0);
}

// While a mouse button is held, Qt tells its widget by moves alone where the pointer is.
void PressWidget::mouseMoveEvent(QMouseEvent* event) {
    if (isHeldByMouse())
        pressMoved(targetAt(event->pos()) == d_target);
    else
        event->ignore();
}

void PressWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && isHeldByMouse())
        release(targetAt(event->pos()) == d_target);
    else
        event->ignore();
}

void PressWidget::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && d_isHeld) {
        takePressBack();
    } else if (!isPressKey(event->key())) {
        QWidget::keyPressEvent(event);
    } else if (!event->isAutoRepeat() && !d_isHeld && keyTarget() != -1) {
        noteKeyPressed();
        begin(keyTarget(), event->key());
    }
}

void PressWidget::keyReleaseEvent(QKeyEvent* event) {
    if (!isPressKey(event->key()))
        QWidget::keyReleaseEvent(event);
    else if (!event->isAutoRepeat() && d_isHeld && event->key() == d_key)
        release(true);
}

void PressWidget::focusInEvent(QFocusEvent* event) {
    d_focusMark.focusIn(event->reason());
    QWidget::focusInEvent(event);
}

void PressWidget::focusOutEvent(QFocusEvent* event) {
    if (d_key != 0)
        takePressBack();
    QWidget::focusOutEvent(event);
}

void PressWidget::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        takePressBack();
}

void PressWidget::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    takePressBack();
}

bool PressWidget::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate)
        takePressBack(); // the release may go to another window
    return QWidget::event(event);
}

} // namespace NS_QT
