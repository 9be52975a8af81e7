#pragma once

#include <QApplication>
#include <QBitmap>
#include <QImage>
#include <QPaintEvent>
#include <QPainter>
#include <QRegion>
#include <QWidget>

#include <map>
#include <string>
#include <vector>

/// Small pictures as tests write and read them: a character per pixel, '.' transparent.
using Art = std::vector<std::string>;

namespace art {

inline const std::map<char, QRgb> kColours{
    {'.', 0},          {'R', 0xffff0000}, {'r', 0x80ff0000}, {'G', 0xff00ff00}, {'W', 0xffffffff},
    {'K', 0xff000000}, {'w', 0xff7f7f7f}, {'d', 0xff7f0000}, {'g', 0xff007f00}, {'F', 0x7fff0000},
    {'f', 0x40ff0000}, {'s', 0x40000000}, {'S', 0xffbf0000}};

inline QImage image(const Art& lines) {
    QImage image(int(lines[0].size()), int(lines.size()), QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, kColours.at(lines[size_t(y)][size_t(x)]));
    }
    return image;
}

/// A square of one colour.
inline QImage square(int edge, char colour) {
    QImage image(edge, edge, QImage::Format_ARGB32);
    image.fill(QColor::fromRgba(kColours.at(colour)));
    return image;
}

/// The picture alone at a place in transparent surroundings.
inline QImage placed(const QImage& picture, const QPoint& at, const QSize& size) {
    QImage target(size, QImage::Format_ARGB32_Premultiplied);
    target.fill(Qt::transparent);
    QPainter(&target).drawImage(at, picture);
    return target.convertToFormat(QImage::Format_ARGB32);
}

/// What the widget itself draws, without a background, in device pixels.
inline QImage drawn(QWidget& widget, int ratio = 1) {
    QImage target(widget.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    target.setDevicePixelRatio(ratio);
    target.fill(Qt::transparent);
    widget.render(&target, {}, {}, {});
    target.setDevicePixelRatio(1);
    return target.convertToFormat(QImage::Format_ARGB32);
}

/// The pixels that two pictures of one size do not have in common.
inline QRegion difference(const QImage& one, const QImage& other) {
    QImage changed(one.size(), QImage::Format_ARGB32);
    for (int i = 0; i < one.width() * one.height(); ++i) {
        const QPoint pixel(i % one.width(), i / one.width());
        changed.setPixel(pixel, one.pixel(pixel) == other.pixel(pixel) ? 0 : kColours.at('K'));
    }
    return QBitmap::fromImage(changed.createAlphaMask());
}

/// Whether the screen shows what an act changes of the look of a visible widget.
template <typename Act>
bool repaints(QWidget& widget, Act act) {
    struct Painted : QObject {
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::Paint)
                region += static_cast<QPaintEvent*>(event)->region();
            return false;
        }
        QRegion region;
    } painted;
    const QImage before = drawn(widget);
    QApplication::processEvents();
    widget.installEventFilter(&painted);
    act();
    QApplication::processEvents();
    widget.removeEventFilter(&painted);
    const QImage after = drawn(widget);
    return before.size() != after.size() ||
           difference(before, after).subtracted(painted.region).isEmpty();
}

} // namespace art
