#include "strip_art.h"

#include <QApplication>
#include <QPainter>
#include <QPainterPath>

namespace gallery {
namespace {

constexpr int kWidth = 30;
constexpr int kHeight = 26;
constexpr int kGap = 1;
constexpr qreal kSign = 10; // the size of a character's square

// In a square from 0 to 1.
QPainterPath outlineOf(QChar sign) {
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    switch (sign.toLatin1()) {
    case '<':
        path.addPolygon(QPolygonF({{1, 0}, {1, 1}, {0.1, 0.5}}));
        break;
    case '>':
        path.addPolygon(QPolygonF({{0, 0}, {0, 1}, {0.9, 0.5}}));
        break;
    case '|':
        path.addRect(0.35, 0, 0.3, 1);
        break;
    case '[':
    case ']': {
        const qreal post = sign == '[' ? 0.1 : 0.7;
        path.addRect(post, 0, 0.2, 1);
        path.addRect(0.1, 0, 0.8, 0.2);
        path.addRect(0.1, 0.8, 0.8, 0.2);
        break;
    }
    case 'o':
        path.setFillRule(Qt::OddEvenFill);
        path.addEllipse(-0.1, -0.1, 1.2, 1.2);
        path.addEllipse(0.15, 0.15, 0.7, 0.7);
        break;
    case '*':
        path.addEllipse(0, 0, 1, 1);
        break;
    default:
        path.addPolygon(QPolygonF({{0, 0.2}, {0.2, 0}, {1, 0.8}, {0.8, 1}}));
        path.addPolygon(QPolygonF({{0.8, 0}, {1, 0.2}, {0.2, 1}, {0, 0.8}}));
        break;
    }
    return path;
}

void drawButton(QPainter& painter, const QRect& rect, const QString& sign) {
    QLinearGradient shade(rect.topLeft(), rect.bottomLeft());
    shade.setColorAt(0, QColor(124, 140, 160));
    shade.setColorAt(1, QColor(84, 98, 118));
    painter.setBrush(shade);
    painter.drawRoundedRect(rect, 3, 3);
    painter.setBrush(Qt::white);
    QPointF at = QRectF(rect).center() - QPointF(kSign * sign.size(), kSign) / 2;
    for (const QChar character : sign) {
        painter.drawPath(QTransform(kSign, 0, 0, kSign, at.x(), at.y()).map(outlineOf(character)));
        at.rx() += kSign;
    }
}

} // namespace

StripArt drawStrip(const QStringList& signs) {
    const qreal density = qApp->devicePixelRatio();
    const QSize size(static_cast<int>(signs.size()) * (kWidth + kGap) - kGap, kHeight);
    StripArt art;
    art.picture = QPixmap(size * density);
    art.picture.setDevicePixelRatio(density);
    art.picture.fill(Qt::transparent);
    QPainter painter(&art.picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (const QString& sign : signs) {
        art.buttons +=
            QRect(static_cast<int>(art.buttons.size()) * (kWidth + kGap), 0, kWidth, kHeight);
        drawButton(painter, art.buttons.back(), sign);
    }
    return art;
}

} // namespace gallery
