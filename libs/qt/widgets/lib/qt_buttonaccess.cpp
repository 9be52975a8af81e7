#include "qt_buttonaccess.h"

#include "qt_button.h"
#include "qt_buttonstrip.h"

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
        return nameOrToolTip(*widget(), kind, QAccessibleWidget::text(kind));
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

    bool isValid() const override { return d_strip != nullptr && d_index < d_strip->count(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return parent()->window(); }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(d_strip);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }

    QString text(QAccessible::Text kind) const override;
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
    QStringList keyBindingsForAction(const QString& name) const override;

private:
    QPointer<QT_ButtonStrip> d_strip;
    int d_index;
};

QString StripButtonAccess::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Accelerator)
        return d_strip->buttonShortcut(d_index).toString(QKeySequence::NativeText);
    if (kind != QAccessible::Name)
        return {};
    const QString toolTip = d_strip->buttonToolTip(d_index);
    return toolTip.isEmpty() ? QT_ButtonStrip::tr("Button %1").arg(d_index + 1) : toolTip;
}

QStringList StripButtonAccess::keyBindingsForAction(const QString& name) const {
    const QString keys = text(QAccessible::Accelerator);
    return name == pressAction() && !keys.isEmpty() ? QStringList{keys} : QStringList();
}

QAccessible::State StripButtonAccess::state() const {
    QAccessible::State state = parent()->state();
    state.disabled = !d_strip->isButtonEnabled(d_index);
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
    explicit StripAccess(QT_ButtonStrip* strip) : QAccessibleWidget(strip, QAccessible::ToolBar) {}

    QString text(QAccessible::Text kind) const override {
        return nameOrToolTip(*widget(), kind, QAccessibleWidget::text(kind));
    }
    int childCount() const override { return strip()->count(); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        for (int next = static_cast<int>(d_buttons.size()); next <= index; ++next) {
            // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): Qt's cache owns it
            d_buttons.push_back(
                QAccessible::registerAccessibleInterface(new StripButtonAccess(strip(), next)));
        }
        return QAccessible::accessibleInterface(d_buttons[static_cast<size_t>(index)]);
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

    mutable std::vector<QAccessible::Id> d_buttons; // made when they are asked for
};

void tellChange(QT_ButtonStrip* strip, int index, QAccessible::State changed) {
    QAccessibleStateChangeEvent event(strip, changed);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

QAccessibleInterface* makeAccess(const QString& className, QObject* object) {
    if (className == QLatin1String(QT_Button::staticMetaObject.className()))
        return new ButtonAccess(static_cast<QT_Button*>(object));
    if (className == QLatin1String(QT_ButtonStrip::staticMetaObject.className()))
        return new StripAccess(static_cast<QT_ButtonStrip*>(object));
    return nullptr;
}

} // namespace

QString nameOrToolTip(const QWidget& widget, QAccessible::Text kind, const QString& text) {
    const bool isNamed = !widget.accessibleName().isEmpty();
    if (kind == QAccessible::Name && text.isEmpty())
        return widget.toolTip();
    return kind == QAccessible::Description && !isNamed && text == widget.toolTip() ? QString()
                                                                                    : text;
}

void installButtonAccess() {
    // Qt keeps one entry of a function, however often it is installed.
    QAccessible::installFactory(&makeAccess);
}

void tellPressed(QT_Button* button) {
    QAccessible::State changed;
    changed.pressed = true;
    QAccessibleStateChangeEvent event(button, changed);
    QAccessible::updateAccessibility(&event);
}

void tellPressed(QT_ButtonStrip* strip, int index) {
    QAccessible::State changed;
    changed.pressed = true;
    tellChange(strip, index, changed);
}

void tellChecked(QT_ButtonStrip* strip, int index) {
    QAccessible::State changed;
    changed.checked = true;
    tellChange(strip, index, changed);
}

void tellEnabled(QT_ButtonStrip* strip, int index) {
    QAccessible::State changed;
    changed.disabled = true;
    tellChange(strip, index, changed);
}

void tellFocus(QT_ButtonStrip* strip, int index) {
    QAccessibleEvent event(strip, QAccessible::Focus);
    event.setChild(index);
    QAccessible::updateAccessibility(&event);
}

} // namespace NS_QT
