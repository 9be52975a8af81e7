#include "qt_button.h"

#include "check_recorder.h"
#include "picture_art.h"
#include "scripted_timers.h"

#include <QAccessible>
#include <QApplication>
#include <QPointer>
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

/// The halo by its rule: the shape in green, grown, with the picture in its middle.
QImage haloOf(const QImage& picture, int growth) {
    QImage shape = picture;
    for (int i = 0; i < shape.width() * shape.height(); ++i) {
        const QPoint pixel(i % shape.width(), i / shape.width());
        if (qAlpha(shape.pixel(pixel)) != 0)
            shape.setPixel(pixel, 0xff00ff00);
    }
    QImage halo = shape.scaled(picture.size() + QSize(growth, growth), Qt::IgnoreAspectRatio,
                               Qt::SmoothTransformation);
    QPainter(&halo).drawImage(growth / 2, growth / 2, picture);
    return halo;
}

TEST_F(Button, DerivesItsLooksPixelByPixel) {
    const QImage picture = art::image(kPicture);
    const QImage halo = haloOf(picture, 6);
    const QImage pressed = halo.scaled(6, 6, Qt::KeepAspectRatio, Qt::SmoothTransformation);
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
        {__LINE__, picture, QT_Button::Plain, kHovered, 1, picture, {6, 4}},
        {__LINE__, picture, QT_Button::Outline, kHovered, 1, art::image(kOutlined), {6, 4}},
        {__LINE__, picture, QT_Button::Halo, kHovered, 1, halo, {3, 1}},
        {__LINE__, picture, QT_Button::Halo, kPressed, 1, pressed, {8, 6}},
        {__LINE__, normal, QT_Button::Halo, kHovered | kDisabled, 1, disabled, {7, 6}},
        {__LINE__, normalTwice, QT_Button::Plain, 0, 2, normalTwice, {14, 12}},
        {__LINE__, normalTwice, QT_Button::Halo, kHovered, 2, haloOf(normalTwice, 12), {8, 6}},
        {__LINE__, normalTwice, QT_Button::Halo, kDisabled, 2, disabled.scaled(10, 8), {14, 12}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        QPixmap pixmap = QPixmap::fromImage(row.picture);
        pixmap.setDevicePixelRatio(row.ratio);
        QT_Button subject(pixmap);
        subject.resize(20, 16);
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
        EXPECT_TRUE(button.isDown());
        QTest::keyRelease(&button, key);
    }
    EXPECT_EQ(clicks.size(), 3);
    QTest::keyPress(&button, Qt::Key_Space);
    QTest::keyPress(&button, Qt::Key_Escape);
    QTest::keyRelease(&button, Qt::Key_Space);
    EXPECT_EQ(clicks.size(), 3);
}

TEST_F(Button, TicksByItsSchedule) {
    test::ScriptedTimers timers;
    button.setSchedule({{0, 500}, {1, 100}});
    press();
    ASSERT_EQ(timers.lastOwner, button.qt_metacast("kern::TimerInterface"));
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
    timers.expire(); // too late
    EXPECT_EQ(button.tickCount(), 2);
    EXPECT_THAT(timers.calls, ElementsAre("start 500", "kill 1", "start 100", "kill 1"));
}

TEST_F(Button, EndsAPressThatCannotBeReleased) {
    test::ScriptedTimers timers;
    button.setSchedule({{0, 500}});
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
    EXPECT_EQ(clicks.size(), 0);
}

TEST_F(Button, MayBeDeletedByItsSlots) {
    test::ScriptedTimers timers;
    QPointer<QT_Button> subject;
    const std::function<void()> uses[] = {
        [&] { QTest::keyClick(subject, Qt::Key_Space); },
        [&] {
            QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, {13, 8});
        },
        [&] {
            QTest::mousePress(subject, Qt::LeftButton);
            timers.expire();
        },
        [&] {
            auto* const access = QAccessible::queryAccessibleInterface(subject);
            EXPECT_EQ(access->role(), QAccessible::Button);
            EXPECT_EQ(access->text(QAccessible::Name), "Play");
            access->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        },
        [&] {
            subject->disconnect();
            QObject::connect(subject, &QT_Button::spinningComplete, [&] { delete subject; });
            QTest::mouseClick(subject, Qt::LeftButton);
        },
    };
    window.show();
    for (const auto& use : uses) {
        subject = new QT_Button(picture(), &window);
        subject->resize(subject->sizeHint());
        subject->show();
        subject->setSchedule({{0, 1}});
        subject->setToolTip("Play");
        QObject::connect(subject, &QT_Button::clicked, [&] { delete subject; });
        use();
        EXPECT_EQ(subject, nullptr);
    }
}

TEST_F(Button, ShowsTheFocusToThoseWhoUseKeys) {
    button.setPicture(QPixmap::fromImage(art::image({"."})));
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
