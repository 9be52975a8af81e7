#include "pictures.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

namespace gallery {
namespace {

constexpr qreal kUnits = 16; // the edge of the square in which pictures are drawn

void drawCamera(QPainter& painter) {
    painter.drawRoundedRect(QRectF(1, 4.5, 14, 9), 1.5, 1.5);
    painter.drawRect(QRectF(3, 2.5, 4, 2));
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(9, 9), 3, 3);
}

void drawMonitor(QPainter& painter) {
    painter.drawRoundedRect(QRectF(1, 2, 14, 9.5), 1, 1);
    painter.drawRect(QRectF(6.5, 11.5, 3, 2));
    painter.drawRect(QRectF(4, 13.5, 8, 1.2));
    painter.setBrush(Qt::white);
    painter.drawRect(QRectF(2.5, 3.5, 11, 6.5));
}

void drawBell(QPainter& painter) {
    QPainterPath bell(QPointF(2, 12));
    bell.cubicTo({5, 10}, {3, 2}, {8, 2});
    bell.cubicTo({13, 2}, {11, 10}, {14, 12});
    bell.closeSubpath();
    painter.drawPath(bell);
    painter.drawEllipse(QPointF(8, 13.2), 1.6, 1.6);
}

void drawStroke(QPainter& painter, const QPainterPath& path) {
    painter.strokePath(path, {painter.brush(), 2.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
}

void drawTick(QPainter& painter) {
    QPainterPath tick(QPointF(2.5, 9));
    tick.lineTo(6.5, 13);
    tick.lineTo(13.5, 3.5);
    drawStroke(painter, tick);
}

void drawCross(QPainter& painter) {
    QPainterPath cross(QPointF(3.5, 3.5));
    cross.lineTo(12.5, 12.5);
    cross.moveTo(12.5, 3.5);
    cross.lineTo(3.5, 12.5);
    drawStroke(painter, cross);
}

struct Drawing {
    void (*draw)(QPainter&);
    QColor colour;
};

Drawing drawingOf(Picture picture) {
    switch (picture) {
    case Picture::Camera:
        return {&drawCamera, QColor(66, 133, 196)};
    case Picture::Monitor:
        return {&drawMonitor, QColor(96, 112, 128)};
    case Picture::Bell:
        return {&drawBell, QColor(232, 160, 32)};
    case Picture::Tick:
        return {&drawTick, QColor(46, 160, 67)};
    case Picture::Cross:
        break;
    }
    return {&drawCross, QColor(208, 56, 56)};
}

class Engine : public QIconEngine {
public:
    explicit Engine(Picture picture) : d_picture(picture) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const Drawing drawing = drawingOf(d_picture);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / kUnits, rect.height() / kUnits);
        painter->setPen(Qt::NoPen);
        painter->setBrush(mode == QIcon::Disabled ? QColor(150, 150, 150) : drawing.colour);
        drawing.draw(*painter);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, pixmap.rect(), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new Engine(*this); }

private:
    Picture d_picture;
};

} // namespace

QIcon makeIcon(Picture picture) { return QIcon(new Engine(picture)); }

} // namespace gallery
