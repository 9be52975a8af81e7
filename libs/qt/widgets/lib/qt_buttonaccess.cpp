#include "qt_buttonaccess.h"

#include "qt_button.h"
#include "qt_buttonstrip.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QPointer>
#include <QWindow>

#include <vector>

namespace NS_QT {
namespace {

class ButtonAccess : public QAccessibleWidget {
public:
    explicit ButtonAccess(QT_Button* button) : QAccessibleWidget(button, QAccessible::Button) {}

    QString text(QAccessible::Text kind) const override {
        const QString text = QAccessibleWidget::text(kind);
        return text.isEmpty() && kind == QAccessible::Name ? widget()->toolTip() : text;
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.pressed = button()->isDown();
        return state;
    }
    QStringList actionNames() const override {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name == pressAction())
            button()->click();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    QT_Button* button() const { return static_cast<QT_Button*>(widget()); }
};

/// One button of a strip. Belongs to Qt's cache, from which the strip's removes it.
class StripButtonAccess : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    StripButtonAccess(QT_ButtonStrip* strip, int index) : d_strip(strip), d_index(index) {}

    bool isValid() const override { return d_strip != nullptr; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return parent()->window(); }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(d_strip);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? d_strip->buttonToolTip(d_index) : QString();
    }
    void setText(QAccessible::Text, const QString&) override {}
    QRect rect() const override {
        const QRect rect = d_strip->buttonRect(d_index);
        return {d_strip->mapToGlobal(rect.topLeft()), rect.size()};
    }
    QAccessible::Role role() const override {
        if (!d_strip->isCheckable())
            return QAccessible::Button;
        return d_strip->isExclusive() ? QAccessible::RadioButton : QAccessible::CheckBox;
    }
    QAccessible::State state() const override;

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }
    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    QPointer<QT_ButtonStrip> d_strip;
    int d_index;
};

QAccessible::State StripButtonAccess::state() const {
    QAccessible::State state = parent()->state();
    const bool current = d_index == d_strip->currentButton();
    state.focused = state.focused && current;
    state.checkable = d_strip->isCheckable();
    state.checked = d_strip->isChecked(d_index);
    state.pressed = d_index == d_strip->pressedButton();
    return state;
}

void StripButtonAccess::doAction(const QString& name) {
    if (name == pressAction()) {
        d_strip->click(d_index);
    } else if (name == setFocusAction()) {
        d_strip->setCurrentButton(d_index);
        d_strip->setFocus();
    }
}

class StripAccess : public QAccessibleWidget {
public:
    explicit StripAccess(QT_ButtonStrip* strip) : QAccessibleWidget(strip, QAccessible::ToolBar) {
        for (int index = 0; index < strip->count(); ++index) {
            // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): Qt's cache owns it
            d_buttons.push_back(
                QAccessible::registerAccessibleInterface(new StripButtonAccess(strip, index)));
        }
    }

    int childCount() const override { return static_cast<int>(d_buttons.size()); }
    QAccessibleInterface* child(int index) const override {
        return index >= 0 && index < childCount()
                   ? QAccessible::accessibleInterface(d_buttons[static_cast<size_t>(index)])
                   : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* button) const override {
        for (int index = 0; index < childCount(); ++index) {
            if (child(index) == button)
                return index;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        return child(strip()->buttonAt(strip()->mapFromGlobal(QPoint(x, y))));
    }
    QAccessibleInterface* focusChild() const override {
        return strip()->hasFocus() ? child(strip()->currentButton()) : nullptr;
    }

protected:
    ~StripAccess() override {
        for (const QAccessible::Id id : d_buttons)
            QAccessible::deleteAccessibleInterface(id);
    }

private:
    QT_ButtonStrip* strip() const { return static_cast<QT_ButtonStrip*>(widget()); }

    std::vector<QAccessible::Id> d_buttons;
};

QAccessibleInterface* makeAccess(const QString& className, QObject* object) {
    if (className == QLatin1String(QT_Button::staticMetaObject.className()))
        return new ButtonAccess(static_cast<QT_Button*>(object));
    if (className == QLatin1String(QT_ButtonStrip::staticMetaObject.className()))
        return new StripAccess(static_cast<QT_ButtonStrip*>(object));
    return nullptr;
}

} // namespace

void installButtonAccess() {
    // Qt keeps one entry of a function, however often it is installed.
    QAccessible::installFactory(&makeAccess);
}

void tellChecked(QT_ButtonStrip* strip, int index) {
    QAccessible::State changed;
    changed.checked = true;
    QAccessibleStateChangeEvent event(strip, changed);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

void tellFocus(QT_ButtonStrip* strip, int index) {
    QAccessibleEvent event(strip, QAccessible::Focus);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

} // namespace NS_QT
