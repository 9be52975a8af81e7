#include "qt_focusmark.h"

#include <QPainter>
#include <QPalette>
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

void drawFocusFrame(const QWidget& widget, QPainter& painter, const QRect& rect) {
    QRect line = rect;
    for (const auto colour : {QPalette::WindowText, QPalette::Window}) {
        line.adjust(0, 0, -1, -1);
        painter.setPen(widget.palette().color(colour));
        painter.drawRect(line);
        line.adjust(1, 1, 0, 0);
    }
}

bool isPressKey(int key) {
    return key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter ||
           key == Qt::Key_Select;
}

} // namespace NS_QT
