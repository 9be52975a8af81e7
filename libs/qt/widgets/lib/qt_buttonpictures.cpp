#include "qt_buttonpictures.h"

#include <QBitmap>
#include <QColor>
#include <QImage>
#include <QPainter>

namespace NS_QT::ButtonPictures {
namespace {

constexpr QRgb kGreen = 0xff00ff00;
constexpr int kOutlineReach = 2;
constexpr qreal kPressedScale = 0.9;

// The picture's own pixels, whatever the ratio.
QImage pixelsOf(const QPixmap& picture) {
    QImage image = picture.toImage().convertToFormat(QImage::Format_ARGB32);
    image.setDevicePixelRatio(1);
    return image;
}

int toPixels(int length, const QPixmap& picture) {
    return qRound(length * picture.devicePixelRatio());
}

// Without what surrounds the image by Qt's heuristic.
QPixmap cutOut(const QImage& image, const QPixmap& original) {
    QPixmap picture = QPixmap::fromImage(image);
    picture.setMask(picture.createHeuristicMask(true));
    picture.setDevicePixelRatio(original.devicePixelRatio());
    return picture;
}

template <typename Change>
void changePixels(QImage& image, Change change) {
    for (int y = 0; y < image.height(); ++y) {
        QRgb* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            line[x] = change(line[x]);
    }
}

QRgb halved(QRgb pixel) { return qRgb(qRed(pixel) >> 1, qGreen(pixel) >> 1, qBlue(pixel) >> 1); }

void fillTransparentAround(QImage& image, int x, int y, int reach) {
    for (int row = y - reach; row <= y + reach; ++row) {
        QRgb* const line = reinterpret_cast<QRgb*>(image.scanLine(row));
        for (int col = x - reach; col <= x + reach; ++col) {
            if (qAlpha(line[col]) == 0)
                line[col] = kGreen;
        }
    }
}

} // namespace

QPixmap withHalo(const QPixmap& picture) {
    QImage shape = pixelsOf(picture);
    changePixels(shape, [](QRgb pixel) { return qAlpha(pixel) != 0 ? kGreen : pixel; });
    const int growth = toPixels(2 * kHaloWidth, picture);
    QPixmap hot = QPixmap::fromImage(shape.scaled(shape.width() + growth, shape.height() + growth,
                                                  Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    QPixmap normal = picture;
    normal.setDevicePixelRatio(1);
    QPainter(&hot).drawPixmap((hot.width() - normal.width()) / 2,
                              (hot.height() - normal.height()) / 2, normal);
    hot.setDevicePixelRatio(picture.devicePixelRatio());
    return hot;
}

QPixmap withOutline(const QPixmap& picture) {
    QImage image = pixelsOf(picture);
    const int reach = toPixels(kOutlineReach, picture);
    // In place, row by row: green that was written earlier does not spread.
    for (int y = reach; y < image.height() - reach; ++y) {
        for (int x = reach; x < image.width() - reach; ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (qAlpha(pixel) != 0 && pixel != kGreen)
                fillTransparentAround(image, x, y, reach);
        }
    }
    return cutOut(image, picture);
}

QPixmap pressed(const QPixmap& hot, const QPixmap& normal) {
    QPixmap picture = hot;
    picture.setDevicePixelRatio(1);
    picture = picture.scaled(normal.size() * kPressedScale, Qt::KeepAspectRatio,
                             Qt::SmoothTransformation);
    picture.setDevicePixelRatio(normal.devicePixelRatio());
    return picture;
}

QPixmap faded(const QPixmap& picture) {
    QImage image = pixelsOf(picture);
    changePixels(image, [](QRgb pixel) {
        return qRgba(qRed(pixel), qGreen(pixel), qBlue(pixel), qAlpha(pixel) >> 1);
    });
    QPixmap faint = QPixmap::fromImage(image);
    faint.setDevicePixelRatio(picture.devicePixelRatio());
    return faint;
}

QPixmap disabled(const QPixmap& picture) {
    QImage image = pixelsOf(picture);
    changePixels(image, [](QRgb pixel) { return qAlpha(pixel) == 0 ? pixel : halved(pixel); });
    return cutOut(image, picture);
}

QSize sizeOf(const QPixmap& picture) {
    return (QSizeF(picture.size()) / picture.devicePixelRatio()).toSize();
}

void drawPart(QPainter& painter, const QPixmap& picture, const QRect& part) {
    const qreal ratio = picture.devicePixelRatio();
    painter.drawPixmap(QRectF(part), picture,
                       QRectF(QPointF(part.topLeft()) * ratio, QSizeF(part.size()) * ratio));
}

} // namespace NS_QT::ButtonPictures
