// Presses, which QT_Button and QT_ButtonStrip have in common.

#include "picture_art.h"
#include "play.h"
#include "qt_button.h"
#include "qt_buttonstrip.h"

#include <gtest/gtest.h>

namespace {

constexpr auto kClick = "pressed, released, clicked, triggered";
constexpr auto kNoClick = "pressed, released";

const struct {
    int line;
    const char *script, *heard;
} kRows[] = {
    {__LINE__, "+11,11 ~5,5 ~20,15 -29,19", kClick},
    {__LINE__, "+10,15 ~20,15 -20,15", ""},
    {__LINE__, "+20,10 -20,10 +30,15 -30,15 +20,20 -20,20", ""},
    {__LINE__, "+20,15 ~10,15 -10,15", kNoClick},
    {__LINE__, "+20,15 -20,10", kNoClick},
    {__LINE__, "+20,15 -30,15", kNoClick},
    {__LINE__, "+20,15 ~20,15 -20,20", kNoClick},
    {__LINE__, ">20,15 <20,15 -20,15 ~20,15", ""},
    {__LINE__, "+20,15 >20,15 <20,15 +20,15 -20,15", kClick},
    {__LINE__, "+20,15 +Space -Space -20,15", kClick},
    {__LINE__, "+Space *Space -Space", kClick},
    {__LINE__, "+Return -Space -Return -Return", kClick},
    {__LINE__, "+Enter +20,15 ~5,5 -20,15 -Enter", kClick},
    {__LINE__, "+Return A -Return", kClick},
    {__LINE__, "Esc A -Space *Space -Space", ""},
    {__LINE__, "+Space Esc *Space -Space", kNoClick},
    {__LINE__, "+20,15 Esc ~20,15 -20,15", kNoClick},
    {__LINE__, "+20,15 off ~20,15 -20,15 on", kNoClick},
    {__LINE__, "+20,15 hidden -20,15", kNoClick},
    {__LINE__, "+20,15 away -20,15", kNoClick},
    {__LINE__, "focus +Space blur -Space", kNoClick},
    {__LINE__, "focus +20,15 blur -20,15", kClick},
    {__LINE__, "off +20,15 -20,15 Space on", ""},
};

// Their one button is at 10 < x < 30 and 10 < y < 20.
void playAll(NS_QT::PressWidget& widget, QWidget& window) {
    widget.resize(40, 30);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    test::Heard heard(widget);
    for (const auto& row : kRows) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        for (const QString& step : QString(row.script).split(' ')) {
            EXPECT_TRUE(art::repaints(widget, [&] { test::play(widget, step); }))
                << step.toStdString();
        }
        EXPECT_EQ(QString::fromStdString(heard.take()).remove(" 0").toStdString(), row.heard);
    }
}

TEST(PressWidget, ClicksByMouseAndKeys) {
    QPixmap black(20, 10);
    black.fill(Qt::black);
    QWidget window;
    QT_Button button(black, &window);
    playAll(button, window);
    QWidget other;
    QT_ButtonStrip strip(QPixmap(30, 20), {{11, 11, 19, 9}}, &other);
    playAll(strip, other);
}

} // namespace
