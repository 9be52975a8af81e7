#include "qt_buttonstrip.h"

#include "picture_art.h"
#include "play.h"
#include "qt_buttonstrips.h"
#include "testing_checkrecorder.h"

#include <QHelpEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Three buttons of 4 x 4 at 0, 6 and 10, so with a gap after the first.
const QVector<QRect> kRects{{0, 0, 4, 4}, {6, 0, 4, 4}, {10, 0, 4, 4}};
const Art kStrip{"RRRR..RRRR....", "RRRR..R..R.rr.", "RRRR..R..R.rr.", "RRRR..RRRR...."};
const Art kFirstDown{"SSSS..RRRR....", "SSSS..R..R.rr.", "SSSS..R..R.rr.", "SSSS..RRRR...."};
const Art kSecondDown{"RRRR..SSSS....", "RRRR..SssS.rr.", "RRRR..SssS.rr.", "RRRR..SSSS...."};
const Art kDisabled{"FFFF..FFFF....", "FFFF..F..F.ff.", "FFFF..F..F.ff.", "FFFF..FFFF...."};
const Art kFirstDisabled{"FFFF..RRRR....", "FFFF..R..R.rr.", "FFFF..R..R.rr.", "FFFF..RRRR...."};

QPixmap picture() { return QPixmap::fromImage(art::image(kStrip)); }

/// Every picture that Qt makes has the next one.
qint64 pictureNumber() { return QImage(1, 1, QImage::Format_RGB32).cacheKey() >> 32; }

class Strip : public testing::Test {
protected:
    Strip() {
        window.resize(200, 100);
        strip.resize(20, 10);
    }
    ~Strip() override { EXPECT_THAT(checks.take(), IsEmpty()); }

    void play(const char* script) { test::play(strip, script); }
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
        QImage target(strip.size(), QImage::Format_ARGB32_Premultiplied);
        const qint64 number = pictureNumber();
        strip.render(&target, {}, {}, {});
        EXPECT_EQ(pictureNumber(), number + 1) << "made a picture to draw";
    }

    test::CheckRecorder checks;
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
    EXPECT_EQ(strip.pressedButton(), -1);
    expectDrawn(kDisabled);
    play("on");
    strip.setButtonEnabled(0, false);
    expectDrawn(kFirstDisabled);

    QPixmap dense = picture().scaled(28, 8);
    dense.setDevicePixelRatio(2);
    QT_ButtonStrip sharp(dense, kRects);
    sharp.resize(sharp.sizeHint());
    sharp.setChecked(1, true);
    EXPECT_EQ(art::drawn(sharp, 2), art::image(kSecondDown).scaled(28, 8));
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
    EXPECT_EQ(checked(), ".xx");
    strip.setExclusive(true);
    EXPECT_EQ(checked(), ".x.");
    heard.take();
    EXPECT_TRUE(art::repaints(strip, [&] { play("+1,1 -1,1 +1,1 -1,1"); }));
    for (const int index : {3, -1, 1})
        strip.setChecked(index, true);
    EXPECT_EQ(checked(), ".x.");
    strip.setChecked(1, false);
    EXPECT_EQ(heard.take(),
              "pressed 0, toggled 0 true, toggled 1 false, released 0, clicked 0, triggered 0, "
              "pressed 0, released 0, clicked 0, triggered 0, "
              "toggled 0 false, toggled 1 true, toggled 1 false");
}

TEST_F(Strip, LooksPressedUntilItsSlotReturns) {
    strip.setCheckable(true);
    strip.setChecked(0, true);
    bool first = true;
    QObject::connect(&strip, &QT_ButtonStrip::clicked, [&] {
        EXPECT_EQ(checked(), first ? "..." : "x..");
        EXPECT_EQ(strip.pressedButton(), 0);
        expectDrawn(kFirstDown);
        play("-1,1"); // of a press that is over
        if (!std::exchange(first, false))
            play("+7,1");
    });
    play("+1,1 -1,1");
    EXPECT_EQ(strip.pressedButton(), -1);
    expectDrawn(kStrip);
    play("+1,1 -1,1");
    EXPECT_EQ(strip.pressedButton(), 1) << "begun in the slot, it goes on";
    strip.setChecked(0, false);
    expectDrawn(kSecondDown);
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
    play("Space Right End Home");
    EXPECT_EQ(heard.take(), "pressed 0, released 0, currentButtonChanged 1");
    QTest::keyClick(&window, Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(heard.take(), "clicked 1, triggered 1");
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
    const auto luminance = [](QRgb grey) { return std::pow(qGreen(grey) / 255.0, 2.2) + 0.05; };
    const double ratio = luminance(one) / luminance(other);
    return std::max(ratio, 1 / ratio);
}

TEST_F(Strip, TheFocusStandsOutFromAnyPicture) {
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    for (const QColor& colours : {QColor(239, 239, 239), QColor(53, 53, 53)}) {
        window.setPalette(QPalette(colours));
        for (const QColor& fill : {QColor(Qt::black), QColor(Qt::gray), QColor(Qt::white)}) {
            QPixmap plain(20, 10);
            plain.fill(fill);
            EXPECT_TRUE(art::repaints(strip, [&] { strip.setPicture(plain); }));
            play("blur");
            const QImage before = art::drawn(strip);
            play("focus");
            const QImage after = art::drawn(strip);
            EXPECT_GE(std::max(contrast(before.pixel(2, 0), after.pixel(2, 0)),
                               contrast(before.pixel(2, 1), after.pixel(2, 1))),
                      3)
                << fill.name().toStdString();
        }
    }
}

TEST_F(Strip, ArrowsGoWhereTheyPoint) {
    QT_ButtonStrip grid(QPixmap(10, 10), {{0, 0, 4, 4}, {6, 0, 4, 4}, {0, 6, 4, 4}, {6, 6, 4, 4}});
    const std::pair<const char*, int> rows[] = {
        {"Right", 1}, {"Right", 1}, {"Down", 3}, {"Left", 2}, {"Up", 0}, {"End", 3}, {"Home", 0}};
    for (const auto& [key, current] : rows) {
        test::play(grid, key);
        EXPECT_EQ(grid.currentButton(), current) << key;
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
    QEvent other(QEvent::ToolTip);
    EXPECT_TRUE(QApplication::sendEvent(&strip, &other));
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_buttonstrip.cpp"));
    QToolTip::hideText();
}

} // namespace
