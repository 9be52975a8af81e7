#include "qt_iconwidget.h"

#include "picture_art.h"

#include <gtest/gtest.h>

namespace {

QImage square(int edge, Qt::GlobalColor colour) {
    QImage picture(edge, edge, QImage::Format_ARGB32);
    picture.fill(colour);
    return picture;
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
        QIcon icon(QPixmap::fromImage(square(row.available, Qt::green)));
        icon.addPixmap(QPixmap::fromImage(square(row.available, Qt::gray)), QIcon::Disabled);
        NS_QT::IconWidget widget(icon, row.sizeCode);
        widget.resize(row.widget);
        EXPECT_EQ(art::drawn(widget),
                  art::placed(square(row.drawn, Qt::green), row.at, row.widget));
        widget.setEnabled(false);
        EXPECT_EQ(art::drawn(widget), art::placed(square(row.drawn, Qt::gray), row.at, row.widget));
    }
}

} // namespace
