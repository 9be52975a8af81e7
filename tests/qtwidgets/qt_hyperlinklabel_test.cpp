#include "qt_hyperlinklabel.h"

#include "picture_art.h"
#include "play.h"

#include <QSignalSpy>
#include <algorithm>

#include <gtest/gtest.h>

namespace {

using NS_QT::HyperlinkLabel;

QColor textColour(const QWidget& widget, QPalette::ColorGroup group = QPalette::Active) {
    return widget.palette().color(group, QPalette::WindowText);
}

QPalette palette(const QColor& text, const QColor& link) {
    QPalette colours;
    colours.setColor(QPalette::WindowText, text);
    colours.setColor(QPalette::Link, link);
    return colours;
}

TEST(HyperlinkLabel, ClicksByMouseKeyboardAndScreenReaderWhileItIsALink) {
    HyperlinkLabel label("Open the manual");
    const QSignalSpy clicks(&label, SIGNAL(clicked()));
    const auto clicksOfEach = [&] {
        const int before = clicks.size();
        test::play(label, "+5,5 >5,5 Return Enter A +Space *Space -Space press");
        return clicks.size() - before;
    };
    EXPECT_EQ(clicksOfEach(), 6);
    label.setLinkEnabled(false);
    EXPECT_EQ(clicksOfEach(), 0);
    label.setLinkEnabled(true);
    label.setEnabled(false);
    EXPECT_EQ(clicksOfEach(), 0);
}

TEST(HyperlinkLabel, LooksLikeALinkOrLikeText) {
    HyperlinkLabel label("Link");
    const QColor disabled = textColour(label, QPalette::Disabled);
    label.setLinkColour(Qt::red);
    label.setItalic(true);
    label.setPlainColour(Qt::green);
    for (const bool isLink : {false, true}) {
        label.setLinkEnabled(isLink);
        EXPECT_EQ(label.font().underline(), isLink);
        EXPECT_EQ(label.font().italic(), isLink);
        EXPECT_EQ(label.cursor().shape(), isLink ? Qt::PointingHandCursor : Qt::ArrowCursor);
        EXPECT_EQ(label.focusPolicy(), isLink ? Qt::TabFocus : Qt::NoFocus);
        for (const auto group : {QPalette::Active, QPalette::Inactive})
            EXPECT_EQ(textColour(label, group), QColor(isLink ? Qt::red : Qt::green));
        EXPECT_EQ(textColour(label, QPalette::Disabled), disabled);
    }
    label.setUnderline(false);
    EXPECT_FALSE(label.font().underline());
}

TEST(HyperlinkLabel, LeavesAnApplicationItsOwn) {
    QWidget parent;
    HyperlinkLabel label("Link", &parent);
    label.setParent(nullptr);
    const auto expectColours = [&](const QColor& text, const QColor& link) {
        for (const bool isLink : {false, true}) {
            label.setLinkEnabled(isLink);
            EXPECT_EQ(textColour(label), isLink ? link : text);
        }
    };
    const QPalette before = QApplication::palette();
    label.setCursor(Qt::CrossCursor);
    label.setFocusPolicy(Qt::StrongFocus);
    QApplication::setPalette(palette(Qt::blue, Qt::cyan));
    EXPECT_EQ(label.cursor().shape(), Qt::CrossCursor);
    EXPECT_EQ(label.focusPolicy(), Qt::StrongFocus);
    expectColours(Qt::blue, Qt::cyan);
    label.setPalette(palette(Qt::magenta, Qt::yellow));
    QApplication::setPalette(before);
    expectColours(Qt::magenta, Qt::yellow);
}

TEST(HyperlinkLabel, FollowsItsParentsPaletteAndFont) {
    QWidget parent, other;
    auto* const label = new HyperlinkLabel("Link", &parent);
    parent.setPalette(palette(Qt::white, Qt::cyan));
    EXPECT_EQ(textColour(*label), QColor(Qt::cyan));
    label->setLinkEnabled(false);
    EXPECT_EQ(textColour(*label), QColor(Qt::white));
    other.setPalette(palette(Qt::black, Qt::yellow));
    label->setParent(&other);
    EXPECT_EQ(textColour(*label), QColor(Qt::black));
    other.setPalette(palette(Qt::green, Qt::yellow)); // of which Qt does not tell the label
    EXPECT_EQ(textColour(*label), QColor(Qt::green));
    label->setLinkEnabled(true);
    EXPECT_EQ(textColour(*label), QColor(Qt::yellow));
    other.setFont(QFont("Courier", 40));
    EXPECT_EQ(label->font().pointSize(), 40);
    EXPECT_TRUE(label->font().underline());
}

TEST(HyperlinkLabel, ShowsTheKeyboardFocusAroundItsText) {
    const struct {
        const char *text, *property;
        int value;
    } rows[] = {
        {"Link", "indent", -1},
        {"\u05E7\u05D9\u05E9\u05D5\u05E8", "indent", -1},
        {"Link", "indent", 40},
        {"Link", "frameShape", QFrame::WinPanel},
        {"Li<b>nk</b>", "margin", 9},
        {"*Li*nk", "textFormat", Qt::MarkdownText},
        {"one two three four five six", "alignment", Qt::AlignHCenter | Qt::AlignTop},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text + (' ' + std::string(row.property)));
        HyperlinkLabel label(QString::fromUtf8(row.text));
        label.setProperty(row.property, row.value);
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
        const QRegion text = art::difference(plain, look("blur"));
        // Without a frame, which has the text's colour.
        const QRect drawn = (text & label.contentsRect()).boundingRect();
        EXPECT_TRUE(frame.adjusted(-1, 0, 1, 0).contains(drawn));
        EXPECT_LT(frame.width(), drawn.width() + 12);
        // Where there are no fonts, of a text just its underline is drawn.
        const int textHeight = std::max(drawn.height(), label.fontMetrics().height());
        EXPECT_LT(frame.height(), textHeight + 20);
    }
}

} // namespace
