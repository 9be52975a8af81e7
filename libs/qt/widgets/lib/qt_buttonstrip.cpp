#include "qt_buttonstrip.h"

#include "core_check.h"
#include "qt_buttonaccess.h"
#include "qt_buttonpictures.h"

#include <QColor>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPointer>
#include <QRegion>
#include <QShortcutEvent>
#include <QToolTip>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

namespace pictures = NS_QT::ButtonPictures;

namespace {

QPixmap makeDown(const QPixmap& strip, const QVector<QRect>& buttons) {
    constexpr QColor kShade(0, 0, 0, 64);
    QPixmap down = strip;
    QPainter painter(&down);
    for (const QRect& rect : buttons)
        painter.fillRect(rect, kShade);
    return down;
}

} // namespace

struct QT_ButtonStrip::Button {
    QString toolTip;
    QRect rect;
    bool checked = false;
    bool enabled = true;
    QKeySequence shortcut;
    int shortcutId = 0;
};

struct QT_ButtonStrip::Data {
    std::unique_ptr<Images> images;
    QRect pressedRect;
    std::vector<Button> buttons;
    bool checkable = false;
    bool exclusive = false;
    bool showPressed = false;
    bool evenly = false;        // the picture is divided
    bool evenlyFromNow = false; // the next pictures are
    int current = 0;
};

QT_ButtonStrip::Images::Images(const QPixmap& picture, const QVector<QRect>& buttons)
    : strip(picture) {
    if (!picture.isNull()) {
        down = makeDown(picture, buttons);
        disabled = pictures::faded(picture);
    }
    for (const QRect& rect : buttons)
        addButton(rect);
}

void QT_ButtonStrip::Images::addButton(const QRect& rect) {
    rects.setOwnsItems(true);
    auto item = std::make_unique<QRect>(rect);
    if (rects.append(item.get()))
        static_cast<void>(item.release());
}

QT_ButtonStrip::QT_ButtonStrip(QWidget* parent) : QT_ButtonStrip(nullptr, parent) {}

QT_ButtonStrip::QT_ButtonStrip(const QPixmap& picture, const QVector<QRect>& buttons,
                               QWidget* parent)
    : QT_ButtonStrip(std::make_unique<Images>(picture, buttons), parent) {}

QT_ButtonStrip::QT_ButtonStrip(std::unique_ptr<Images> images, QWidget* parent)
    : PressWidget(parent), d_data(std::make_unique<Data>()) {
    NS_QT::installButtonAccess();
    setImages(std::move(images));
}

QT_ButtonStrip::~QT_ButtonStrip() = default;

void QT_ButtonStrip::setImages(std::unique_ptr<Images> images) {
    takePressBack();
    d_data->evenly = std::exchange(d_data->evenlyFromNow, false);
    d_data->images = images != nullptr ? std::move(images) : std::make_unique<Images>();
    core::GList<QRect>& rects = d_data->images->rects;
    std::vector<Button>& buttons = d_data->buttons;
    for (size_t index = rects.count(); index < buttons.size(); ++index)
        releaseShortcut(buttons[index].shortcutId);
    buttons.resize(rects.count());
    size_t index = 0;
    for (const QRect* rect = rects.first(); rect != nullptr; rect = rects.next())
        buttons[index++].rect = *rect;
    d_data->current = std::clamp(d_data->current, 0, std::max(0, count() - 1));
    updateGeometry();
    update();
    emit buttonsChanged();
}

const QPixmap& QT_ButtonStrip::picture() const { return d_data->images->strip; }

void QT_ButtonStrip::setPicture(const QPixmap& picture) {
    if (picture.cacheKey() == this->picture().cacheKey())
        return;
    if (d_data->evenly) {
        divide(picture, count());
        return;
    }
    QVector<QRect> rects;
    for (const Button& button : d_data->buttons)
        rects.append(button.rect);
    setImages(std::make_unique<Images>(picture, rects));
}

void QT_ButtonStrip::setButtonCount(int count) {
    if (!d_data->evenly || count != this->count())
        divide(picture(), count);
}

void QT_ButtonStrip::divide(const QPixmap& picture, int count) {
    const QSize size = pictures::sizeOf(picture);
    QVector<QRect> rects;
    for (int index = 0; index < count; ++index) {
        const int left = size.width() * index / count;
        rects.append({left, 0, size.width() * (index + 1) / count - left, size.height()});
    }
    d_data->evenlyFromNow = true; // told before a slot may delete the strip
    setImages(std::make_unique<Images>(picture, rects));
}

int QT_ButtonStrip::count() const { return static_cast<int>(d_data->buttons.size()); }

QT_ButtonStrip::Button* QT_ButtonStrip::buttonOf(int index) const {
    return index >= 0 && index < count() ? &d_data->buttons[static_cast<size_t>(index)] : nullptr;
}

QRect QT_ButtonStrip::buttonRect(int index) const {
    return isButton(index) ? buttonOf(index)->rect : QRect();
}

int QT_ButtonStrip::buttonAt(const QPoint& point) const {
    core::GList<QRect>& rects = d_data->images->rects;
    int index = 0;
    for (const QRect* rect = rects.first(); rect != nullptr; rect = rects.next(), ++index) {
        if (rect->contains(point))
            return index;
    }
    return -1;
}

QString QT_ButtonStrip::buttonToolTip(int index) const {
    return isButton(index) ? buttonOf(index)->toolTip : QString();
}

void QT_ButtonStrip::setButtonToolTip(int index, const QString& text) {
    if (!isButton(index) || buttonToolTip(index) == text)
        return;
    buttonOf(index)->toolTip = text;
    emit buttonToolTipsChanged();
}

QStringList QT_ButtonStrip::buttonToolTips() const {
    QStringList texts;
    for (const Button& button : d_data->buttons)
        texts << button.toolTip;
    return texts;
}

void QT_ButtonStrip::setButtonToolTips(const QStringList& texts) {
    const QStringList before = buttonToolTips();
    for (int index = 0; index < count(); ++index)
        buttonOf(index)->toolTip = texts.value(index);
    if (buttonToolTips() != before)
        emit buttonToolTipsChanged();
}

bool QT_ButtonStrip::isButtonEnabled(int index) const {
    return isEnabled() && isButton(index) && buttonOf(index)->enabled;
}

void QT_ButtonStrip::setButtonEnabled(int index, bool enabled) {
    if (!isButton(index) || buttonOf(index)->enabled == enabled)
        return;
    if (pressTarget() == index)
        takePressBack();
    buttonOf(index)->enabled = enabled;
    update(buttonRect(index));
    NS_QT::tellEnabled(this, index);
}

QKeySequence QT_ButtonStrip::buttonShortcut(int index) const {
    return isButton(index) ? buttonOf(index)->shortcut : QKeySequence();
}

void QT_ButtonStrip::setButtonShortcut(int index, const QKeySequence& keys) {
    Button* const button = buttonOf(index);
    if (button == nullptr)
        return;
    releaseShortcut(button->shortcutId);
    button->shortcut = keys;
    button->shortcutId = keys.isEmpty() ? 0 : grabShortcut(keys);
}

bool QT_ButtonStrip::isCheckable() const { return d_data->checkable; }

void QT_ButtonStrip::setCheckable(bool checkable) {
    if (isCheckable() == checkable)
        return;
    d_data->checkable = checkable;
    emit checkableChanged(checkable);
}

bool QT_ButtonStrip::isExclusive() const { return d_data->exclusive; }

void QT_ButtonStrip::setExclusive(bool exclusive) {
    if (isExclusive() == exclusive)
        return;
    d_data->exclusive = exclusive;
    const QPointer<QT_ButtonStrip> self(this);
    int checked = 0;
    while (checked < count() && !isChecked(checked))
        ++checked;
    if (exclusive && checked < count())
        storeChecked(checked, true);
    if (self != nullptr)
        emit exclusiveChanged(exclusive);
}

bool QT_ButtonStrip::isChecked(int index) const {
    return isButton(index) && buttonOf(index)->checked;
}

void QT_ButtonStrip::setChecked(int index, bool checked) {
    if (isButton(index) && isChecked(index) != checked)
        storeChecked(index, checked);
}

// All are as they will be before the first slot is called.
void QT_ButtonStrip::storeChecked(int index, bool checked) {
    QVector<int> changed;
    for (int other = 0; other < count(); ++other) {
        const bool isOther = other != index;
        const bool flag = isOther ? isChecked(other) && !(d_data->exclusive && checked) : checked;
        if (isChecked(other) == flag)
            continue;
        buttonOf(other)->checked = flag;
        update(buttonRect(other));
        changed.append(other);
    }
    tellToggled(changed);
}

void QT_ButtonStrip::tellToggled(const QVector<int>& indices) {
    const QPointer<QT_ButtonStrip> self(this);
    for (const int index : indices) {
        NS_QT::tellChecked(this, index);
        emit toggled(index, isChecked(index));
        if (self == nullptr)
            return;
    }
}

bool QT_ButtonStrip::toggle(int index) {
    if (!d_data->checkable || (d_data->exclusive && isChecked(index)))
        return false;
    storeChecked(index, !isChecked(index));
    return true;
}

int QT_ButtonStrip::currentButton() const { return d_data->current; }

void QT_ButtonStrip::setCurrentButton(int index) {
    if (!isButton(index) || d_data->current == index)
        return;
    update(buttonRect(d_data->current));
    update(buttonRect(index));
    d_data->current = index;
    if (hasFocus())
        NS_QT::tellFocus(this, index);
    emit currentButtonChanged(index);
}

int QT_ButtonStrip::pressedButton() const { return pressTarget(); }

QSize QT_ButtonStrip::sizeHint() const { return pictures::sizeOf(picture()); }

void QT_ButtonStrip::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRect area = event->rect() & QRect(QPoint(), sizeHint());
    if (isEnabled())
        drawButtons(painter, area);
    else
        pictures::drawPart(painter, d_data->images->disabled, area);
    drawFocus(painter, buttonRect(d_data->current));
}

void QT_ButtonStrip::drawButtons(QPainter& painter, const QRect& area) const {
    const Images& images = *d_data->images;
    QRegion disabled;
    for (const Button& button : d_data->buttons) {
        if (!button.enabled)
            disabled += button.rect;
    }
    if (!disabled.isEmpty())
        painter.setClipRegion(QRegion(area) - disabled);
    pictures::drawPart(painter, images.strip, area);
    painter.setClipping(false);
    for (int index = 0; index < count(); ++index) {
        const QRect part = buttonRect(index) & area;
        if (!buttonOf(index)->enabled)
            pictures::drawPart(painter, images.disabled, part);
        if (isChecked(index) || (d_data->showPressed && index == pressedButton()))
            pictures::drawPart(painter, images.down, part);
    }
}

int QT_ButtonStrip::targetAt(const QPoint& point) const {
    const int index = buttonAt(point);
    return isButtonEnabled(index) ? index : -1;
}

int QT_ButtonStrip::keyTarget() const {
    return isButtonEnabled(d_data->current) ? d_data->current : -1;
}

void QT_ButtonStrip::showPressed(bool shown) {
    if (d_data->showPressed == shown)
        return;
    d_data->showPressed = shown;
    update(d_data->pressedRect);
}

void QT_ButtonStrip::pressBegan() {
    const int index = pressTarget();
    const QPointer<QT_ButtonStrip> self(this);
    showPressed(false); // of a press whose slots have not returned yet
    d_data->pressedRect = buttonRect(index);
    showPressed(true);
    NS_QT::tellPressed(this, index);
    setCurrentButton(index);
    if (self != nullptr)
        emit pressed(index);
}

void QT_ButtonStrip::dropPress(int index) {
    showPressed(false);
    NS_QT::tellPressed(this, index);
}

void QT_ButtonStrip::pressReleased(bool inside) {
    const int index = pressTarget();
    if (!inside) {
        endPress();
        dropPress(index);
        emit released(index);
        return;
    }
    const uint32_t number = pressNumber();
    const QPointer<QT_ButtonStrip> self(this);
    const bool toggled = toggle(index);
    if (self != nullptr)
        emit released(index);
    if (self != nullptr)
        emit clicked(index);
    if (self == nullptr)
        return;
    if (number == pressNumber()) { // else a slot let the next press begin
        endPress();
        // A checked button looks the same without the press, and was repainted above.
        if (toggled && isChecked(index))
            d_data->showPressed = false;
        dropPress(index);
    }
    emit triggered(index);
}

void QT_ButtonStrip::pressTakenBack(int target) {
    dropPress(target);
    QMetaObject::invokeMethod(this, "released", Qt::QueuedConnection, Q_ARG(int, target));
}

void QT_ButtonStrip::click(int index) {
    if (!isButtonEnabled(index))
        return;
    const QPointer<QT_ButtonStrip> self(this);
    toggle(index);
    if (self != nullptr)
        emit clicked(index);
    if (self != nullptr)
        emit triggered(index);
}

// The first button from an end that takes presses.
int QT_ButtonStrip::edgeButton(int first, int step) const {
    int index = first;
    while (isButton(index) && !isButtonEnabled(index))
        index += step;
    return index;
}

// The nearest button in the direction of an arrow key; distances across it count twice.
int QT_ButtonStrip::neighbour(int key) const {
    const bool horizontal = key == Qt::Key_Left || key == Qt::Key_Right;
    const int sign = key == Qt::Key_Left || key == Qt::Key_Up ? -1 : 1;
    int best = d_data->current;
    int bestDistance = std::numeric_limits<int>::max();
    for (int index = 0; index < count(); ++index) {
        const QPoint way = buttonRect(index).center() - buttonRect(d_data->current).center();
        const int along = sign * (horizontal ? way.x() : way.y());
        const int distance = along + 2 * std::abs(horizontal ? way.y() : way.x());
        if (along > 0 && distance < bestDistance && isButtonEnabled(index)) {
            best = index;
            bestDistance = distance;
        }
    }
    return best;
}

void QT_ButtonStrip::keyPressEvent(QKeyEvent* event) {
    int next = -1;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        next = neighbour(event->key());
        break;
    case Qt::Key_Home:
        next = edgeButton(0, 1);
        break;
    case Qt::Key_End:
        next = edgeButton(count() - 1, -1);
        break;
    default:
        PressWidget::keyPressEvent(event);
        return;
    }
    noteKeyPressed();
    update(buttonRect(d_data->current));
    setCurrentButton(next);
}

void QT_ButtonStrip::focusInEvent(QFocusEvent* event) {
    PressWidget::focusInEvent(event);
    NS_QT::tellFocus(this, d_data->current);
}

bool QT_ButtonStrip::event(QEvent* event) {
    if (event->type() == QEvent::Shortcut) {
        const auto* const shortcut = static_cast<QShortcutEvent*>(event);
        clickByShortcut(shortcut->shortcutId(), shortcut->isAmbiguous());
        return true;
    }
    if (event->type() != QEvent::ToolTip)
        return PressWidget::event(event);
    showToolTip(event);
    return true;
}

// Keys that several widgets claim only lead to the button.
void QT_ButtonStrip::clickByShortcut(int id, bool isAmbiguous) {
    for (int index = 0; index < count(); ++index) {
        if (buttonOf(index)->shortcutId != id)
            continue;
        if (!isAmbiguous) {
            click(index);
            return;
        }
        setFocus(Qt::ShortcutFocusReason);
        setCurrentButton(index);
        return;
    }
}

void QT_ButtonStrip::showToolTip(QEvent* event) {
    const auto* const help = dynamic_cast<QHelpEvent*>(event);
    const int index = CHECKF(help != nullptr) ? buttonAt(help->pos()) : -1;
    const QString text = buttonToolTip(index);
    if (!text.isEmpty()) {
        QToolTip::showText(help->globalPos(), text, this, buttonRect(index));
        return;
    }
    QToolTip::hideText();
    event->ignore();
}
