#include "qt_buttonstrip.h"

#include "check_recorder.h"
#include "picture_art.h"
#include "qt_buttonstrips.h"

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QTest>
#include <QToolTip>

#include <functional>
#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Three buttons of 4 x 4 with a gap of 2 after the first.
const QVector<QRect> kRects{{0, 0, 4, 4}, {6, 0, 4, 4}, {10, 0, 4, 4}};
const Art kStrip{"RRRR..RRRR....", "RRRR..R..R.rr.", "RRRR..R..R.rr.", "RRRR..RRRR...."};
const Art kFirstDown{"SSSS..RRRR....", "SSSS..R..R.rr.", "SSSS..R..R.rr.", "SSSS..RRRR...."};
const Art kSecondDown{"RRRR..SSSS....", "RRRR..SssS.rr.", "RRRR..SssS.rr.", "RRRR..SSSS...."};
const Art kDisabled{"dddd..dddd....", "dddd..d..d.dd.", "dddd..d..d.dd.", "dddd..dddd...."};

QPixmap picture() { return QPixmap::fromImage(art::image(kStrip)); }

class Strip : public testing::Test {
protected:
    Strip() {
        window.resize(200, 100);
        strip.resize(20, 10);
        QObject::connect(&strip, &QT_ButtonStrip::clicked, [&](int i) { clicked.push_back(i); });
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
    std::vector<int> clicked;
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
    release(1);
    release(0);
    click(3);                                              // beside all
    QTest::mouseClick(&strip, Qt::LeftButton, {}, {4, 0}); // right of the first
    QTest::mouseClick(&strip, Qt::LeftButton, {}, {3, 3});
    QTest::mouseClick(&strip, Qt::RightButton, {}, in(0));
    EXPECT_THAT(clicked, ElementsAre(2, 0));
}

TEST_F(Strip, TogglesAndExcludes) {
    strip.setCheckable(true);
    for (const int index : {0, 1, 2, 0})
        click(index);
    strip.setExclusive(true);
    strip.setChecked(2, true); // it is: nothing changes
    EXPECT_EQ(checked(), ".xx");
    click(0);
    click(0);
    EXPECT_EQ(checked(), "x..");
    for (const int index : {3, -1, 1})
        strip.setChecked(index, true);
    EXPECT_EQ(checked(), ".x.");
    strip.setChecked(1, false);
    EXPECT_EQ(checked(), "...");
    EXPECT_THAT(clicked, ElementsAre(0, 1, 2, 0, 0, 0));
}

TEST_F(Strip, LooksPressedUntilItsSlotReturns) {
    strip.setCheckable(true);
    strip.setChecked(0, true);
    QObject::connect(&strip, &QT_ButtonStrip::clicked, [&] {
        EXPECT_EQ(checked(), "...");
        EXPECT_EQ(strip.pressedButton(), 0);
        expectDrawn(kFirstDown);
    });
    click(0);
    EXPECT_EQ(strip.pressedButton(), -1);
    expectDrawn(kStrip);
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
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Right, Qt::Key_Enter})
        QTest::keyClick(&strip, key);
    QTest::keyPress(&strip, Qt::Key_Space);
    QTest::keyClick(&strip, Qt::Key_Escape);
    QTest::keyRelease(&strip, Qt::Key_Space);
    EXPECT_THAT(clicked, ElementsAre(0, 0, 1));
}

TEST_F(Strip, TellsWhatItsButtonsDo) {
    const auto& modes = QT_ButtonStrips::definition(QT_ButtonStrips::PlayMode);
    EXPECT_STREQ(modes.file, "playmode.but");
    strip.setButtonToolTips(modes.toolTips().mid(0, 2));
    window.show();
    for (const int index : {2, 3, 1}) {
        QHelpEvent event(QEvent::ToolTip, in(index), strip.mapToGlobal(in(index)));
        EXPECT_TRUE(QApplication::sendEvent(&strip, &event));
        EXPECT_EQ(event.isAccepted(), index == 1);
    }
    EXPECT_EQ(QToolTip::text(), "Play once");
    QEvent other(QEvent::ToolTip);
    EXPECT_TRUE(QApplication::sendEvent(&strip, &other));
    EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_buttonstrip.cpp"));
    QToolTip::hideText();
}

TEST_F(Strip, MayBeDeletedByItsSlot) {
    QPointer<QT_ButtonStrip> subject;
    const std::function<void()> uses[] = {
        [&] { QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, in(1)); },
        [&] { QTest::keyClick(subject, Qt::Key_Space); },
        [&] {
            auto* const button = QAccessible::queryAccessibleInterface(subject)->child(1);
            button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        },
    };
    window.show();
    for (const auto& use : uses) {
        subject = new QT_ButtonStrip(picture(), kRects, &window);
        subject->resize(subject->sizeHint());
        subject->show();
        subject->setCheckable(true);
        QObject::connect(subject, &QT_ButtonStrip::clicked, [&] { delete subject; });
        use();
        EXPECT_EQ(subject, nullptr);
    }
}

TEST_F(Strip, IsAToolBarForScreenReaders) {
    strip.setButtonToolTips({"Loop", "Once"});
    strip.setCheckable(true);
    window.show();
    QApplication::setActiveWindow(&window);
    auto* const bar = QAccessible::queryAccessibleInterface(&strip);
    EXPECT_EQ(bar->role(), QAccessible::ToolBar);
    const QRect rect = kRects[1].translated(strip.mapToGlobal({}));
    QAccessibleInterface* const once = bar->childAt(rect.x(), rect.y());
    EXPECT_EQ(once->text(QAccessible::Name), "Once");
    EXPECT_EQ(once->rect(), rect);
    EXPECT_EQ(once->role(), QAccessible::CheckBox);
    once->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(once->state().checked);
    once->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_EQ(bar->focusChild(), once);
}

} // namespace
