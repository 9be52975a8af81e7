#include "qt_button.h"

#include "picture_art.h"
#include "play.h"
#include "testing_checkrecorder.h"
#include "testing_manualtimers.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A picture with a pixel of each kind that derived looks treat differently.
const Art kPicture{"R......", ".......", "..r....", ".......", "....G..", ".......", "......K"};
const Art kOutlined{"RGGGG..", "GGGGG..", "GGrGG..", "GGGGG..", "GGGGG..", ".......", "......."};

// Its picture covers 10 <= x < 30 and 10 <= y < 20.
class Button : public testing::Test {
protected:
    Button() { button.resize(40, 30); }
    ~Button() override { EXPECT_THAT(checks.take(), IsEmpty()); }

    test::CheckRecorder checks;
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
    const QImage normal = art::image({".......", ".WWrRR.", ".W...R.", ".GGRRR.", "......."});
    const QImage disabled = art::image({".......", ".wwddd.", ".w...d.", ".ggddd.", "......."});
    const QImage normalTwice = normal.scaled(14, 10);
    struct {
        int line;
        QImage picture;
        int style;
        const char* state;
        int ratio;
        QImage look;
        QPoint at; // in a widget of 20 x 16
    } const rows[] = {
        {__LINE__, mixed, QT_Button::Plain, "enter", 1, mixed, {6, 4}},
        {__LINE__, mixed, QT_Button::Outline, "enter", 1, art::image(kOutlined), {6, 4}},
        {__LINE__, red, QT_Button::Halo, "enter", 1, art::square(4, 'R', 3, 'G'), {5, 3}},
        {__LINE__, art::square(4, '.'), QT_Button::Halo, "enter", 1, art::square(4, '.'), {8, 6}},
        {__LINE__, big, QT_Button::Plain, "+10,8", 1, nineTenths, {2, 0}},
        {__LINE__, big, QT_Button::Plain, "+10,8", 2, nineTenths, {12, 8}},
        {__LINE__, normal, QT_Button::Halo, "enter off", 1, disabled, {6, 5}},
        {__LINE__, normalTwice, QT_Button::Plain, "", 2, normalTwice, {12, 10}},
        {__LINE__, red, QT_Button::Halo, "enter", 2, art::square(4, 'R', 6, 'G'), {12, 8}},
        {__LINE__, normalTwice, QT_Button::Halo, "off", 2, disabled.scaled(14, 10), {12, 10}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        QT_Button subject;
        subject.resize(20, 16);
        QPixmap pixmap = QPixmap::fromImage(row.picture);
        pixmap.setDevicePixelRatio(row.ratio);
        for (const QPixmap& picture : {button.picture(), pixmap}) {
            subject.setPicture(picture);
            for (const char* const state : {"enter", "+10,8", "off", "on leave"}) {
                test::play(subject, state);
                art::drawn(subject); // looks that are forgotten when they have to be others
            }
        }
        subject.setHotStyle(row.style);
        test::play(subject, row.state);
        const QImage expected = art::placed(row.look, row.at, subject.size() * row.ratio);
        EXPECT_EQ(art::drawn(subject, row.ratio), expected);
    }
}

TEST_F(Button, DrawsWithItsOpacityAndReportsAnUnknownStyleOnce) {
    button.setOpacity(0.25);
    button.setHotStyle(3);
    test::play(button, "enter");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(qAlpha(art::drawn(button).pixel(20, 15)), 63);
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_button.cpp"));
}

// Qt sends no Leave while a button is held; tests/qtwidgets/pointer.py has a real pointer.
TEST_F(Button, IsHotWhereThePointerIs) {
    button.setHotStyle(QT_Button::Halo);
    const QImage cold = art::drawn(button);
    const std::pair<const char*, bool> rows[] = {
        {"enter", true},
        {"+20,15 ~5,15 -5,15", true}, // over the widget, though not over the picture
        {"off on", true},
        {"+20,15 off on -20,15", true},
        {"off leave on", false},
        {"+20,15 -20,15", true},
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

TEST_F(Button, TicksWhileItIsHeldAndClicksWhereAReleaseWould) {
    button.setSchedule(QT_Button::repeating(500, 100));
    heard.take();
    const std::pair<const char*, const char*> rows[] = {
        {"+20,15", "pressed, clicked"},
        {"~300,15", ""},
        {"~5,15", ""},
        {"~20,15", "clicked"},
        {"-20,15", "released, spinningComplete, clicked, triggered"},
        {"+Space", "pressed, clicked"},
        {"Esc -Space", "released, spinningComplete"},
    };
    for (const auto& [script, said] : rows) {
        test::play(button, script);
        EXPECT_EQ(timers.expire(), button.isDown());
        EXPECT_EQ(heard.take(), said) << script;
    }
    // A press that is taken back inside a tick starts no other.
    QObject::connect(&button, &QT_Button::clicked, [&] { button.setEnabled(false); });
    test::play(button, "+20,15");
    timers.expire();
    EXPECT_EQ(timers.running(), 0U);
}

TEST_F(Button, TicksByItsSchedule) {
    button.setSchedule({{0, 500}, {1, 100}});
    test::play(button, "+20,15");
    auto* const timed = qobject_cast<kern::TimerInterface*>(static_cast<QObject*>(&button));
    ASSERT_NE(timed, nullptr);
    timed->timerExpired(77); // not its own
    timers.advance(499);
    EXPECT_EQ(button.tickCount(), 0);
    timers.advance(1);
    EXPECT_EQ(button.tickCount(), 1);
    timers.advance(100); // nothing for tick 2
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_button.cpp"));
    EXPECT_EQ(button.tickCount(), 2);
    EXPECT_EQ(button.period(), 100);
    test::play(button, "-20,15 +Space");
    EXPECT_EQ(button.tickCount(), 0) << "a new sequence";
    EXPECT_EQ(QT_Button::repeating(500, 100).rbegin()->first, 36000);
}

TEST_F(Button, ShowsTheFocusToThoseWhoUseKeys) {
    button.setPicture(QPixmap::fromImage(art::image({"."})));
    button.setOpacity(0);
    window.show();
    QApplication::setActiveWindow(&window);
    const QImage nothing = art::placed({}, {}, button.size());
    button.setFocus(Qt::ActiveWindowFocusReason);
    EXPECT_EQ(art::drawn(button), nothing);
    test::play(button, "Space");
    EXPECT_NE(art::drawn(button), nothing);
    // On a scaled screen no side of it falls between the pixels.
    button.setGeometry(QRect(QPoint(11, 11), button.sizeHint()));
    QImage scaled(40, 40, QImage::Format_ARGB32);
    scaled.setDevicePixelRatio(1.25);
    window.render(&scaled);
    for (const QPoint& corner : {button.pos(), button.geometry().bottomRight() + QPoint(1, 1)}) {
        const QPoint pixel = (QPointF(corner) * 1.25).toPoint();
        EXPECT_EQ(scaled.pixelColor(corner == button.pos() ? pixel : pixel - QPoint(1, 1)),
                  window.palette().color(QPalette::WindowText));
    }
}

} // namespace
