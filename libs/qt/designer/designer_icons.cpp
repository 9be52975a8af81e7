#include "designer_icons.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

namespace designer {
namespace {

constexpr int kUnits = 24;
constexpr QColor kLine(86, 98, 112);
constexpr QColor kFill(250, 250, 250);
constexpr QColor kAccent(38, 128, 208);
constexpr QColor kHalo(0, 200, 0);

// A field to type or to choose in.
void drawField(QPainter& painter) {
    painter.setPen({kLine, 1.5});
    painter.setBrush(kFill);
    painter.drawRoundedRect(QRectF(1.5, 5.5, 21, 13), 2, 2);
}

void drawTriangle(QPainter& painter, const QPolygonF& corners, const QColor& colour) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawPolygon(corners);
}

void drawSpinArrows(QPainter& painter) {
    drawTriangle(painter, {{{15.5, 11}, {20.5, 11}, {18, 8}}}, kLine);
    drawTriangle(painter, {{{15.5, 13}, {20.5, 13}, {18, 16}}}, kLine);
}

void drawChoice(QPainter& painter) {
    drawField(painter);
    drawTriangle(painter, {{{15, 10.5}, {21, 10.5}, {18, 14.5}}}, kLine);
    painter.setPen({kAccent, 1.5});
}

} // namespace

void drawButton(QPainter& painter) {
    painter.setPen({kHalo, 3});
    painter.setBrush(kLine);
    painter.drawRoundedRect(QRectF(3, 3, 18, 18), 4, 4);
    drawTriangle(painter, {{{9.5, 7.5}, {9.5, 16.5}, {17, 12}}}, kFill);
}

void drawButtonStrip(QPainter& painter) {
    for (const int left : {1, 9, 17}) {
        painter.setPen({kLine, 1});
        painter.setBrush(left == 9 ? kAccent : kFill);
        painter.drawRect(QRectF(left - 0.5, 6.5, 7, 11));
    }
}

void drawSpinSlider(QPainter& painter) {
    painter.setPen({kLine, 2});
    painter.drawLine(QPointF(1.5, 12), QPointF(13.5, 12));
    painter.setPen(Qt::NoPen);
    painter.setBrush(kAccent);
    painter.drawEllipse(QPointF(6, 12), 3.5, 3.5);
    drawSpinArrows(painter);
}

// One half, with the arrows of a spin box.
void drawFractionSpinBox(QPainter& painter) {
    drawSpinArrows(painter);
    painter.setPen({kLine, 1.5});
    painter.drawLine(QPointF(2, 12), QPointF(12, 12));
    painter.setPen({kAccent, 2});
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF{{{5, 3.5}, {7.5, 2}, {7.5, 9}}});
    painter.drawPolyline(
        QPolygonF{{{4.5, 16.5}, {5.5, 15}, {8.5, 15}, {9.5, 16.5}, {9, 18}, {4.5, 22}, {10, 22}}});
}

void drawSmartComboBox(QPainter& painter) {
    drawChoice(painter);
    for (const qreal at : {10.2, 13.8}) {
        painter.drawLine(QPointF(at - 4.2, 8), QPointF(at - 5.2, 16));
        painter.drawLine(QPointF(4, at), QPointF(11.5, at));
    }
}

void drawStringComboBox(QPainter& painter) {
    drawChoice(painter);
    for (const qreal at : {4.5, 6.5, 9.5, 11.5})
        painter.drawLine(QPointF(at, 8.5), QPointF(at, 11));
}

void drawHyperlinkLabel(QPainter& painter) {
    painter.setPen({kAccent, 2});
    painter.drawLine(QPointF(4, 17), QPointF(8, 6));
    painter.drawLine(QPointF(8, 6), QPointF(12, 17));
    painter.drawLine(QPointF(5.5, 13), QPointF(10.5, 13));
    painter.drawEllipse(QPointF(17, 13.5), 3, 3.5);
    painter.drawLine(QPointF(20, 10), QPointF(20, 17));
    painter.drawLine(QPointF(2, 20.5), QPointF(22, 20.5));
}

void drawIconWidget(QPainter& painter) {
    painter.setPen({kLine, 1.5});
    painter.setBrush(kFill);
    painter.drawRect(QRectF(3.5, 3.5, 17, 17));
    drawTriangle(painter, {{{5, 19}, {11, 10}, {17, 19}}}, kHalo);
    painter.setBrush(kAccent);
    painter.drawEllipse(QPointF(15.5, 8.5), 2.5, 2.5);
}

void drawInfoButton(QPainter& painter) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(kAccent);
    painter.drawEllipse(QPointF(12, 12), 10, 10);
    painter.setBrush(kFill);
    painter.drawEllipse(QPointF(12, 6.8), 1.7, 1.7);
    painter.drawRoundedRect(QRectF(10.5, 10, 3, 8.5), 1, 1);
}

QIcon makeIcon(Drawing drawing) {
    QIcon icon;
    for (const int ratio : {1, 2}) {
        QPixmap picture(QSize(kUnits, kUnits) * ratio);
        picture.setDevicePixelRatio(ratio);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        drawing(painter);
        painter.end();
        icon.addPixmap(picture);
    }
    return icon;
}

} // namespace designer
