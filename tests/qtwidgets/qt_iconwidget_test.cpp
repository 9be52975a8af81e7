#include "qt_iconwidget.h"

#include "picture_art.h"
#include "testing_checkrecorder.h"

#include <gmock/gmock.h>

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
    test::CheckRecorder checks;
    const std::pair<int32_t, char> modes[] = {{-1, 'G'}, {0, 'G'}, {1, 'd'}, {2, 'R'}, {3, 'G'}};
    for (const auto& [code, colour] : modes)
        EXPECT_EQ(IconSet::pixmap(coloured(48), IconSet::Size32, code).toImage().pixel(16, 16),
                  art::kColours.at(colour));
    for (const auto& [code, edge] : {std::pair{0, 16}, {1, 24}, {2, 32}, {3, 48}})
        EXPECT_EQ(IconSet::pixmap(coloured(48), code, 0).width(), edge);
    EXPECT_THAT(checks.takeSites(), testing::IsEmpty());
    for (const int32_t unknown : {-1, 4}) {
        NS_QT::IconWidget widget;
        widget.setSizeCode(unknown);
        widget.grab();
        EXPECT_EQ(widget.sizeHint(), QSize(24, 24));
        EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_iconset.cpp")) << "once";
    }
}

TEST(IconWidget, CentresItsPicture) {
    const struct {
        QSize widget;
        int sizeCode, available, drawn; // edges of the icon's picture and of what is drawn
        QPoint at;
    } rows[] = {
        {{61, 60}, 2, 48, 32, {15, 14}},
        {{31, 30}, 1, 9, 9, {12, 11}},
        {{16, 16}, 1, 24, 24, {-4, -4}},
    };
    for (const auto& row : rows) {
        NS_QT::IconWidget widget(coloured(row.available), row.sizeCode);
        widget.resize(row.widget);
        for (const char colour : {'G', 'd'}) {
            widget.setEnabled(colour == 'G');
            const QImage picture = art::square(row.drawn, colour);
            EXPECT_EQ(art::drawn(widget), art::placed(picture, row.at, row.widget));
        }
    }
}

} // namespace
