#include "qt_iconwidget.h"

#include <QIconEngine>
#include <QPainter>

#include <gtest/gtest.h>

namespace {

constexpr QRgb kBack = 0xffffffff;
constexpr QRgb kNormal = 0xff008000;
constexpr QRgb kDisabled = 0xff808080;

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
        int sizeCode, available; // edge of the icon's picture
        QRect drawn;
    } rows[] = {
        {__LINE__, {61, 60}, 2, 48, {15, 14, 32, 32}},
        {__LINE__, {31, 30}, 1, 9, {12, 11, 9, 9}},
        {__LINE__, {16, 16}, 1, 24, {-4, -4, 24, 24}},
    };
    for (const auto& row : rows) {
        for (const bool enabled : {true, false}) {
            NS_QT::IconWidget widget(icon(row.available), row.sizeCode);
            widget.setPalette(QColor(kBack));
            widget.setEnabled(enabled);
            EXPECT_EQ(widget.sizeHint().width(), NS_QT::IconSet::edgeLength(row.sizeCode));
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

} // namespace
