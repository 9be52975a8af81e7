#include "qt_hyperlinklabel.h"

#include <QAccessible>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <algorithm>

#include <gtest/gtest.h>

namespace {

using NS_QT::HyperlinkLabel;

QColor textColour(const QWidget& widget, QPalette::ColorGroup group = QPalette::Active) {
    return widget.palette().color(group, QPalette::WindowText);
}

TEST(HyperlinkLabel, ClicksByMouseKeyboardAndScreenReaderWhileItIsALink) {
    HyperlinkLabel label("Open the manual");
    const QSignalSpy clicks(&label, SIGNAL(clicked()));
    QAccessibleInterface* const access = QAccessible::queryAccessibleInterface(&label);
    const auto pressEverything = [&] {
        QTest::mousePress(&label, Qt::LeftButton);
        QTest::mousePress(&label, Qt::RightButton);
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space, Qt::Key_A})
            QTest::keyClick(&label, key);
        access->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
    label.show();
    pressEverything();
    EXPECT_EQ(clicks.size(), 6);
    label.setLinkEnabled(false);
    pressEverything();
    label.setLinkEnabled(true);
    label.setEnabled(false);
    pressEverything();
    EXPECT_EQ(clicks.size(), 6);
}

TEST(HyperlinkLabel, LooksLikeALinkOrLikeText) {
    HyperlinkLabel label("Link");
    const QColor plain = textColour(label, QPalette::Disabled);
    label.setLinkColour(Qt::red);
    label.setItalic(true);
    label.setLinkEnabled(false);
    EXPECT_EQ(textColour(label), QApplication::palette().color(QPalette::WindowText));
    label.setPlainColour(Qt::green);
    for (const bool isLink : {true, false}) {
        label.setLinkEnabled(isLink);
        EXPECT_EQ(label.font().underline(), isLink);
        EXPECT_EQ(label.font().italic(), isLink);
        EXPECT_EQ(label.cursor().shape(), isLink ? Qt::PointingHandCursor : Qt::ArrowCursor);
        EXPECT_EQ(label.focusPolicy(), isLink ? Qt::TabFocus : Qt::NoFocus);
        for (const auto group : {QPalette::Active, QPalette::Inactive})
            EXPECT_EQ(textColour(label, group), QColor(isLink ? Qt::red : Qt::green));
        EXPECT_EQ(textColour(label, QPalette::Disabled), plain);
    }
    label.setUnderline(false);
    label.setLinkEnabled(true);
    EXPECT_FALSE(label.font().underline());
}

TEST(HyperlinkLabel, LeavesAnApplicationItsOwn) {
    HyperlinkLabel label("Link");
    label.setLinkColour(Qt::red);
    label.setCursor(Qt::CrossCursor);
    label.setFocusPolicy(Qt::StrongFocus);
    QPalette own;
    own.setColor(QPalette::WindowText, Qt::magenta);
    label.setPalette(own);
    EXPECT_EQ(label.cursor().shape(), Qt::CrossCursor);
    EXPECT_EQ(label.focusPolicy(), Qt::StrongFocus);
    EXPECT_EQ(textColour(label), QColor(Qt::red));
    label.setLinkEnabled(false);
    EXPECT_EQ(textColour(label), QColor(Qt::magenta));
}

TEST(HyperlinkLabel, FollowsItsParentsPaletteAndFont) {
    QWidget parent, other;
    auto* const label = new HyperlinkLabel("Link", &parent);
    const auto paint = [](QWidget& widget, const QColor& text, const QColor& link) {
        QPalette palette;
        palette.setColor(QPalette::WindowText, text);
        palette.setColor(QPalette::Link, link);
        widget.setPalette(palette);
    };
    paint(parent, Qt::white, Qt::cyan);
    EXPECT_EQ(textColour(*label), QColor(Qt::cyan));
    label->setLinkEnabled(false);
    EXPECT_EQ(textColour(*label), QColor(Qt::white));
    paint(other, Qt::black, Qt::yellow);
    label->setParent(&other);
    EXPECT_EQ(textColour(*label), QColor(Qt::black));
    paint(other, Qt::green, Qt::yellow); // of the text's colour Qt does not tell the label
    EXPECT_EQ(textColour(*label), QColor(Qt::green));
    label->setLinkEnabled(true);
    EXPECT_EQ(textColour(*label), QColor(Qt::yellow));
    other.setFont(QFont("Courier", 40));
    EXPECT_EQ(label->font().pointSize(), 40);
    EXPECT_TRUE(label->font().underline());
}

// The smallest rectangle outside of which two pictures are the same.
QRect difference(const QImage& one, const QImage& other) {
    QRect changed;
    for (int i = 0; i < one.width() * one.height(); ++i) {
        const QPoint pixel(i % one.width(), i / one.width());
        if (one.pixel(pixel) != other.pixel(pixel))
            changed |= QRect(pixel, QSize(1, 1));
    }
    return changed;
}

TEST(HyperlinkLabel, ShowsTheKeyboardFocusAroundItsText) {
    const struct {
        const char* text;
        void (*change)(HyperlinkLabel&);
    } rows[] = {
        {"Link", [](HyperlinkLabel&) {}},
        {"\u05E7\u05D9\u05E9\u05D5\u05E8", [](HyperlinkLabel&) {}},
        {"Link", [](HyperlinkLabel& label) { label.setIndent(40); }},
        {"Link", [](HyperlinkLabel& label) { label.setFrameShape(QFrame::WinPanel); }},
        {"Li<b>nk</b>", [](HyperlinkLabel& label) { label.setMargin(9); }},
        {"one two three four five six",
         [](HyperlinkLabel& label) {
             label.setWordWrap(true);
             label.setAlignment(Qt::AlignHCenter | Qt::AlignTop);
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("row " + std::to_string(&row - rows));
        HyperlinkLabel label(QString::fromUtf8(row.text));
        row.change(label);
        label.setLayoutDirection(Qt::RightToLeft);
        label.resize(120, 60);
        label.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&label));
        label.clearFocus();
        const QImage plain = label.grab().toImage();
        label.setFocus(Qt::TabFocusReason);
        const QRect frame = difference(plain, label.grab().toImage());
        label.setLinkColour(Qt::transparent);
        label.clearFocus();
        const QRect inside = label.contentsRect(); // of a frame, which follows the colour
        const QRect drawn = difference(plain.copy(inside), label.grab().toImage().copy(inside))
                                .translated(inside.topLeft());
        EXPECT_TRUE(frame.adjusted(-1, 0, 1, 0).contains(drawn));
        EXPECT_LT(frame.width(), drawn.width() + 12);
        // Where there are no fonts, of a text just its underline is drawn.
        const int textHeight = std::max(drawn.height(), label.fontMetrics().height());
        EXPECT_LT(frame.height(), textHeight + 20);
    }
}

} // namespace
