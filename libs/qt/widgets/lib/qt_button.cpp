#include "qt_button.h"

#include "core_check.h"
#include "qt_buttonaccess.h"
#include "qt_buttonpictures.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>

namespace pictures = NS_QT::ButtonPictures;

QT_Button::Schedule QT_Button::repeating(int32_t first, int32_t then) {
    constexpr int32_t kHour = 60 * 60 * 1000;
    constexpr int32_t kShortest = 10; // which bounds the schedule's size, too
    const int32_t period = std::max(then, kShortest);
    Schedule schedule{{0, first}};
    for (int32_t tick = 1; tick <= kHour / period; ++tick)
        schedule.emplace_hint(schedule.end(), tick, period);
    return schedule;
}

QT_Button::QT_Button(QWidget* parent) : QT_Button(QPixmap(), parent) {}

QT_Button::QT_Button(const QPixmap& picture, QWidget* parent)
    : PressWidget(parent), d_normal(picture) {
    NS_QT::installButtonAccess();
}

QT_Button::~QT_Button() = default;

void QT_Button::setPicture(const QPixmap& picture) {
    if (d_normal.cacheKey() == picture.cacheKey())
        return;
    d_normal = picture;
    d_disabled = {};
    forgetLooks();
    updateGeometry();
    emit pictureChanged();
}

void QT_Button::setHotStyle(int32_t style) {
    if (d_hotStyle == style)
        return;
    d_hotStyle = style;
    forgetLooks();
    emit hotStyleChanged();
}

void QT_Button::setOpacity(double opacity) {
    if (d_opacity == opacity)
        return;
    d_opacity = opacity;
    update();
    emit opacityChanged(opacity);
}

void QT_Button::setSchedule(const Schedule& schedule) {
    if (d_schedule == schedule)
        return;
    d_schedule = schedule;
    emit scheduleChanged();
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

const QPixmap& QT_Button::pressedLook() {
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
    if (isDown())
        return looksPressed() ? pressedLook() : d_normal;
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
    painter.setOpacity(1); // a button that fades still has the keyboard
    constexpr int kRoom = pictures::kHaloWidth;
    drawFocus(painter, centred(d_normal).adjusted(-kRoom, -kRoom, kRoom, kRoom) & rect());
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
    return PressWidget::event(event);
}

// Beside a press, hover is about the widget, not about the picture in it.
void QT_Button::mouseMoveEvent(QMouseEvent* event) {
    setHover(rect().contains(event->pos()));
    PressWidget::mouseMoveEvent(event);
}

void QT_Button::mouseReleaseEvent(QMouseEvent* event) {
    setHover(rect().contains(event->pos()));
    PressWidget::mouseReleaseEvent(event);
}

void QT_Button::pressBegan() {
    if (pressKey() == 0)
        setHover(true);
    update();
    if (!d_schedule.empty()) {
        d_tickCount = 0;
        scheduleTick();
    }
    NS_QT::tellPressed(this);
    emit pressed();
}

// Whether a sequence of them was running.
bool QT_Button::endTicks() {
    update();
    if (d_timerId <= 0)
        return false;
    killTimer(d_timerId);
    d_timerId = 0;
    return true;
}

void QT_Button::pressReleased(bool inside) {
    const QPointer<QT_Button> self(this);
    endPress();
    const bool ticked = endTicks();
    NS_QT::tellPressed(this);
    emit released();
    if (self != nullptr && ticked)
        emit spinningComplete();
    if (self != nullptr && inside)
        emit clicked();
    if (self != nullptr && inside)
        emit triggered();
}

void QT_Button::pressTakenBack(int) {
    const bool ticked = endTicks();
    NS_QT::tellPressed(this);
    QMetaObject::invokeMethod(this, "released", Qt::QueuedConnection);
    if (ticked)
        QMetaObject::invokeMethod(this, "spinningComplete", Qt::QueuedConnection);
}

void QT_Button::scheduleTick() {
    const auto entry = d_schedule.find(d_tickCount);
    if (!CHECKF(entry != d_schedule.end()))
        return;
    if (d_timerId > 0)
        killTimer(d_timerId);
    d_period = entry->second;
    d_timerId = startTimer(static_cast<uint32_t>(d_period));
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
    if (!isEnabled())
        return;
    const QPointer<QT_Button> self(this);
    emit clicked();
    if (self != nullptr)
        emit triggered();
}
