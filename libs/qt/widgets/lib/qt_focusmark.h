#pragma once

#include <QRect>
#include <Qt>

class QPainter;
class QWidget;

namespace NS_QT {

/// Whether and how a picture button shows that it has the keyboard: only to people who
/// use it, so that pictures look as they are drawn until a key is pressed.
class FocusMark {
public:
    /// The focus has come. Given by Tab, a shortcut or the program it is shown, by the mouse
    /// it is not; when the window becomes active again, it is as before.
    void focusIn(Qt::FocusReason reason);

    /// A key has been pressed: the focus is shown from now on.
    void keyPressed() { d_shown = true; }

    /// Draws the focus frame, if the widget has the focus and shows it.
    void draw(const QWidget& widget, QPainter& painter, const QRect& rect) const;

private:
    bool d_shown = false;
};

/// Draws a focus frame within the rectangle: a line in the colour of texts and, inside it,
/// one in the colour behind texts. Since these two differ, one of the lines stands out from
/// any picture, which the frames of many styles do not.
void drawFocusFrame(const QWidget& widget, QPainter& painter, const QRect& rect);

/// Space, Enter and Return, and what remote controls have in their place.
bool isPressKey(int key);

} // namespace NS_QT
