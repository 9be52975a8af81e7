// What holds for every widget of the toolkit, as every_widget.ui has them.

#include "forms.h"
#include "picture_art.h"
#include "play.h"
#include "testing_manualtimers.h"

#include <QMessageBox>
#include <QSignalSpy>
#include <QTimer>

#include <algorithm>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsSupersetOf;

// Another value for a property than the one it has.
QVariant otherValue(const QMetaProperty& property, const QVariant& value) {
    if (property.isEnumType() || value.type() == QVariant::Int)
        return value.toInt() + 1;
    const QPixmap picture(40, 20);
    const QVariantList others{0.25,
                              "en",
                              QStringList{"10", "40", "50"},
                              QColor(Qt::green),
                              picture,
                              QIcon(picture),
                              QVariant::fromValue(QT_Button::repeating(1, 5000))};
    const auto other = std::find_if(others.begin(), others.end(), [&](const QVariant& candidate) {
        return candidate.userType() == property.userType();
    });
    return other == others.end() ? !value.toBool() : *other;
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

/// What screen readers can say of it: "Button Play focusable pressed, Press".
std::string spoken(const QAccessibleInterface& access) {
    const QAccessible::State state = access.state();
    const std::pair<bool, const char*> states[] = {
        {state.focusable, " focusable"}, {state.focused, " focused"},
        {state.checkable, " checkable"}, {state.checked, " checked"},
        {state.pressed, " pressed"},     {state.linked, " linked"},
        {state.disabled, " disabled"}};
    QString text = QMetaEnum::fromType<QAccessible::Role>().valueToKey(access.role());
    text += ' ' + access.text(QAccessible::Name) + access.text(QAccessible::Description);
    for (const auto& [set, word] : states)
        text += set ? word : "";
    auto* const actions = const_cast<QAccessibleInterface&>(access).actionInterface();
    const QString press = QAccessibleActionInterface::pressAction();
    if (actions != nullptr && actions->actionNames().contains(press))
        text += (QStringList{", Press"} + actions->keyBindingsForAction(press)).join(' ');
    return text.simplified().toStdString();
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
    const auto access = &QAccessible::queryAccessibleInterface;
    auto* const loop = access(form.strip)->child(0);
    for (auto* const focusable : {access(form.button), access(form.link), loop}) {
        focusable->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
        EXPECT_EQ(loop->state().focused, focusable == loop);
    }
    QTest::keyPress(form.strip, Qt::Key_Space);
    QTest::mousePress(form.button, Qt::LeftButton, {}, {8, 8});
    const std::pair<QAccessibleInterface*, const char*> rows[] = {
        {access(form.button), "Button Play focusable pressed, Press"},
        {access(form.strip), "ToolBar Mode focusable focused"},
        {loop, "CheckBox Loop focusable focused checkable checked pressed, Press Ctrl+L"},
        {access(form.strip)->child(1), "CheckBox Button 2 focusable checkable disabled, Press"},
        {access(form.link), "Link Open the manual focusable linked, Press"},
        {access(form.plain), "StaticText Offline"},
        {access(form.icon), "Graphic Camera"},
        {access(form.info), "Button Disk focusable, Press"},
        {access(&untitled), "Button Information focusable, Press"},
        {access(form.numbers), "ComboBox Quality focusable, Press"},
        {access(form.fraction), "SpinBox Rate focusable"},
        {access(form.slider->slider()), "Slider Volume focusable"},
    };
    for (const auto& [widget, words] : rows)
        EXPECT_EQ(spoken(*widget), words);
    form.strip->setExclusive(true);
    EXPECT_EQ(loop->role(), QAccessible::RadioButton);
    form.strip->setCheckable(false);
    EXPECT_EQ(loop->role(), QAccessible::Button);
}

std::vector<std::string> told;

void note(QAccessibleEvent* event) {
    const std::string child = ' ' + std::to_string(event->child());
    if (event->type() == QAccessible::Focus)
        told.push_back("focus" + child);
    if (event->type() != QAccessible::StateChanged)
        return;
    const auto changed = static_cast<QAccessibleStateChangeEvent*>(event)->changedStates();
    const char* const what = changed.pressed ? "pressed" : changed.checked ? "checked" : "linked";
    if (changed.pressed || changed.checked || changed.linked)
        told.push_back(what + child);
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
    QTest::mouseClick(form.strip, Qt::LeftButton, {}, {20, 3});
    form.link->setLinkEnabled(false);
    EXPECT_THAT(told, ElementsAre("pressed -1", "pressed -1", "pressed 1", "checked 0", "checked 1",
                                  "pressed 1", "linked -1"));
    form.button->setFocus();
    QTest::keyClick(form.button, Qt::Key_Tab);
    QTest::keyClick(form.strip, Qt::Key_Left);
    EXPECT_THAT(told, IsSupersetOf({"focus 1", "focus 0"}));
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

TEST(InfoButton, MayGoWhileItsMessageIsOpen) {
    const QPointer<NS_QT::InfoButton> button = new NS_QT::InfoButton(-2, "Title", "Text");
    QTimer::singleShot(0, qApp, [&button] {
        const auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        EXPECT_EQ(box->icon(), QMessageBox::Information);
        delete button;
    });
    QTest::keyClick(button, Qt::Key_Space);
    EXPECT_EQ(button, nullptr);
}

} // namespace
