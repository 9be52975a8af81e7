#include "qt_hyperlinklabel.h"

#include "picture_art.h"
#include "play.h"

#include <algorithm>
#include <tuple>

#include <gtest/gtest.h>

namespace {

using NS_QT::HyperlinkLabel;

using Colours = std::pair<QColor, QColor>; // of text and of links

QPalette palette(const Colours& colours) {
    QPalette palette;
    palette.setColor(QPalette::WindowText, colours.first);
    palette.setColor(QPalette::Link, colours.second);
    return palette;
}

/// As the label shows them, in one colour group.
Colours coloursOf(HyperlinkLabel& label, QPalette::ColorGroup group = QPalette::Active) {
    const auto shown = [&](bool isLink) {
        label.setLinkEnabled(isLink);
        return label.palette().color(group, QPalette::WindowText);
    };
    return {shown(false), shown(true)};
}

TEST(HyperlinkLabel, ClicksByMouseKeyboardAndScreenReaderWhileItIsALink) {
    HyperlinkLabel label("Open the manual");
    test::Heard heard(label);
    const auto script = "+5,5 >5,5 Return Enter A +Space *Space -Space press";
    test::play(label, script);
    EXPECT_EQ(heard.take(), "clicked, clicked, clicked, clicked, clicked, clicked");
    label.setEnabled(false);
    test::play(label, script);
    label.setEnabled(true);
    label.setLinkEnabled(false);
    test::play(label, script);
    EXPECT_EQ(heard.take(), "linkAppearanceChanged");
}

TEST(HyperlinkLabel, LooksLikeALinkOrLikeText) {
    HyperlinkLabel label("Link");
    const Colours given(Qt::green, Qt::red);
    label.setPlainColour(given.first);
    label.setLinkColour(given.second);
    EXPECT_EQ(coloursOf(label), given);
    EXPECT_EQ(coloursOf(label, QPalette::Inactive), given);
    label.setItalic(true);
    for (const bool isLink : {false, true}) {
        label.setLinkEnabled(isLink);
        EXPECT_EQ(label.font().underline(), isLink);
        EXPECT_EQ(label.font().italic(), isLink);
        EXPECT_EQ(label.cursor().shape(), isLink ? Qt::PointingHandCursor : Qt::ArrowCursor);
        EXPECT_EQ(label.focusPolicy(), isLink ? Qt::TabFocus : Qt::NoFocus);
    }
}

TEST(HyperlinkLabel, FollowsTheApplicationOrItsParentAndKeepsWhatItIsGiven) {
    const Colours first(Qt::white, Qt::cyan), second(Qt::green, Qt::yellow), own(Qt::red, Qt::blue);
    QWidget parent, other;
    HyperlinkLabel label("Link", &parent);
    label.setParent(nullptr);
    label.setCursor(Qt::CrossCursor);
    label.setFocusPolicy(Qt::StrongFocus);
    const QPalette before = QApplication::palette();
    QApplication::setPalette(palette(first));
    EXPECT_EQ(label.cursor().shape(), Qt::CrossCursor);
    EXPECT_EQ(label.focusPolicy(), Qt::StrongFocus);
    EXPECT_EQ(label.palette().color(QPalette::WindowText), first.second);
    EXPECT_EQ(coloursOf(label), first);
    label.setPalette(palette(own));
    QApplication::setPalette(before);
    EXPECT_EQ(coloursOf(label), own);
    label.setParent(&parent);
    parent.setPalette(palette(first));
    label.setParent(&other);
    other.setPalette(palette(second)); // of which Qt does not tell the label
    other.setFont(QFont("Courier", 40));
    EXPECT_EQ(label.palette().color(QPalette::WindowText), second.second);
    EXPECT_EQ(coloursOf(label), second);
    EXPECT_EQ(label.font().pointSize(), 40);
}

TEST(HyperlinkLabel, ShowsTheKeyboardFocusAroundItsText) {
    const std::tuple<const char*, const char*, int> rows[] = {
        {"Link", "indent", -1},
        {"\u05E7\u05D9\u05E9\u05D5\u05E8", "indent", -1},
        {"Link", "indent", 40},
        {"Link", "frameShape", QFrame::WinPanel},
        {"Li<b>nk</b>", "margin", 9},
        {"*Li*nk", "textFormat", Qt::MarkdownText},
        {"one two three four five six", "alignment", Qt::AlignHCenter | Qt::AlignTop},
    };
    for (const auto& [text, property, value] : rows) {
        SCOPED_TRACE(text + (' ' + std::string(property)));
        HyperlinkLabel label(QString::fromUtf8(text));
        label.setProperty(property, value);
        label.setWordWrap(label.text().contains(' '));
        label.setLayoutDirection(Qt::RightToLeft);
        label.resize(120, 60);
        label.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&label));
        const auto look = [&](const char* script) {
            test::play(label, script);
            return label.grab().toImage();
        };
        const QImage plain = look("blur");
        const QRect frame = art::difference(plain, look("focus")).boundingRect();
        label.setLinkColour(Qt::transparent);
        // Without a frame, which has the text's colour.
        const QRegion drawn = art::difference(plain, look("blur")) & label.contentsRect();
        EXPECT_TRUE(frame.adjusted(-1, 0, 1, 0).contains(drawn.boundingRect()));
        EXPECT_LT(frame.width(), drawn.boundingRect().width() + 12);
        // Where there are no fonts, of a text just its underline is drawn.
        const int textHeight =
            std::max(drawn.boundingRect().height(), label.fontMetrics().height());
        EXPECT_LT(frame.height(), textHeight + 20);
    }
}

} // namespace
