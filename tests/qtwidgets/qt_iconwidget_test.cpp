#include "qt_iconwidget.h"

#include "picture_art.h"
#include "testing_checkrecorder.h"

#include <gmock/gmock.h>

namespace {

using NS_QT::IconSet;
using testing::ElementsAre;

QImage square(int edge, Qt::GlobalColor colour) {
    QImage picture(edge, edge, QImage::Format_ARGB32);
    picture.fill(colour);
    return picture;
}

// An icon of another colour in each mode and state.
QIcon coloured(int edge) {
    QIcon icon;
    const std::pair<QIcon::Mode, Qt::GlobalColor> colours[] = {
        {QIcon::Normal, Qt::green}, {QIcon::Disabled, Qt::gray}, {QIcon::Active, Qt::red}};
    for (const auto& [mode, colour] : colours) {
        icon.addPixmap(QPixmap::fromImage(square(edge, colour)), mode, QIcon::Off);
        icon.addPixmap(QPixmap::fromImage(square(edge, Qt::blue)), mode, QIcon::On);
    }
    return icon;
}

TEST(IconSet, KnowsSizesAndModesByCode) {
    test::CheckRecorder checks;
    const std::pair<int32_t, Qt::GlobalColor> modes[] = {
        {-1, Qt::green}, {0, Qt::green}, {1, Qt::gray}, {2, Qt::red}, {3, Qt::green}};
    for (const auto& [code, colour] : modes)
        EXPECT_EQ(IconSet::pixmap(coloured(48), IconSet::Size32, code).toImage().pixelColor(16, 16),
                  colour);
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
        for (const bool enabled : {true, false}) {
            widget.setEnabled(enabled);
            const QImage picture = square(row.drawn, enabled ? Qt::green : Qt::gray);
            EXPECT_EQ(art::drawn(widget), art::placed(picture, row.at, row.widget));
        }
    }
}

} // namespace
