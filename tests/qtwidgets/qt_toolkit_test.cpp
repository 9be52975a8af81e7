// What holds for every widget of the toolkit.

#include "qt_button.h"
#include "qt_buttonstrip.h"
#include "qt_fractionspinbox.h"
#include "qt_hyperlinklabel.h"
#include "qt_iconwidget.h"
#include "qt_infobutton.h"
#include "qt_smartcombobox.h"
#include "qt_spinslider.h"
#include "scripted_timers.h"

#include <QAccessible>
#include <QApplication>
#include <QMessageBox>
#include <QMetaProperty>
#include <QPainter>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <QTimer>

#include <functional>
#include <gmock/gmock.h>
#include <memory>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

QPixmap picture() {
    QPixmap black(20, 10);
    black.fill(Qt::black);
    return black;
}

QPixmap otherPicture() {
    QPixmap gray(40, 20);
    gray.fill(Qt::gray);
    return gray;
}

template <typename Widget>
std::unique_ptr<QWidget> make() {
    return std::make_unique<Widget>();
}

template <typename Combo, typename Key>
std::unique_ptr<QWidget> makeCombo(Key first, Key second) {
    auto combo = std::make_unique<Combo>();
    combo->addItem("first", first);
    combo->addItem(QIcon(), "second", second);
    combo->addItem("without a key");
    return combo;
}
std::unique_ptr<QWidget> makeNumbers() { return makeCombo<NS_QT::SmartComboBox>(7, 8); }
std::unique_ptr<QWidget> makeTexts() { return makeCombo<NS_QT::StringComboBox>("de", "en"); }

TEST(Toolkit, PropertiesTellOfTheirChanges) {
    using namespace NS_QT;
    const struct {
        int line;
        std::unique_ptr<QWidget> (*make)();
        const char* name;
        QVariant value;
    } rows[] = {
        {__LINE__, &make<QT_Button>, "picture", otherPicture()},
        {__LINE__, &make<QT_Button>, "hotStyle", 2},
        {__LINE__, &make<QT_Button>, "opacity", 0.5},
        {__LINE__, &make<QT_Button>, "schedule",
         QVariant::fromValue(QT_Button::repeating(1, 5000))},
        {__LINE__, &make<QT_ButtonStrip>, "picture", otherPicture()},
        {__LINE__, &make<QT_ButtonStrip>, "buttonCount", 3},
        {__LINE__, &make<QT_ButtonStrip>, "checkable", true},
        {__LINE__, &make<QT_ButtonStrip>, "exclusive", true},
        {__LINE__, &make<FractionSpinBox>, "value", 15},
        {__LINE__, &make<FractionSpinBox>, "minimum", -5},
        {__LINE__, &make<FractionSpinBox>, "maximum", 500},
        {__LINE__, &make<FractionSpinBox>, "allowed", QStringList({"10", "40"})},
        {__LINE__, &make<HyperlinkLabel>, "linkEnabled", false},
        {__LINE__, &make<HyperlinkLabel>, "linkColour", QColor(Qt::red)},
        {__LINE__, &make<HyperlinkLabel>, "plainColour", QColor(Qt::red)},
        {__LINE__, &make<HyperlinkLabel>, "underline", false},
        {__LINE__, &make<HyperlinkLabel>, "italic", true},
        {__LINE__, &make<IconWidget>, "icon", QIcon(otherPicture())},
        {__LINE__, &make<IconWidget>, "sizeCode", 3},
        {__LINE__, &make<InfoButton>, "kind", 2},
        {__LINE__, &make<InfoButton>, "title", "Disk"},
        {__LINE__, &make<InfoButton>, "message", "It is full."},
        {__LINE__, &makeNumbers, "currentKey", 8},
        {__LINE__, &makeTexts, "currentKey", "en"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        const auto widget = row.make();
        const QMetaObject& meta = *widget->metaObject();
        const QMetaProperty property = meta.property(meta.indexOfProperty(row.name));
        ASSERT_TRUE(property.hasNotifySignal());
        const QSignalSpy changes(widget.get(), property.notifySignal());
        for (int twice = 0; twice < 2; ++twice)
            EXPECT_TRUE(widget->setProperty(row.name, row.value));
        EXPECT_EQ(changes.size(), 1);
        const QVariant value = widget->property(row.name);
        const auto type = property.isEnumType() ? QVariant::Int : value.type();
        if (type != QVariant::Icon && type != QVariant::Pixmap && type != QVariant::UserType) {
            EXPECT_EQ(property.isEnumType() ? QVariant(value.toInt()) : value, row.value);
        }
    }
}

/// The states of an interface, as letters.
std::string statesOf(const QAccessibleInterface& access) {
    const QAccessible::State state = access.state();
    const std::pair<bool, char> letters[] = {{state.focusable, 'f'}, {state.checkable, 'c'},
                                             {state.checked, 'x'},   {state.pressed, 'p'},
                                             {state.linked, 'l'},    {state.disabled, 'd'}};
    std::string text;
    for (const auto& [set, letter] : letters)
        text += set ? std::string(1, letter) : "";
    return text;
}

TEST(Toolkit, ScreenReadersAreToldWhatEachIs) {
    using namespace NS_QT;
    QWidget window;
    const auto button = [&] {
        auto* const made = new QT_Button(picture(), &window);
        made->setToolTip("Play");
        return made;
    };
    const auto strip = [&] {
        auto* const made = new QT_ButtonStrip(picture(), {{0, 0, 9, 9}, {9, 0, 9, 9}}, &window);
        made->setAccessibleName("Mode");
        made->setButtonToolTips({"Loop"});
        made->setButtonShortcut(0, QKeySequence("Ctrl+L"));
        made->setCheckable(true);
        made->setChecked(0, true);
        made->setButtonEnabled(1, false);
        return made;
    };
    const auto link = [&](bool isLink) {
        auto* const made = new HyperlinkLabel("Open <b>the</b> manual", &window);
        made->setLinkEnabled(isLink);
        return made;
    };
    const auto icon = [&] {
        auto* const made = new IconWidget(&window);
        made->setToolTip("Camera");
        return made;
    };
    const auto slider = [&] {
        auto* const made = new SpinSlider(&window);
        made->setAccessibleName("Volume");
        made->show();
        return made;
    };
    const auto named = [](QWidget* widget) {
        widget->setAccessibleName("Rate");
        return widget;
    };
    const auto accessOf = [](QObject* object, int child = -1) {
        auto* const access = QAccessible::queryAccessibleInterface(object);
        return child < 0 ? access : access->child(child);
    };
    window.show();
    const QString press = QAccessibleActionInterface::pressAction();
    struct {
        int line;
        QAccessibleInterface* access;
        QAccessible::Role role;
        QString name;
        const char* states;
        bool canBePressed;
    } const rows[] = {
        {__LINE__, accessOf(button()), QAccessible::Button, "Play", "f", true},
        {__LINE__, accessOf(strip()), QAccessible::ToolBar, "Mode", "f", false},
        {__LINE__, accessOf(strip(), 0), QAccessible::CheckBox, "Loop", "fcx", true},
        {__LINE__, accessOf(strip(), 1), QAccessible::CheckBox, "Button 2", "fcd", true},
        {__LINE__, accessOf(link(true)), QAccessible::Link, "Open the manual", "fl", true},
        {__LINE__, accessOf(link(false)), QAccessible::StaticText, "Open the manual", "", false},
        {__LINE__, accessOf(icon()), QAccessible::Graphic, "Camera", "", false},
        {__LINE__, accessOf(new InfoButton(2, "Disk", "Full", &window)), QAccessible::Button,
         "Disk", "f", true},
        {__LINE__, accessOf(new InfoButton(&window)), QAccessible::Button, "Information", "f",
         true},
        {__LINE__, accessOf(named(new SmartComboBox(&window))), QAccessible::ComboBox, "Rate", "f",
         true},
        {__LINE__, accessOf(named(new FractionSpinBox(&window))), QAccessible::SpinBox, "Rate", "f",
         false},
        {__LINE__, accessOf(slider()->slider()), QAccessible::Slider, "Volume", "f", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        EXPECT_EQ(row.access->role(), row.role);
        EXPECT_EQ(row.access->text(QAccessible::Name), row.name);
        EXPECT_EQ(row.access->text(QAccessible::Description), "");
        EXPECT_EQ(statesOf(*row.access), row.states);
        auto* const actions = row.access->actionInterface();
        EXPECT_EQ(actions != nullptr && actions->actionNames().contains(press), row.canBePressed);
    }
    EXPECT_EQ(rows[2].access->actionInterface()->keyBindingsForAction(press).size(), 1);
    EXPECT_EQ(accessOf(strip())->childCount(), 2);
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
    QWidget window;
    QT_Button button(picture(), &window);
    QT_ButtonStrip strip(picture(), {{0, 0, 9, 9}, {9, 0, 9, 9}}, &window);
    button.move(0, 50);
    strip.setCheckable(true);
    strip.setExclusive(true);
    strip.setChecked(0, true);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    // The bus of assistants; offscreen there is none. See CMakeLists.txt for the run with it.
    if (!qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"))
        GTEST_SKIP() << "nobody listens here";
    ASSERT_TRUE(QTest::qWaitFor(&QAccessible::isActive));
    const auto previous = QAccessible::installUpdateHandler(&note);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("pressed", "pressed"));
    QTest::mouseClick(&strip, Qt::LeftButton, {}, {12, 3});
    EXPECT_THAT(std::exchange(told, {}),
                ElementsAre("pressed 1", "checked 0", "checked 1", "pressed 1"));
    button.setFocus();
    told.clear();
    QTest::keyClick(&button, Qt::Key_Tab);
    EXPECT_TRUE(strip.hasFocus()) << "by the Tab key, too";
    QTest::keyClick(&strip, Qt::Key_Left);
    EXPECT_THAT(told, testing::Contains("focus 1"));
    EXPECT_THAT(told, testing::Contains("focus 0"));
    QAccessible::installUpdateHandler(previous);
}

/// Widgets with a signal and what lets them emit it.
struct Use {
    int line;
    std::function<QWidget*()> make;
    const char* signal;
    std::function<void(QWidget*)> act;
};

class Deleter : public QObject {
    Q_OBJECT
public slots:
    void deleteSender() { delete sender(); }
};

void clickThrough(QWidget* widget) {
    const QPoint middle = widget->geometry().center();
    QTest::mouseClick(widget->window()->windowHandle(), Qt::LeftButton, {}, middle);
}
void space(QWidget* widget) { QTest::keyClick(widget, Qt::Key_Space); }
void pressByReader(QWidget* widget) {
    auto* access = QAccessible::queryAccessibleInterface(widget);
    if (access->childCount() > 0)
        access = access->child(0);
    access->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
}

TEST(Toolkit, MayBeDeletedByItsSlots) {
    using namespace NS_QT;
    test::ScriptedTimers timers;
    const auto button = [] {
        auto* const made = new QT_Button(picture());
        made->setSchedule({{0, 1}});
        return made;
    };
    const auto strip = []() -> QWidget* {
        auto* const made = new QT_ButtonStrip(picture(), {{0, 0, 20, 10}});
        made->setCheckable(true);
        return made;
    };
    const auto link = [] { return new HyperlinkLabel("Link"); };
    const auto spinBox = [] { return new FractionSpinBox; };
    const auto tick = [&](QWidget* widget) {
        QTest::mousePress(widget, Qt::LeftButton);
        timers.expire();
    };
    const auto shrink = [](QWidget* widget) {
        static_cast<FractionSpinBox*>(widget)->setValue(5);
        if (static_cast<FractionSpinBox*>(widget)->value() == 5)
            static_cast<FractionSpinBox*>(widget)->setRange(7, 9);
    };
    std::vector<Use> uses{
        {__LINE__, button, SIGNAL(clicked()), tick},
        {__LINE__, strip, SIGNAL(toggled(int, bool)), clickThrough},
        {__LINE__, spinBox, SIGNAL(rangeChanged(int, int)), shrink},
    };
    const auto add = [&](int line, auto makeIt, std::vector<const char*> signals_, auto... acts) {
        for (const char* const signal : signals_)
            (uses.push_back({line, makeIt, signal, acts}), ...);
    };
    add(__LINE__, button,
        {SIGNAL(pressed()), SIGNAL(released()), SIGNAL(spinningComplete()), SIGNAL(clicked()),
         SIGNAL(triggered())},
        clickThrough, space);
    add(__LINE__, strip,
        {SIGNAL(pressed(int)), SIGNAL(toggled(int, bool)), SIGNAL(released(int)),
         SIGNAL(clicked(int)), SIGNAL(triggered(int))},
        clickThrough, space);
    add(__LINE__, button, {SIGNAL(clicked()), SIGNAL(triggered())}, pressByReader);
    add(__LINE__, strip, {SIGNAL(clicked(int)), SIGNAL(triggered(int))}, pressByReader);
    add(__LINE__, link, {SIGNAL(clicked())}, clickThrough, space, pressByReader);
    for (const Use& use : uses) {
        SCOPED_TRACE("row at line " + std::to_string(use.line) + " with " + use.signal);
        QWidget window;
        const QPointer<QWidget> widget = use.make();
        widget->setParent(&window);
        widget->resize(widget->sizeHint());
        window.show();
        Deleter deleter;
        QObject::connect(widget, use.signal, &deleter, SLOT(deleteSender()));
        use.act(widget);
        EXPECT_EQ(widget, nullptr);
    }
}

} // namespace

#include "qt_toolkit_test.moc"
