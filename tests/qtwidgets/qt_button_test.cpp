#include "qt_button.h"

#include "check_recorder.h"
#include "picture_art.h"
#include "scripted_timers.h"

#include <QApplication>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A picture with a pixel of each kind that derived looks treat differently.
const Art kPicture{"R......", ".......", "..r....", ".......", "....G..", ".......", "......K"};
const Art kOutlined{"RGGGG..", "GGGGG..", "GGrGG..", "GGGGG..", "GGGGG..", ".......", "......."};

void sendTo(QWidget& widget, QEvent::Type type) {
    QEvent event(type);
    QApplication::sendEvent(&widget, &event);
}

class Button : public testing::Test {
protected:
    static QPixmap picture() {
        QPixmap black(20, 10);
        black.fill(Qt::black);
        return black;
    }
    Button() {
        window.resize(200, 100);
        button.resize(40, 30);
    }
    ~Button() override { EXPECT_THAT(checks.take(), IsEmpty()); }

    void hover() { sendTo(button, QEvent::Enter); }
    void press(QPoint at = {20, 15}) { QTest::mousePress(&button, Qt::LeftButton, {}, at); }
    void release(QPoint at = {20, 15}) { QTest::mouseRelease(&button, Qt::LeftButton, {}, at); }

    test::CheckRecorder checks;
    QWidget window;
    QT_Button button{picture(), &window};
    QSignalSpy clicks{&button, &QT_Button::clicked};
    QSignalSpy sequences{&button, &QT_Button::spinningComplete};
};

/// A square of one colour, framed by another.
QImage square(int edge, char colour, int frame = 0, char around = '.') {
    const size_t width = size_t(edge) + 2 * size_t(frame);
    Art lines(width, std::string(width, around));
    for (size_t y = size_t(frame); y < width - size_t(frame); ++y)
        lines[y].replace(size_t(frame), size_t(edge), size_t(edge), colour);
    return art::image(lines);
}

TEST_F(Button, DerivesItsLooksPixelByPixel) {
    const QImage mixed = art::image(kPicture);
    const QImage red = square(4, 'R');
    const QImage normal = art::image({".....", ".WrR.", ".GK..", "....."});
    const QImage disabled = art::image({".....", ".wdd.", ".g...", "....."});
    const QImage normalTwice = normal.scaled(10, 8);
    enum { kHovered = 1, kPressed = 2, kDisabled = 4 };
    struct {
        int line;
        QImage picture;
        int style, state, ratio;
        QImage look;
        QPoint at; // in a widget of 20 x 16
    } const rows[] = {
        {__LINE__, mixed, QT_Button::Plain, kHovered, 1, mixed, {6, 4}},
        {__LINE__, mixed, QT_Button::Outline, kHovered, 1, art::image(kOutlined), {6, 4}},
        {__LINE__, red, QT_Button::Halo, kHovered, 1, square(4, 'R', 3, 'G'), {5, 3}},
        {__LINE__, square(4, '.'), QT_Button::Halo, kHovered, 1, square(4, '.'), {8, 6}},
        {__LINE__, square(10, 'R'), QT_Button::Plain, kPressed, 1, square(9, 'R'), {6, 4}},
        {__LINE__, normal, QT_Button::Halo, kHovered | kDisabled, 1, disabled, {7, 6}},
        {__LINE__, normalTwice, QT_Button::Plain, 0, 2, normalTwice, {14, 12}},
        {__LINE__, red, QT_Button::Halo, kHovered, 2, square(4, 'R', 6, 'G'), {12, 8}},
        {__LINE__, normalTwice, QT_Button::Halo, kDisabled, 2, disabled.scaled(10, 8), {14, 12}},
    };
    const std::function<void(QT_Button&)> looks[] = {
        [](QT_Button& subject) { sendTo(subject, QEvent::Enter); },
        [](QT_Button& subject) {
            QTest::mousePress(&subject, Qt::LeftButton, {}, {10, 8});
        },
        [](QT_Button& subject) { subject.setEnabled(false); },
        [](QT_Button& subject) { sendTo(subject, QEvent::Leave); },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        QT_Button subject;
        subject.setPicture(picture()); // whose looks are forgotten
        subject.resize(20, 16);
        for (const auto& next : looks) {
            next(subject);
            art::drawn(subject);
        }
        subject.setEnabled(true);
        QPixmap pixmap = QPixmap::fromImage(row.picture);
        pixmap.setDevicePixelRatio(row.ratio);
        subject.setPicture(pixmap);
        subject.setHotStyle(row.style);
        if (row.state & kHovered)
            sendTo(subject, QEvent::Enter);
        if (row.state & kPressed)
            QTest::mousePress(&subject, Qt::LeftButton, {}, {10, 8});
        subject.setDisabled(row.state & kDisabled);
        const QImage expected = art::placed(row.look, row.at, subject.size() * row.ratio);
        EXPECT_EQ(art::drawn(subject, row.ratio), expected);
    }
}

TEST_F(Button, DrawsWithItsOpacityAndReportsAnUnknownStyleOnce) {
    button.setOpacity(0.25);
    button.setHotStyle(3);
    hover();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(qAlpha(art::drawn(button).pixel(20, 15)), 63);
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_button.cpp"));
}

// The picture covers 10 <= x < 30 and 10 <= y < 20 of the widget.
TEST_F(Button, ClicksWithinItsPicture) {
    press({11, 11});
    release({29, 19});
    EXPECT_EQ(clicks.size(), 1);
    for (const QPoint outside : {QPoint(10, 15), {20, 10}, {30, 15}, {20, 20}}) {
        press(outside);
        EXPECT_FALSE(button.isDown());
        press();
        release(outside);
    }
    QTest::mouseClick(&button, Qt::RightButton, {}, {20, 15});
    EXPECT_EQ(clicks.size(), 1);
}

TEST_F(Button, KeysPressIt) {
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        QTest::keyPress(&button, key);
        EXPECT_TRUE(button.isDown());
        press(); // while a key holds it, the mouse does nothing
        release();
        QTest::keyRelease(&button, key == Qt::Key_Space ? Qt::Key_Enter : Qt::Key_Space);
        EXPECT_TRUE(button.isDown());
        QTest::keyRelease(&button, key);
        QTest::keyRelease(&button, key); // it did not press again
    }
    EXPECT_EQ(clicks.size(), 3);
    QTest::keyPress(&button, Qt::Key_Space);
    QTest::keyPress(&button, Qt::Key_Escape);
    QTest::keyRelease(&button, Qt::Key_Space);
    release();
    EXPECT_EQ(clicks.size(), 3);
}

// Qt sends no Leave while a button is held; tests/qtwidgets/pointer.py has a real pointer.
TEST_F(Button, HoversWhereTheHeldPointerIs) {
    test::ScriptedTimers timers;
    button.setSchedule({{0, 1}, {1, 1}, {2, 1}, {3, 1}});
    press();
    const auto clicksAt = [&](QPoint at) {
        QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(&button, &move);
        const int before = clicks.size();
        timers.expire();
        return clicks.size() - before;
    };
    EXPECT_EQ(clicksAt({300, 15}), 0);
    EXPECT_EQ(clicksAt({20, 15}), 1);
    EXPECT_EQ(clicksAt({5, 15}), 0) << "beside the picture, where a release would not click";
    release({5, 15});
    button.setHotStyle(QT_Button::Halo);
    const QImage hot = art::drawn(button);
    press();
    button.setEnabled(false);
    button.setEnabled(true);
    EXPECT_EQ(art::drawn(button), hot) << "the pointer has not moved";
    button.setEnabled(false);
    sendTo(button, QEvent::Leave);
    button.setEnabled(true);
    EXPECT_NE(art::drawn(button), hot);
}

TEST_F(Button, TicksByItsSchedule) {
    test::ScriptedTimers timers;
    button.setSchedule({{0, 500}, {1, 100}});
    const QSignalSpy uses(&button, &QT_Button::triggered);
    press();
    ASSERT_EQ(timers.lastOwner,
              qobject_cast<kern::TimerInterface*>(static_cast<QObject*>(&button)));
    timers.lastOwner->timerExpired(2); // not its own
    timers.expire();
    EXPECT_EQ(clicks.size(), 1);
    sendTo(button, QEvent::Leave);
    timers.expire(); // no click while the pointer is away, and nothing for tick 2
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_button.cpp"));
    EXPECT_EQ(button.tickCount(), 2);
    hover();
    EXPECT_EQ(sequences.size(), 0);
    release();
    EXPECT_EQ(clicks.size(), 2);
    EXPECT_EQ(sequences.size(), 1);
    EXPECT_EQ(uses.size(), 1);
    timers.expire(); // too late
    EXPECT_EQ(button.tickCount(), 2);
    press();
    EXPECT_EQ(button.tickCount(), 0) << "a new sequence";
    EXPECT_THAT(timers.calls,
                ElementsAre("start 500", "kill 1", "start 100", "kill 1", "start 500"));
    // A press that is taken back inside a tick starts no other.
    QObject::connect(&button, &QT_Button::clicked, [&] { button.setEnabled(false); });
    timers.expire();
    EXPECT_EQ(timers.calls.back(), "kill 1");
    EXPECT_EQ(QT_Button::repeating(500, 100).rbegin()->first, 36000);
}

TEST_F(Button, EndsAPressThatCannotBeReleased) {
    test::ScriptedTimers timers;
    button.setSchedule({{0, 500}});
    const QSignalSpy released(&button, &QT_Button::released);
    const std::function<void()> ends[] = {[&] { button.setEnabled(false); }, [&] { button.hide(); },
                                          [&] { sendTo(button, QEvent::WindowDeactivate); }};
    window.show();
    for (const auto& end : ends) {
        button.show();
        button.setEnabled(true);
        press();
        end();
        EXPECT_FALSE(button.isDown());
        EXPECT_EQ(timers.calls.back(), "kill 1");
    }
    QCoreApplication::sendPostedEvents(&button);
    EXPECT_EQ(sequences.size(), 3);
    EXPECT_EQ(released.size(), 3);
    EXPECT_EQ(clicks.size(), 0);
}

TEST_F(Button, ShowsTheFocusToThoseWhoUseKeys) {
    button.setPicture(QPixmap::fromImage(art::image({"."})));
    button.setOpacity(0);
    window.show();
    QApplication::setActiveWindow(&window);
    const auto drawsAnything = [&] {
        return art::drawn(button) != art::placed({}, {}, button.size());
    };
    button.setFocus(Qt::ActiveWindowFocusReason);
    EXPECT_FALSE(drawsAnything());
    QTest::keyClick(&button, Qt::Key_Space);
    EXPECT_TRUE(drawsAnything());
}

} // namespace
