#include "qt_buttonstrip.h"

#include "core_check.h"
#include "qt_buttonaccess.h"
#include "qt_buttonpictures.h"
#include "qt_focusmark.h"

#include <QColor>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QToolTip>

#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

namespace pictures = NS_QT::ButtonPictures;

namespace {

struct Button {
    QString toolTip;
    QRect rect;
    bool checked = false;
};

QPixmap makeDown(const QPixmap& strip, const QVector<QRect>& buttons) {
    constexpr QColor kShade(0, 0, 0, 64);
    QPixmap down = strip;
    QPainter painter(&down);
    for (const QRect& rect : buttons)
        painter.fillRect(rect, kShade);
    return down;
}

} // namespace

struct QT_ButtonStrip::Data {
    bool looksDown(int index) const {
        return buttons[static_cast<size_t>(index)].checked ||
               (showPressed && index == pressedIndex);
    }

    std::unique_ptr<Images> images;
    int32_t pressedIndex = -1;
    QRect pressedRect;
    std::vector<Button> buttons;
    bool checkable = false;
    bool exclusive = false;
    bool showPressed = false;
    int pressKey = 0; // that holds the button down; 0 for the mouse
    int current = 0;
    NS_QT::FocusMark focusMark;
};

QT_ButtonStrip::Images::Images(const QPixmap& picture, const QVector<QRect>& buttons)
    : strip(picture) {
    if (!picture.isNull()) {
        down = makeDown(picture, buttons);
        disabled = pictures::dimmed(picture);
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

QT_ButtonStrip::QT_ButtonStrip(const QPixmap& picture, const QVector<QRect>& buttons,
                               QWidget* parent)
    : QT_ButtonStrip(std::make_unique<Images>(picture, buttons), parent) {}

QT_ButtonStrip::QT_ButtonStrip(std::unique_ptr<Images> images, QWidget* parent)
    : QWidget(parent), d_data(std::make_unique<Data>()) {
    NS_QT::installButtonAccess();
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    d_data->images = std::move(images);
    core::GList<QRect>& rects = d_data->images->rects;
    for (const QRect* rect = rects.first(); rect != nullptr; rect = rects.next())
        d_data->buttons.push_back({{}, *rect});
}

QT_ButtonStrip::~QT_ButtonStrip() = default;

int QT_ButtonStrip::count() const { return static_cast<int>(d_data->buttons.size()); }

bool QT_ButtonStrip::isButton(int index) const { return index >= 0 && index < count(); }

QRect QT_ButtonStrip::buttonRect(int index) const {
    return isButton(index) ? d_data->buttons[static_cast<size_t>(index)].rect : QRect();
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
    return isButton(index) ? d_data->buttons[static_cast<size_t>(index)].toolTip : QString();
}

void QT_ButtonStrip::setButtonToolTip(int index, const QString& text) {
    if (isButton(index))
        d_data->buttons[static_cast<size_t>(index)].toolTip = text;
}

void QT_ButtonStrip::setButtonToolTips(const QStringList& texts) {
    for (int index = 0; index < count(); ++index)
        setButtonToolTip(index, texts.value(index));
}

bool QT_ButtonStrip::isCheckable() const { return d_data->checkable; }

void QT_ButtonStrip::setCheckable(bool checkable) { d_data->checkable = checkable; }

bool QT_ButtonStrip::isExclusive() const { return d_data->exclusive; }

void QT_ButtonStrip::setExclusive(bool exclusive) { d_data->exclusive = exclusive; }

bool QT_ButtonStrip::isChecked(int index) const {
    return isButton(index) && d_data->buttons[static_cast<size_t>(index)].checked;
}

void QT_ButtonStrip::setChecked(int index, bool checked) {
    if (isButton(index) && isChecked(index) != checked)
        storeChecked(index, checked);
}

void QT_ButtonStrip::storeChecked(int index, bool checked) {
    Button& button = d_data->buttons[static_cast<size_t>(index)];
    button.checked = checked;
    update(button.rect);
    for (Button& other : d_data->buttons) {
        if (d_data->exclusive && checked && &other != &button) {
            other.checked = false;
            update(other.rect);
        }
    }
    NS_QT::tellChecked(this, index);
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
}

int QT_ButtonStrip::pressedButton() const { return d_data->pressedIndex; }

QSize QT_ButtonStrip::sizeHint() const { return pictures::sizeOf(d_data->images->strip); }

void QT_ButtonStrip::paintEvent(QPaintEvent* event) {
    const Data& own = *d_data;
    const Images& images = *own.images;
    QPainter painter(this);
    const QRect area = event->rect() & QRect(QPoint(), sizeHint());
    pictures::drawPart(painter, isEnabled() ? images.strip : images.disabled, area);
    for (int index = 0; isEnabled() && index < count(); ++index) {
        if (own.looksDown(index))
            pictures::drawPart(painter, images.down, buttonRect(index) & area);
    }
    own.focusMark.draw(*this, painter, buttonRect(own.current));
}

void QT_ButtonStrip::press(int index, int key) {
    dropPress();
    d_data->pressedIndex = index;
    d_data->pressedRect = buttonRect(index);
    d_data->pressKey = key;
    showPressed(true);
    setCurrentButton(index);
}

void QT_ButtonStrip::showPressed(bool shown) {
    if (d_data->showPressed == shown)
        return;
    d_data->showPressed = shown;
    update(d_data->pressedRect);
}

void QT_ButtonStrip::forgetPress() {
    d_data->pressedIndex = -1;
    d_data->pressKey = 0;
    d_data->showPressed = false;
}

void QT_ButtonStrip::dropPress() {
    if (d_data->pressedIndex == -1)
        return;
    forgetPress();
    update(d_data->pressedRect);
}

void QT_ButtonStrip::release(int index) {
    Data& own = *d_data;
    if (own.pressedIndex == -1)
        return;
    if (index != own.pressedIndex) {
        dropPress();
        return;
    }
    const bool toggled = toggle(index);
    const QPointer<QT_ButtonStrip> self(this);
    emit clicked(index);
    if (self == nullptr)
        return;
    forgetPress();
    // A checked button looks the same without the press, and was repainted above.
    if (!toggled || !isChecked(index))
        update(own.pressedRect);
}

void QT_ButtonStrip::click(int index) {
    if (!isEnabled() || !isButton(index))
        return;
    toggle(index);
    emit clicked(index);
}

void QT_ButtonStrip::mousePressEvent(QMouseEvent* event) {
    const int index = event->button() == Qt::LeftButton ? buttonAt(event->pos()) : -1;
    if (index != -1)
        press(index, 0);
    else
        event->ignore();
}

// The press follows the pointer off the button and back, as presses do elsewhere.
void QT_ButtonStrip::mouseMoveEvent(QMouseEvent* event) {
    if (d_data->pressedIndex != -1 && d_data->pressKey == 0)
        showPressed(buttonAt(event->pos()) == d_data->pressedIndex);
    else
        event->ignore();
}

void QT_ButtonStrip::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && d_data->pressKey == 0)
        release(buttonAt(event->pos()));
    else
        event->ignore();
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
        if (along > 0 && distance < bestDistance) {
            best = index;
            bestDistance = distance;
        }
    }
    return best;
}

void QT_ButtonStrip::keyPressEvent(QKeyEvent* event) {
    Data& own = *d_data;
    const bool pressed = own.pressedIndex != -1;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
        setCurrentButton(neighbour(event->key()));
        break;
    case Qt::Key_Home:
        setCurrentButton(0);
        break;
    case Qt::Key_End:
        setCurrentButton(count() - 1);
        break;
    default:
        if (event->key() == Qt::Key_Escape && pressed)
            dropPress();
        else if (!NS_QT::isPressKey(event->key()))
            QWidget::keyPressEvent(event);
        else if (!event->isAutoRepeat() && !pressed && isButton(own.current))
            press(own.current, event->key());
    }
    if (event->isAccepted())
        own.focusMark.keyPressed();
}

void QT_ButtonStrip::keyReleaseEvent(QKeyEvent* event) {
    if (!NS_QT::isPressKey(event->key()))
        QWidget::keyReleaseEvent(event);
    else if (!event->isAutoRepeat() && event->key() == d_data->pressKey)
        release(d_data->pressedIndex);
}

void QT_ButtonStrip::focusInEvent(QFocusEvent* event) {
    d_data->focusMark.focusIn(event->reason());
    QWidget::focusInEvent(event);
    NS_QT::tellFocus(this, d_data->current);
}

void QT_ButtonStrip::focusOutEvent(QFocusEvent* event) {
    if (d_data->pressKey != 0)
        dropPress();
    QWidget::focusOutEvent(event);
}

void QT_ButtonStrip::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        dropPress();
}

void QT_ButtonStrip::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    dropPress();
}

bool QT_ButtonStrip::event(QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate)
        dropPress(); // the release may go to another window
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    showToolTip(event);
    return true;
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
