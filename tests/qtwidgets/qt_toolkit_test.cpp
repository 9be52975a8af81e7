// What holds for every widget of the toolkit, as every_widget.ui has them.

#include "forms.h"
#include "picture_art.h"
#include "play.h"
#include "testing_manualtimers.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>

namespace {

using testing::Contains;
using testing::ElementsAre;

// Another value for a property than the one it has.
QVariant otherValue(const QMetaProperty& property, const QVariant& value) {
    if (property.isEnumType() || value.type() == QVariant::Int)
        return value.toInt() + 1;
    const QPixmap picture(40, 20);
    const QVariant others[] = {0.25,
                               "en",
                               QStringList{"10", "40", "50"},
                               QColor(Qt::green),
                               picture,
                               QIcon(picture),
                               QVariant::fromValue(QT_Button::repeating(1, 5000))};
    for (const QVariant& other : others) {
        if (other.userType() == property.userType())
            return other;
    }
    return !value.toBool();
}

TEST(Toolkit, PropertiesTellOfTheirChanges) {
    Form form;
    form.numbers->addItem("High", 1);
    form.texts->addItem("English", "en");
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&form));
    for (QWidget* const widget : form.widgets()) {
        for (const QMetaProperty& property : propertiesOf(*widget)) {
            SCOPED_TRACE(widget->objectName().toStdString() + ' ' + property.name());
            if (widget == form.slider)
                continue; // of whose properties only the orientation, which stays, is its own
            const QSignalSpy changes(widget, property.notifySignal());
            const QVariant value = otherValue(property, property.read(widget));
            const auto write = [&] { EXPECT_TRUE(property.write(widget, value)); };
            EXPECT_TRUE(art::repaints(*widget, write));
            write();
            const bool isFixed = widget->sizePolicy().horizontalPolicy() == QSizePolicy::Fixed;
            EXPECT_TRUE(!isFixed || widget->size() == widget->sizeHint());
            EXPECT_EQ(changes.size(), 1);
            EXPECT_EQ(inWords(property, property.read(widget)), inWords(property, value));
        }
    }
}

/// The states of an interface, as letters.
std::string statesOf(const QAccessibleInterface& access) {
    const QAccessible::State state = access.state();
    const std::pair<bool, char> letters[] = {
        {state.focusable, 'f'}, {state.focused, 'F'}, {state.checkable, 'c'}, {state.checked, 'x'},
        {state.pressed, 'p'},   {state.linked, 'l'},  {state.disabled, 'd'}};
    std::string text;
    for (const auto& [set, letter] : letters)
        text += set ? std::string(1, letter) : "";
    return text;
}

TEST(Toolkit, ScreenReadersAreToldWhatEachIs) {
    Form form;
    form.numbers->clear(); // on some platforms an item's text is the name
    form.strip->setExclusive(false);
    form.strip->setButtonToolTip(1, {});
    form.strip->setButtonShortcut(0, QKeySequence("Ctrl+L"));
    form.strip->setChecked(0, true);
    form.strip->setButtonEnabled(1, false);
    NS_QT::InfoButton untitled(&form);
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    form.strip->setFocus();
    QTest::keyPress(form.strip, Qt::Key_Space);
    QTest::mousePress(form.button, Qt::LeftButton, {}, {8, 8});
    const QString press = QAccessibleActionInterface::pressAction();
    const struct {
        QObject* object;
        int child;
        QAccessible::Role role;
        QString name;
        const char* states;
        bool canBePressed;
    } rows[] = {
        {form.button, -1, QAccessible::Button, "Play", "fp", true},
        {form.strip, -1, QAccessible::ToolBar, "Mode", "fF", false},
        {form.strip, 0, QAccessible::CheckBox, "Loop", "fFcxp", true},
        {form.strip, 1, QAccessible::CheckBox, "Button 2", "fcd", true},
        {form.link, -1, QAccessible::Link, "Open the manual", "fl", true},
        {form.plain, -1, QAccessible::StaticText, "Offline", "", false},
        {form.icon, -1, QAccessible::Graphic, "Camera", "", false},
        {form.info, -1, QAccessible::Button, "Disk", "f", true},
        {&untitled, -1, QAccessible::Button, "Information", "f", true},
        {form.numbers, -1, QAccessible::ComboBox, "Quality", "f", true},
        {form.fraction, -1, QAccessible::SpinBox, "Rate", "f", false},
        {form.slider->slider(), -1, QAccessible::Slider, "Volume", "f", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name.toStdString());
        auto* access = QAccessible::queryAccessibleInterface(row.object);
        if (row.child >= 0)
            access = access->child(row.child);
        EXPECT_EQ(access->role(), row.role);
        EXPECT_EQ(access->text(QAccessible::Name), row.name);
        EXPECT_EQ(access->text(QAccessible::Description), "");
        EXPECT_EQ(statesOf(*access), row.states);
        auto* const actions = access->actionInterface();
        EXPECT_EQ(actions != nullptr && actions->actionNames().contains(press), row.canBePressed);
        if (row.name == "Loop") {
            EXPECT_EQ(actions->keyBindingsForAction(press).size(), 1);
        }
    }
    const QString focus = QAccessibleActionInterface::setFocusAction();
    for (QWidget* const widget : std::initializer_list<QWidget*>{form.button, form.link}) {
        QAccessible::queryAccessibleInterface(widget)->actionInterface()->doAction(focus);
        EXPECT_TRUE(widget->hasFocus());
    }
    auto* const loop = QAccessible::queryAccessibleInterface(form.strip)->child(0);
    EXPECT_FALSE(loop->state().focused) << "its strip has not the keyboard";
    loop->actionInterface()->doAction(focus);
    EXPECT_TRUE(form.strip->hasFocus());
    form.strip->setExclusive(true);
    EXPECT_EQ(loop->role(), QAccessible::RadioButton);
    form.strip->setCheckable(false);
    EXPECT_EQ(loop->role(), QAccessible::Button);
}

std::vector<std::string> told;

void note(QAccessibleEvent* event) {
    const std::string child = event->child() < 0 ? "" : ' ' + std::to_string(event->child());
    if (event->type() == QAccessible::Focus)
        told.push_back("focus" + child);
    if (event->type() != QAccessible::StateChanged)
        return;
    const auto changed = static_cast<QAccessibleStateChangeEvent*>(event)->changedStates();
    if (changed.pressed)
        told.push_back("pressed" + child);
    if (changed.checked)
        told.push_back("checked" + child);
}

TEST(Toolkit, ScreenReadersAreToldOfPressesAndChecks) {
    Form form;
    form.strip->setChecked(0, true);
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    // The bus of assistants; offscreen there is none. See CMakeLists.txt for the run with it.
    if (!qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"))
        GTEST_SKIP() << "nobody listens here";
    ASSERT_TRUE(QTest::qWaitFor(&QAccessible::isActive));
    const auto previous = QAccessible::installUpdateHandler(&note);
    QTest::mouseClick(form.button, Qt::LeftButton);
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("pressed", "pressed"));
    QTest::mouseClick(form.strip, Qt::LeftButton, {}, {20, 3});
    EXPECT_THAT(std::exchange(told, {}),
                ElementsAre("pressed 1", "checked 0", "checked 1", "pressed 1"));
    form.button->setFocus();
    told.clear();
    QTest::keyClick(form.button, Qt::Key_Tab);
    EXPECT_TRUE(form.strip->hasFocus()) << "by the Tab key, too";
    QTest::keyClick(form.strip, Qt::Key_Left);
    EXPECT_THAT(told, Contains("focus 1"));
    EXPECT_THAT(told, Contains("focus 0"));
    QAccessible::installUpdateHandler(previous);
}

// By people, screen readers, timers and programs.
TEST(Toolkit, MayBeDeletedByEachOfTheirSlots) {
    const auto change = [](const QPointer<QWidget>& widget) {
        for (const QMetaProperty& property : propertiesOf(*widget)) {
            if (widget != nullptr)
                property.write(widget, otherValue(property, property.read(widget)));
        }
    };
    // Of a changed value Qt's own spin and combo boxes go on themselves.
    for (const char* const name : {"button", "strip", "link", "icon", "fraction"}) {
        const QMetaObject& meta = *Form().findChild<QWidget*>(name)->metaObject();
        for (int index = meta.methodOffset(); index < meta.methodCount(); ++index) {
            const QByteArray signal = meta.method(index).name();
            if (meta.method(index).methodType() != QMetaMethod::Signal || signal == "numberChanged")
                continue;
            int deleted = 0;
            for (const char* const script : {"+8,8 -8,8", "Space", "press", "+8,8", ""}) {
                test::ManualTimers timers;
                Form form;
                const QPointer<QWidget> widget = form.findChild<QWidget*>(name);
                form.button->setSchedule({{0, 1}, {1, 1}});
                form.show();
                test::Heard heard(*widget);
                heard.then = [&](const QString& said) {
                    if (said == signal)
                        delete widget;
                };
                *script != 0 ? test::play(*widget, script) : change(widget);
                timers.expire(); // of a button that is held
                deleted += widget == nullptr ? 1 : 0;
            }
            EXPECT_GT(deleted, 0) << signal.toStdString();
        }
    }
}

} // namespace
