#include "picture_art.h"
#include "play.h"
#include "qt_button.h"
#include "qt_buttonstrip.h"
#include "qt_buttonstrips.h"
#include "testing_checkrecorder.h"
#include "testing_manualtimers.h"

#include <QHelpEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <tuple>

namespace {

using testing::ElementsAre;

// What QT_Button and QT_ButtonStrip have in common.
constexpr auto kClick = "pressed, released, clicked, triggered";
constexpr auto kNoClick = "pressed, released";

const std::pair<const char*, const char*> kRows[] = {
    {"+11,11 ~5,5 ~20,15 -29,19", kClick},
    {"+10,15 ~20,15 -20,15", ""},
    {"+20,10 -20,10 +30,15 -30,15 +20,20 -20,20", ""},
    {"+20,15 ~20,15 -20,20", kNoClick},
    {">20,15 <20,15 -20,15 ~20,15", ""},
    {"+20,15 >20,15 <20,15 +20,15 -20,15", kClick},
    {"+20,15 +Space -Space -20,15", kClick},
    {"+Space *Space -Space", kClick},
    {"+Return -Space Esc -Return", kNoClick},
    {"+Enter +20,15 ~5,5 -20,15 -Enter", kClick},
    {"Esc A -Space *Space -Space", ""},
    {"+Space Esc *Space -Space", kNoClick},
    {"+20,15 Esc ~20,15 -20,15", kNoClick},
    {"+20,15 off ~20,15 -20,15 on", kNoClick},
    {"+20,15 hidden -20,15", kNoClick},
    {"+20,15 away -20,15", kNoClick},
    {"focus +Space blur -Space", kNoClick},
    {"off +20,15 -20,15 Space on", ""},
};

TEST(PressWidget, ClicksByMouseAndKeys) {
    QPixmap black(20, 10);
    black.fill(Qt::black);
    QWidget window;
    QT_Button button(black, &window);
    QT_ButtonStrip strip(QPixmap(30, 20), {{11, 11, 19, 9}}, &window);
    button.setGeometry(0, 0, 40, 30); // each has one button at 10 < x < 30 and 10 < y < 20
    strip.setGeometry(40, 0, 40, 30);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (auto* const widget : std::initializer_list<NS_QT::PressWidget*>{&button, &strip}) {
        test::Heard heard(*widget);
        for (const auto& [script, said] : kRows) {
            SCOPED_TRACE(script);
            for (const QString& step : QString(script).split(' '))
                EXPECT_TRUE(art::repaints(*widget, [&] { test::play(*widget, step); }));
            EXPECT_EQ(QString::fromStdString(heard.take()).remove(" 0").toStdString(), said);
        }
    }
}

/// A picture with a pixel of each kind that derived looks treat differently.
const Art kPicture{"R......", ".......", "..r....", ".......", "....G..", ".......", "......K"};
const Art kOutlined{"RGGGG..", "GGGGG..", "GGrGG..", "GGGGG..", "GGGGG..", ".......", "......."};

// Its picture covers 10 <= x < 30 and 10 <= y < 20.
struct Button : testing::Test {
    Button() { button.resize(40, 30); }

    test::ManualTimers timers;
    QWidget window;
    QT_Button button{QPixmap::fromImage(art::square(20, 'K').copy(0, 0, 20, 10)), &window};
    test::Heard heard{button};
};

TEST_F(Button, DerivesItsLooksPixelByPixel) {
    const QImage mixed = art::image(kPicture);
    const QImage red = art::square(4, 'R');
    const QImage big = art::square(20, 'R');
    const QImage nineTenths = art::square(18, 'R');
    const auto halo = [&](int width) {
        QImage image = art::square(red.width() + 2 * width, 'G');
        QPainter(&image).drawImage(width, width, red);
        return image;
    };
    const QImage normal = art::image({".......", ".WWrRR.", ".W...R.", ".GGRRR.", "......."});
    const QImage disabled = art::image({".......", ".wwddd.", ".w...d.", ".ggddd.", "......."});
    constexpr int unknown = 3;
    // the picture, style, state and ratio, and what is drawn where in a widget of 20 x 16
    const std::tuple<QImage, int, const char*, int, QImage, QPoint> rows[] = {
        {mixed, unknown, "enter", 1, mixed, {6, 4}},
        {mixed, QT_Button::Outline, "enter", 1, art::image(kOutlined), {6, 4}},
        {red, QT_Button::Halo, "enter", 1, halo(3), {5, 3}},
        {red, QT_Button::Halo, "enter", 2, halo(6), {12, 8}},
        {art::square(4, '.'), QT_Button::Halo, "enter", 1, art::square(4, '.'), {8, 6}},
        {big, QT_Button::Plain, "+10,8", 1, nineTenths, {2, 0}},
        {normal, QT_Button::Halo, "enter off", 1, disabled, {6, 5}},
        {normal.scaled(14, 10), QT_Button::Halo, "off", 2, disabled.scaled(14, 10), {12, 10}},
    };
    for (const auto& [source, style, state, ratio, look, at] : rows) {
        SCOPED_TRACE(state + (" with style " + std::to_string(style)));
        QT_Button subject;
        subject.resize(20, 16);
        QPixmap pixmap = QPixmap::fromImage(source);
        pixmap.setDevicePixelRatio(ratio);
        for (const QPixmap& picture : {button.picture(), pixmap}) {
            subject.setPicture(picture);
            for (const char* const earlier : {"enter", "+10,8", "off", "on leave"}) {
                test::play(subject, earlier);
                art::drawn(subject); // looks that are forgotten when they have to be others
            }
        }
        subject.setHotStyle(style);
        test::play(subject, state);
        test::CheckRecorder checks;
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(art::drawn(subject, ratio), art::placed(look, at, subject.size() * ratio));
        const std::vector<std::string> reported(style == unknown ? 1 : 0, "CHECKF qt_button.cpp");
        EXPECT_EQ(checks.takeSites(), reported);
    }
}

// Qt sends no Leave while a button is held; tests/qtwidgets/pointer.py has a real pointer.
TEST_F(Button, IsHotWhereThePointerIs) {
    button.setHotStyle(QT_Button::Halo);
    const QImage cold = art::drawn(button);
    const std::pair<const char*, bool> rows[] = {
        {"enter", true},
        {"+20,15 ~5,15 -5,15", true}, // over the widget, though not over the picture
        {"+20,15 off on -20,15", true},
        {"off leave on", false},
        {"+20,15 ~5,15 leave -300,15", false},
        {"+Space -Space", false},
        {"~20,15", true},
        {"~300,15", false},
    };
    for (const auto& [script, hot] : rows) {
        test::play(button, script);
        EXPECT_EQ(art::drawn(button) != cold, hot) << script;
    }
}

TEST_F(Button, TicksByItsScheduleAndClicksWhereAReleaseWould) {
    test::CheckRecorder checks;
    button.setSchedule({{0, 500}, {1, 100}});
    heard.take();
    const std::tuple<const char*, uint32_t, int, const char*> rows[] = {
        {"+20,15", 499, 0, "pressed"},
        {"", 1, 1, "clicked"},
        {"~300,15", 100, 2, ""}, // with nothing in the schedule for the next
        {"-20,15", 500, 2, "released, spinningComplete, clicked, triggered"},
        {"+Space", 500, 1, "pressed, clicked"},
        {"Esc -Space", 500, 1, "released, spinningComplete"},
    };
    auto* const timed = qobject_cast<kern::TimerInterface*>(static_cast<QObject*>(&button));
    for (const auto& [script, time, ticks, said] : rows) {
        test::play(button, script);
        timed->timerExpired(77); // not its own
        timers.advance(time);
        EXPECT_EQ(button.tickCount(), ticks) << script;
        EXPECT_EQ(heard.take(), said) << script;
    }
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_button.cpp"));
    // A press that is taken back inside a tick starts no other.
    QObject::connect(&button, &QT_Button::clicked, [&] { button.setEnabled(false); });
    test::play(button, "+20,15");
    timers.advance(500);
    EXPECT_EQ(timers.running(), 0U);
    EXPECT_EQ(QT_Button::repeating(500, 100).rbegin()->first, 36000);
}

TEST_F(Button, ShowsTheFocusToThoseWhoUseKeysHoweverItFades) {
    button.setOpacity(0);
    window.show();
    QApplication::setActiveWindow(&window);
    button.setFocus(Qt::ActiveWindowFocusReason);
    const QImage nothing = art::placed({}, {}, button.size());
    EXPECT_EQ(art::drawn(button), nothing);
    test::play(button, "Space");
    EXPECT_NE(art::drawn(button), nothing);
}

// Three buttons of 4 x 4 at 0, 6 and 10, so with a gap after the first.
const QVector<QRect> kRects{{0, 0, 4, 4}, {6, 0, 4, 4}, {10, 0, 4, 4}};
const Art kStrip{"RRRR..RRRR....", "RRRR..R..R.rr.", "RRRR..R..R.rr.", "RRRR..RRRR...."};
const Art kFirstDown{"SSSS..RRRR....", "SSSS..R..R.rr.", "SSSS..R..R.rr.", "SSSS..RRRR...."};
const Art kSecondDown{"RRRR..SSSS....", "RRRR..SssS.rr.", "RRRR..SssS.rr.", "RRRR..SSSS...."};
const Art kDisabled{"FFFF..FFFF....", "FFFF..F..F.ff.", "FFFF..F..F.ff.", "FFFF..FFFF...."};
const Art kFirstDisabled{"FFFF..RRRR....", "FFFF..R..R.rr.", "FFFF..R..R.rr.", "FFFF..RRRR...."};

// Twice as fine as it is large.
QPixmap picture() {
    QPixmap picture = QPixmap::fromImage(art::image(kStrip).scaled(28, 8));
    picture.setDevicePixelRatio(2);
    return picture;
}

struct Strip : testing::Test {
    Strip() {
        window.resize(200, 100);
        strip.resize(20, 10);
    }

    void play(const char* script) { test::play(strip, script); }
    /// That the strip looks like this, with nothing beside or below.
    void expectDrawn(const Art& expected) {
        const QImage look = art::image(expected).scaled(28, 8);
        EXPECT_EQ(art::drawn(strip, 2), art::placed(look, {}, strip.size() * 2)) << expected[0];
    }

    QWidget window;
    QT_ButtonStrip strip{picture(), kRects, &window};
    test::Heard heard{strip};
};

TEST_F(Strip, DrawsItsPicturesInPlace) {
    expectDrawn(kStrip);
    strip.setChecked(1, true);
    expectDrawn(kSecondDown);
    play("+1,1 ~7,1"); // which hides the press
    expectDrawn(kSecondDown);
    strip.setChecked(1, false);
    play("~1,1");
    expectDrawn(kFirstDown);
    play("off");
    expectDrawn(kDisabled);
    play("on");
    strip.setButtonEnabled(0, false);
    expectDrawn(kFirstDisabled);
}

TEST_F(Strip, TogglesAndExcludes) {
    play("+11,1 -11,1 +1,1 -7,1 +4,0 -4,0 +16,6 -16,6");
    EXPECT_EQ(heard.take(), "currentButtonChanged 2, pressed 2, released 2, clicked 2, "
                            "triggered 2, currentButtonChanged 0, pressed 0, released 0");
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    strip.setCheckable(true);
    for (const int index : {0, 1, 2, 0})
        strip.click(index);
    heard.take();
    strip.setExclusive(true);
    EXPECT_TRUE(art::repaints(strip, [&] { play("+1,1 -1,1 +1,1 -1,1"); }));
    for (const int index : {3, -1, 1})
        strip.setChecked(index, true);
    EXPECT_EQ(heard.take(),
              "toggled 2 false, exclusiveChanged true, "
              "pressed 0, toggled 0 true, toggled 1 false, released 0, clicked 0, triggered 0, "
              "pressed 0, released 0, clicked 0, triggered 0, toggled 0 false, toggled 1 true");
}

TEST_F(Strip, LooksPressedUntilItsSlotReturns) {
    strip.setCheckable(true);
    strip.setChecked(0, true);
    QObject::connect(&strip, &QT_ButtonStrip::clicked, [&](int index) {
        expectDrawn(index == 0 ? kFirstDown : kSecondDown);
        play(index == 0 ? "-1,1 +7,1" : "-7,1"); // a release is of a press that is over
    });
    play("+1,1 -1,1");
    EXPECT_EQ(strip.pressedButton(), 1) << "begun in the slot, it goes on";
    expectDrawn(kSecondDown);
    play("-7,1");
    strip.setChecked(1, false);
    expectDrawn(kStrip);
}

TEST_F(Strip, ButtonsCanBeDisabledAndHaveShortcuts) {
    strip.setButtonShortcut(1, QKeySequence("Ctrl+L"));
    strip.setButtonShortcut(2, QKeySequence("Ctrl+K"));
    strip.setButtonEnabled(2, false);
    play("+1,1");
    strip.setButtonEnabled(0, false);
    EXPECT_EQ(strip.pressedButton(), -1);
    play("+1,1 -1,1");
    strip.click(0);
    window.show();
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_K, Qt::ControlModifier);
    play("Space Right Left End Home");
    QTest::keyClick(&window, Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(heard.take(),
              "pressed 0, released 0, currentButtonChanged 1, clicked 1, triggered 1");
}

TEST_F(Strip, TheFocusStandsOutFromAnyPicture) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    play("blur focus");
    const auto luminance = [](const QColor& grey) { return std::pow(grey.greenF(), 2.2) + 0.05; };
    for (const QColor& colours : {QColor(239, 239, 239), QColor(53, 53, 53)}) {
        window.setPalette(colours);
        for (const QColor& fill : {QColor(Qt::black), QColor(Qt::gray), QColor(Qt::white)}) {
            QPixmap plain(20, 10);
            plain.fill(fill);
            strip.setPicture(plain);
            double contrast = 0; // as W3C has it
            for (const int y : {0, 1}) {
                const QColor frame = art::drawn(strip).pixelColor(2, y);
                const double ratio = luminance(fill) / luminance(frame);
                contrast = std::max({contrast, ratio, 1 / ratio});
            }
            EXPECT_GE(contrast, 3) << fill.name().toStdString();
        }
    }
}

TEST_F(Strip, TellsWhatItsButtonsDo) {
    const auto& modes = QT_ButtonStrips::definition(QT_ButtonStrips::PlayMode);
    EXPECT_STREQ(modes.file, "playmode.but");
    strip.setButtonToolTips(modes.toolTips().mid(0, 2));
    strip.setButtonToolTip(3, "no such button");
    window.show();
    for (const int index : {2, 3, 1, 0}) {
        const QPoint at = kRects.value(index, {16, 6, 2, 2}).center();
        QHelpEvent event(QEvent::ToolTip, at, strip.mapToGlobal(at));
        EXPECT_TRUE(QApplication::sendEvent(&strip, &event));
        EXPECT_EQ(event.isAccepted(), index < 2);
        EXPECT_EQ(QToolTip::text(), index < 2 ? modes.toolTips()[index] : QString());
    }
    test::CheckRecorder checks;
    QEvent other(QEvent::ToolTip);
    EXPECT_TRUE(QApplication::sendEvent(&strip, &other));
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_buttonstrip.cpp"));
    QToolTip::hideText();
}

} // namespace
