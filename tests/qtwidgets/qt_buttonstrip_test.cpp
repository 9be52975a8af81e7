#include "qt_buttonstrip.h"

#include "check_recorder.h"
#include "core_varargs.h"
#include "picture_art.h"
#include "qt_buttonstrips.h"

#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QTest>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Three buttons of 4 x 4 with a gap of 2 after the first.
const QVector<QRect> kRects{{0, 0, 4, 4}, {6, 0, 4, 4}, {10, 0, 4, 4}};
const Art kStrip{"RRRR..RRRR....", "RRRR..R..R.rr.", "RRRR..R..R.rr.", "RRRR..RRRR...."};
const Art kFirstDown{"SSSS..RRRR....", "SSSS..R..R.rr.", "SSSS..R..R.rr.", "SSSS..RRRR...."};
const Art kSecondDown{"RRRR..SSSS....", "RRRR..SssS.rr.", "RRRR..SssS.rr.", "RRRR..SSSS...."};
const Art kDisabled{"FFFF..FFFF....", "FFFF..F..F.ff.", "FFFF..F..F.ff.", "FFFF..FFFF...."};
const Art kFirstDisabled{"FFFF..RRRR....", "FFFF..R..R.rr.", "FFFF..R..R.rr.", "FFFF..RRRR...."};

QPixmap picture() { return QPixmap::fromImage(art::image(kStrip)); }

class Strip : public testing::Test {
protected:
    Strip() {
        window.resize(200, 100);
        strip.resize(20, 10);
        const auto note = [this](const char* what) {
            return [this, what](int index) { said += core::format("%s %d, ", what, index); };
        };
        QObject::connect(&strip, &QT_ButtonStrip::pressed, note("pressed"));
        QObject::connect(&strip, &QT_ButtonStrip::released, note("released"));
        QObject::connect(&strip, &QT_ButtonStrip::clicked, note("clicked"));
        QObject::connect(&strip, &QT_ButtonStrip::triggered, note("triggered"));
        QObject::connect(&strip, &QT_ButtonStrip::toggled,
                         [=](int i, bool on) { note(on ? "checked" : "unchecked")(i); });
    }
    ~Strip() override { EXPECT_THAT(checks.take(), IsEmpty()); }

    static QPoint in(int index) { return kRects.value(index, {16, 6, 2, 2}).center(); }
    void press(int index) { QTest::mousePress(&strip, Qt::LeftButton, {}, in(index)); }
    void release(int index) { QTest::mouseRelease(&strip, Qt::LeftButton, {}, in(index)); }
    void moveTo(int index) {
        QMouseEvent event(QEvent::MouseMove, in(index), Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(&strip, &event);
    }
    void click(int index) {
        press(index);
        release(index);
    }
    /// The signals since the last call.
    std::string heard() { return std::exchange(said, {}); }
    /// The strip's buttons, 'x' for those checked.
    std::string checked() const {
        std::string text;
        for (int index = 0; index < strip.count(); ++index)
            text += strip.isChecked(index) ? 'x' : '.';
        return text;
    }
    /// That the strip looks like this, with nothing beside or below.
    void expectDrawn(const Art& expected) {
        EXPECT_EQ(art::drawn(strip), art::placed(art::image(expected), {}, strip.size()))
            << expected[0];
    }

    test::CheckRecorder checks;
    QWidget window;
    QT_ButtonStrip strip{picture(), kRects, &window};
    std::string said;
};

TEST_F(Strip, DrawsItsPicturesInPlace) {
    expectDrawn(kStrip);
    strip.setChecked(1, true);
    expectDrawn(kSecondDown);
    press(0);
    moveTo(1); // which hides the press
    expectDrawn(kSecondDown);
    strip.setChecked(1, false);
    moveTo(0);
    expectDrawn(kFirstDown);
    strip.setEnabled(false);
    EXPECT_EQ(strip.pressedButton(), -1);
    expectDrawn(kDisabled);
    strip.setEnabled(true);
    strip.setButtonEnabled(0, false);
    expectDrawn(kFirstDisabled);

    QPixmap dense = picture().scaled(28, 8);
    dense.setDevicePixelRatio(2);
    QT_ButtonStrip sharp(dense, kRects);
    sharp.resize(sharp.sizeHint());
    sharp.setChecked(1, true);
    EXPECT_EQ(art::drawn(sharp, 2), art::image(kSecondDown).scaled(28, 8));
}

// Every picture that Qt makes has a number of its own, in sequence.
TEST_F(Strip, MakesNoPictureToDraw) {
    QT_ButtonStrip wide(QPixmap(1000, 40), {{0, 0, 40, 40}, {960, 0, 40, 40}});
    wide.resize(1000, 40);
    wide.setChecked(1, true);
    QImage target(1000, 40, QImage::Format_ARGB32_Premultiplied);
    for (const bool enabled : {true, false}) {
        wide.setEnabled(enabled);
        wide.render(&target, {}, {}, {});
        const qint64 before = QImage(1, 1, QImage::Format_RGB32).cacheKey() >> 32;
        wide.render(&target, {}, {}, {});
        EXPECT_EQ(QImage(1, 1, QImage::Format_RGB32).cacheKey() >> 32, before + 1);
    }
}

TEST_F(Strip, ClicksOnTheButtonThatWasPressed) {
    click(2);
    press(0);
    QTest::mouseRelease(&strip, Qt::RightButton, {}, in(0));
    release(1);
    release(0);
    click(3);                                              // beside all
    QTest::mouseClick(&strip, Qt::LeftButton, {}, {4, 0}); // right of the first
    QTest::mouseClick(&strip, Qt::RightButton, {}, in(0));
    EXPECT_EQ(heard(), "pressed 2, released 2, clicked 2, triggered 2, pressed 0, released 0, ");
}

TEST_F(Strip, TogglesAndExcludes) {
    strip.setCheckable(true);
    for (const int index : {0, 1, 2, 0})
        click(index);
    EXPECT_EQ(checked(), ".xx");
    heard();
    strip.setExclusive(true);
    EXPECT_EQ(checked(), ".x.");
    click(0);
    click(0);
    EXPECT_EQ(checked(), "x..");
    for (const int index : {3, -1, 1})
        strip.setChecked(index, true);
    EXPECT_EQ(checked(), ".x.");
    strip.setChecked(1, false);
    EXPECT_EQ(heard(), "unchecked 2, pressed 0, checked 0, unchecked 1, released 0, clicked 0, "
                       "triggered 0, pressed 0, released 0, clicked 0, triggered 0, unchecked 0, "
                       "checked 1, unchecked 1, ");
}

TEST_F(Strip, LooksPressedUntilItsSlotReturns) {
    strip.setCheckable(true);
    strip.setChecked(0, true);
    bool first = true;
    QObject::connect(&strip, &QT_ButtonStrip::clicked, [&] {
        EXPECT_EQ(checked(), first ? "..." : "x..");
        EXPECT_EQ(strip.pressedButton(), 0);
        expectDrawn(kFirstDown);
        release(0); // of a press that is over
        if (!std::exchange(first, false))
            press(1);
    });
    click(0);
    EXPECT_EQ(strip.pressedButton(), -1);
    expectDrawn(kStrip);
    click(0);
    EXPECT_EQ(strip.pressedButton(), 1) << "begun in the slot, it goes on";
    strip.setChecked(0, false);
    expectDrawn(kSecondDown);
}

TEST_F(Strip, ButtonsCanBeDisabledAndHaveShortcuts) {
    strip.setButtonShortcut(1, QKeySequence("Ctrl+L"));
    strip.setButtonShortcut(2, QKeySequence("Ctrl+K"));
    strip.setButtonEnabled(2, false);
    press(0);
    strip.setButtonEnabled(0, false);
    EXPECT_EQ(strip.pressedButton(), -1);
    click(0);
    strip.click(0);
    window.show();
    QApplication::setActiveWindow(&window);
    QTest::keyClick(&window, Qt::Key_K, Qt::ControlModifier);
    QTest::keyClick(&strip, Qt::Key_Space);
    QTest::keyClick(&strip, Qt::Key_Right);
    QTest::keyClick(&strip, Qt::Key_End);
    QTest::keyClick(&strip, Qt::Key_Home);
    EXPECT_EQ(strip.currentButton(), 1);
    QApplication::sendPostedEvents(&strip);
    EXPECT_EQ(heard(), "pressed 0, released 0, ");
    QTest::keyClick(&window, Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(heard(), "clicked 1, triggered 1, ");
}

TEST_F(Strip, DividesItsPictureEvenly) {
    QT_ButtonStrip even;
    even.setButtonCount(3);
    even.setButtonToolTips({"a", "b", "c"});
    even.setPicture(QPixmap(16, 4));
    EXPECT_EQ(even.buttonRect(1), QRect(5, 0, 5, 4));
    EXPECT_EQ(even.buttonAt({15, 3}), 2);
    even.setButtonCount(2);
    EXPECT_EQ(even.buttonToolTips(), QStringList({"a", "b"}));
}

/// How two greys stand out from each other, as W3C compares luminances.
double contrast(QRgb one, QRgb other) {
    const auto luminance = [](QRgb grey) {
        const double share = qGreen(grey) / 255.0;
        return (share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4)) + 0.05;
    };
    const auto [low, high] = std::minmax({luminance(one), luminance(other)});
    return high / low;
}

TEST_F(Strip, TheFocusStandsOutFromAnyPicture) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (const QColor& colours : {QColor(239, 239, 239), QColor(53, 53, 53)}) {
        window.setPalette(QPalette(colours));
        for (const QColor& fill : {QColor(Qt::black), QColor(Qt::gray), QColor(Qt::white)}) {
            QPixmap plain(20, 10);
            plain.fill(fill);
            strip.setImages(std::make_unique<QT_ButtonStrip::Images>(
                plain, QVector<QRect>{{0, 0, 10, 10}, {10, 0, 10, 10}}));
            strip.clearFocus();
            const QImage before = art::drawn(strip);
            strip.setFocus(Qt::TabFocusReason);
            ASSERT_TRUE(strip.hasFocus());
            const QImage after = art::drawn(strip);
            EXPECT_GE(std::max(contrast(before.pixel(5, 0), after.pixel(5, 0)),
                               contrast(before.pixel(5, 1), after.pixel(5, 1))),
                      3)
                << fill.name().toStdString();
        }
    }
}

TEST_F(Strip, KeysGoWhereTheyPointAndPress) {
    QT_ButtonStrip grid(QPixmap(10, 10), {{0, 0, 4, 4}, {6, 0, 4, 4}, {0, 6, 4, 4}, {6, 6, 4, 4}});
    const std::pair<Qt::Key, int> rows[] = {
        {Qt::Key_Right, 1}, {Qt::Key_Right, 1}, {Qt::Key_Down, 3}, {Qt::Key_Left, 2},
        {Qt::Key_Up, 0},    {Qt::Key_End, 3},   {Qt::Key_Home, 0}};
    for (const auto& [key, current] : rows) {
        QTest::keyClick(&grid, key);
        EXPECT_EQ(grid.currentButton(), current);
    }
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Right, Qt::Key_Enter})
        QTest::keyClick(&strip, key);
    QTest::keyPress(&strip, Qt::Key_Return);
    QTest::keyClick(&strip, Qt::Key_Escape);
    QTest::keyRelease(&strip, Qt::Key_Return);
    QApplication::sendPostedEvents(&strip);
    EXPECT_EQ(heard(), "pressed 0, released 0, clicked 0, triggered 0, pressed 1, released 1, "
                       "clicked 1, triggered 1, pressed 1, released 1, ");
}

TEST_F(Strip, TellsWhatItsButtonsDo) {
    const auto& modes = QT_ButtonStrips::definition(QT_ButtonStrips::PlayMode);
    EXPECT_STREQ(modes.file, "playmode.but");
    strip.setButtonToolTips(modes.toolTips().mid(0, 2));
    strip.setButtonToolTip(3, "no such button");
    window.show();
    for (const int index : {2, 3, 1, 0}) {
        QHelpEvent event(QEvent::ToolTip, in(index), strip.mapToGlobal(in(index)));
        EXPECT_TRUE(QApplication::sendEvent(&strip, &event));
        EXPECT_EQ(event.isAccepted(), index < 2);
        EXPECT_EQ(QToolTip::text(), index < 2 ? modes.toolTips()[index] : QString());
    }
    QEvent other(QEvent::ToolTip);
    EXPECT_TRUE(QApplication::sendEvent(&strip, &other));
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_buttonstrip.cpp"));
    QToolTip::hideText();
}

} // namespace
