#include "qt_focusmark.h"

#include <QPainter>
#include <QPalette>
#include <QRegion>
#include <QWidget>

namespace NS_QT {

void FocusMark::focusIn(Qt::FocusReason reason) {
    switch (reason) {
    case Qt::MouseFocusReason:
        d_shown = false;
        break;
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
    case Qt::OtherFocusReason:
        d_shown = true;
        break;
    default:
        break;
    }
}

void FocusMark::draw(const QWidget& widget, QPainter& painter, const QRect& rect) const {
    if (d_shown && widget.hasFocus())
        drawFocusFrame(widget, painter, rect);
}

// Filled, since on a scaled screen a drawn line may fall between the widget's pixels.
void drawFocusFrame(const QWidget& widget, QPainter& painter, const QRect& rect) {
    QRect outer = rect;
    for (const auto colour : {QPalette::WindowText, QPalette::Window}) {
        const QRect inner = outer.adjusted(1, 1, -1, -1);
        for (const QRect& side : QRegion(outer) - inner)
            painter.fillRect(side, widget.palette().color(colour));
        outer = inner;
    }
}

bool isPressKey(int key) {
    return key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter ||
           key == Qt::Key_Select;
}

} // namespace NS_QT
