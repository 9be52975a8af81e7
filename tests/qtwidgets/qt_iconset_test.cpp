#include "qt_iconset.h"

#include "check_recorder.h"
#include "qt_iconwidget.h"

#include <gmock/gmock.h>

namespace {

using NS_QT::IconSet;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(IconSet, UnknownSizesAreReportedAndMean24) {
    test::CheckRecorder checks;
    const std::pair<int32_t, int> known[] = {{0, 16}, {1, 24}, {2, 32}, {3, 48}};
    for (const auto& [code, edge] : known)
        EXPECT_EQ(IconSet::edgeLength(code), edge);
    EXPECT_THAT(checks.takeSites(), IsEmpty());
    for (const int32_t unknown : {-1, 4}) {
        EXPECT_EQ(IconSet::edgeLength(unknown), 24);
        EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_iconset.cpp"));
        NS_QT::IconWidget widget;
        widget.setSizeCode(unknown);
        widget.grab();
        EXPECT_EQ(widget.sizeHint(), QSize(24, 24));
        EXPECT_THAT(checks.takeSites(), ElementsAre("CHECKF qt_iconset.cpp")) << "once";
    }
}

TEST(IconSet, PicturesHaveTheSizeAndColourOfTheirCodes) {
    const QColor colours[] = {Qt::green, Qt::gray, Qt::red};
    const QIcon::Mode modes[] = {QIcon::Normal, QIcon::Disabled, QIcon::Active};
    QIcon icon;
    QPixmap picture(48, 48);
    for (size_t i = 0; i < std::size(modes); ++i) {
        picture.fill(colours[i]);
        icon.addPixmap(picture, modes[i], QIcon::Off);
        picture.fill(Qt::blue);
        icon.addPixmap(picture, modes[i], QIcon::On);
    }
    for (const int32_t code : {0, 1, 2, 3, -1}) {
        const QImage image = IconSet::pixmap(icon, IconSet::Size32, code).toImage();
        EXPECT_EQ(image.size(), QSize(32, 32));
        EXPECT_EQ(image.pixelColor(16, 16), colours[code < 0 || code > 2 ? 0 : code]) << code;
    }
}

} // namespace
