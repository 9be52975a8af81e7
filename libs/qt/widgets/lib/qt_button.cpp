#include "qt_button.h"

#include "core_check.h"
#include "qt_buttonaccess.h"
#include "qt_buttonpictures.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

namespace pictures = NS_QT::ButtonPictures;

QT_Button::QT_Button(const QPixmap& picture, QWidget* parent) : QWidget(parent), d_normal(picture) {
    NS_QT::installButtonAccess();
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QT_Button::~QT_Button() = default;

void QT_Button::setPicture(const QPixmap& picture) {
    d_normal = picture;
    d_disabled = {};
    forgetLooks();
    updateGeometry();
}

void QT_Button::setHotStyle(int32_t style) {
    if (d_hotStyle == style)
        return;
    d_hotStyle = style;
    forgetLooks();
}

void QT_Button::setOpacity(double opacity) {
    d_opacity = opacity;
    update();
}

void QT_Button::forgetLooks() {
    d_hot = {};
    d_pressed = {};
    update();
}

QRect QT_Button::centred(const QPixmap& picture) const {
    const QSize size = pictures::sizeOf(picture);
    return {QPoint((width() - size.width()) / 2, (height() - size.height()) / 2), size};
}

bool QT_Button::hitTest(const QPoint& point) const {
    const QPoint margin = centred(d_normal).topLeft();
    return point.x() > margin.x() && point.x() < width() - margin.x() && point.y() > margin.y() &&
           point.y() < height() - margin.y();
}

QSize QT_Button::sizeHint() const {
    constexpr int kRoom = 2 * pictures::kHaloWidth;
    return pictures::sizeOf(d_normal) + QSize(kRoom, kRoom);
}

QPixmap QT_Button::makeHot() const {
    switch (d_hotStyle) {
    case Halo:
        return pictures::withHalo(d_normal);
    case Outline:
        return pictures::withOutline(d_normal);
    default:
        CHECKF(d_hotStyle == Plain);
        return d_normal;
    }
}

const QPixmap& QT_Button::hot() {
    if (d_hot.isNull())
        d_hot = makeHot();
    return d_hot;
}

const QPixmap& QT_Button::pressed() {
    if (d_pressed.isNull())
        d_pressed = pictures::pressed(hot(), d_normal);
    return d_pressed;
}

const QPixmap& QT_Button::disabled() {
    if (d_disabled.isNull())
        d_disabled = pictures::disabled(d_normal);
    return d_disabled;
}

const QPixmap& QT_Button::currentPicture() {
    if (!isEnabled())
        return disabled();
    if (d_isDown)
        return looksPressed() ? pressed() : d_normal;
    return d_isHover ? hot() : d_normal;
}

void QT_Button::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(d_opacity);
    if (!d_normal.isNull()) {
        const QPixmap& picture = currentPicture();
        const QPoint shift = isEnabled() && looksPressed() ? QPoint(1, 1) : QPoint();
        painter.drawPixmap(centred(picture).topLeft() + shift, picture);
    }
    constexpr int kRoom = pictures::kHaloWidth;
    d_focusMark.draw(*this, painter,
                     centred(d_normal).adjusted(-kRoom, -kRoom, kRoom, kRoom) & rect());
}

void QT_Button::setHover(bool hover) {
    if (d_isHover == hover)
        return;
    d_isHover = hover;
    update();
}

bool QT_Button::event(QEvent* event) {
    if (event->type() == QEvent::Enter)
        setHover(true);
    else if (event->type() == QEvent::Leave)
        setHover(false);
    else if (event->type() == QEvent::WindowDeactivate)
        cancelPress(); // the release may go to another window
    return QWidget::event(event);
}

void QT_Button::press(int key) {
    d_isDown = true;
    d_pressKey = key;
    update();
    if (d_schedule.empty())
        return;
    d_tickCount = 0;
    scheduleTick();
}

// Whether that ended a sequence of ticks.
bool QT_Button::endPress() {
    d_isDown = false;
    d_pressKey = 0;
    update();
    if (d_timerId <= 0)
        return false;
    kern::TimerInterface::killTimer(d_timerId);
    d_timerId = 0;
    return true;
}

void QT_Button::release(bool inside) {
    const QPointer<QT_Button> self(this);
    if (endPress())
        emit spinningComplete();
    if (self != nullptr && inside)
        emit clicked();
}

// Qt goes on with a widget that it disables or hides: slots are called later.
void QT_Button::cancelPress() {
    if (d_isDown && endPress())
        QMetaObject::invokeMethod(this, "spinningComplete", Qt::QueuedConnection);
}

void QT_Button::scheduleTick() {
    const auto entry = d_schedule.find(d_tickCount);
    if (!CHECKF(entry != d_schedule.end()))
        return;
    if (d_timerId > 0)
        kern::TimerInterface::killTimer(d_timerId);
    d_period = entry->second;
    d_timerId = kern::TimerInterface::startTimer(static_cast<uint32_t>(d_period));
}

void QT_Button::timerExpired(int64_t id) {
    if (id != d_timerId)
        return;
    const QPointer<QT_Button> self(this);
    tick();
    if (self == nullptr || id != d_timerId)
        return; // deleted, or the press was taken back
    ++d_tickCount;
    scheduleTick();
}

void QT_Button::tick() {
    if (looksPressed())
        emit clicked();
}

void QT_Button::click() {
    if (isEnabled())
        emit clicked();
}

void QT_Button::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !isEnabled() || d_isDown || !hitTest(event->pos())) {
        event->ignore();
        return;
    }
    d_isHover = true;
    press(0);
}

void QT_Button::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && d_isDown && d_pressKey == 0)
        release(hitTest(event->pos()));
    else
        event->ignore();
}

void QT_Button::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && d_isDown) {
        cancelPress();
    } else if (!NS_QT::isPressKey(event->key())) {
        QWidget::keyPressEvent(event);
    } else if (!event->isAutoRepeat() && !d_isDown) {
        d_focusMark.keyPressed();
        press(event->key());
    }
}

void QT_Button::keyReleaseEvent(QKeyEvent* event) {
    if (!NS_QT::isPressKey(event->key()))
        QWidget::keyReleaseEvent(event);
    else if (!event->isAutoRepeat() && d_isDown && event->key() == d_pressKey)
        release(true);
}

void QT_Button::focusInEvent(QFocusEvent* event) {
    d_focusMark.focusIn(event->reason());
    QWidget::focusInEvent(event);
}

void QT_Button::focusOutEvent(QFocusEvent* event) {
    if (d_pressKey != 0)
        cancelPress();
    QWidget::focusOutEvent(event);
}

void QT_Button::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        cancelPress();
}

void QT_Button::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    cancelPress();
}
