#include "picture_art.h"
#include "qt_iconfactory.h"
#include "qt_iconwidget.h"
#include "testing_checkrecorder.h"

#include <gmock/gmock.h>
#include <set>

namespace {

using NS_QT::IconSet;
using testing::ElementsAre;

// An icon of another colour in each mode and state.
QIcon coloured(int edge) {
    QIcon icon;
    for (const auto& [mode, colour] :
         {std::pair{QIcon::Normal, 'G'}, {QIcon::Disabled, 'd'}, {QIcon::Active, 'R'}}) {
        icon.addPixmap(QPixmap::fromImage(art::square(edge, colour)), mode, QIcon::Off);
        icon.addPixmap(QPixmap::fromImage(art::square(edge, 'W')), mode, QIcon::On);
    }
    return icon;
}

TEST(IconSet, KnowsSizesAndModesByCode) {
    const std::pair<int32_t, char> modes[] = {{-1, 'G'}, {0, 'G'}, {1, 'd'}, {2, 'R'}, {3, 'G'}};
    for (const auto& [code, colour] : modes)
        EXPECT_EQ(IconSet::pixmap(coloured(48), IconSet::Size32, code).toImage().pixel(16, 16),
                  art::kColours.at(colour));
    for (const auto& [code, edge] : {std::pair{0, 16}, {1, 24}, {2, 32}, {3, 48}})
        EXPECT_EQ(IconSet::pixmap(coloured(48), code, 0).width(), edge);
    test::CheckRecorder checks;
    NS_QT::IconWidget widget;
    for (const int32_t unknown : {-1, 4}) {
        widget.setSizeCode(unknown);
        widget.grab();
        EXPECT_EQ(widget.sizeHint(), QSize(24, 24));
        EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_iconset.cpp")) << "once";
    }
}

TEST(IconWidget, CentresItsPicture) {
    // its size, the edge of the icon's picture, and where it is drawn
    const std::tuple<QSize, int, QPoint> rows[] = {{{61, 60}, 32, {15, 14}},
                                                   {{31, 30}, 9, {12, 11}}};
    for (const auto& [size, edge, at] : rows) {
        NS_QT::IconWidget widget(coloured(edge), IconSet::Size32);
        widget.resize(size);
        for (const char colour : {'G', 'd'}) {
            widget.setEnabled(colour == 'G');
            EXPECT_EQ(art::drawn(widget), art::placed(art::square(edge, colour), at, size));
        }
    }
}

TEST(QT_IconFactory, NumbersEveryTypeAndKeepsTheGaps) {
    constexpr int32_t kHighest = 656;
    const core::EnumNames& names = QT_IconFactory::typeNames();
    EXPECT_EQ(names.typeName(), "IconType");
    std::set<int32_t> gaps{0, 201, 208, 215, 222, 617, 618, 641, 650, 651, kHighest + 1};
    for (const auto& [first, last] : {std::pair{288, 296}, {426, 428}, {504, 517}, {545, 548}}) {
        for (int32_t value = first; value <= last; ++value)
            gaps.insert(value);
    }
    for (int32_t value = 0; value <= kHighest + 1; ++value) {
        const std::string_view name = names.nameOf(value);
        EXPECT_EQ(name == "Unknown", gaps.contains(value)) << value;
        EXPECT_EQ(names.valueOf(name), gaps.contains(value) ? 0 : value);
    }
    EXPECT_EQ(names.valueOf("QT_IconFactory::VmdRecordingActive"), kHighest);
}

} // namespace
