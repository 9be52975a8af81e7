#include "qt_iconwidget.h"

#include <QIconEngine>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

constexpr QRgb kBack = qRgb(255, 255, 255);
constexpr QRgb kNormal = qRgb(0, 128, 0);
constexpr QRgb kDisabled = qRgb(128, 128, 128);

QIcon icon(int edge) {
    QIcon made;
    QPixmap picture(edge, edge);
    picture.fill(kNormal);
    made.addPixmap(picture);
    picture.fill(kDisabled);
    made.addPixmap(picture, QIcon::Disabled);
    return made;
}

TEST(IconWidget, CentresItsPicture) {
    const struct {
        int line;
        QSize widget;
        int sizeCode;
        int available; // edge of the icon's picture
        QRect drawn;
    } rows[] = {
        {__LINE__, {60, 60}, 2, 48, {14, 14, 32, 32}},
        {__LINE__, {61, 60}, 2, 48, {15, 14, 32, 32}},
        {__LINE__, {48, 48}, 3, 48, {0, 0, 48, 48}},
        {__LINE__, {40, 20}, 0, 16, {12, 2, 16, 16}},
        {__LINE__, {31, 30}, 1, 9, {12, 11, 9, 9}},
        {__LINE__, {16, 16}, 1, 24, {-4, -4, 24, 24}},
    };
    for (const auto& row : rows) {
        for (const bool enabled : {true, false}) {
            NS_QT::IconWidget widget(icon(row.available), row.sizeCode);
            widget.setPalette(QColor(kBack));
            widget.setEnabled(enabled);
            widget.resize(row.widget);
            QImage drawn(row.widget, QImage::Format_RGB32);
            drawn.fill(kBack);
            widget.render(&drawn, {}, {}, QWidget::DrawChildren);
            QImage expected(row.widget, QImage::Format_RGB32);
            expected.fill(kBack);
            QPainter(&expected).fillRect(row.drawn, enabled ? kNormal : kDisabled);
            EXPECT_EQ(drawn, expected) << "row at line " << row.line;
        }
    }
}

TEST(IconWidget, AsksForTheRoomOfItsSize) {
    NS_QT::IconWidget widget;
    EXPECT_EQ(widget.sizeHint(), QSize(24, 24));
    widget.setSizeCode(3);
    EXPECT_EQ(widget.minimumSizeHint(), QSize(48, 48));
}

} // namespace
