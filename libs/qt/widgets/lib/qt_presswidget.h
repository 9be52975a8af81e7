#pragma once

#include "qt_focusmark.h"

#include <QWidget>

#include <cstdint>

namespace NS_QT {

/// Base of the widgets that are pictures of one or more buttons, numbered from 0: what
/// presses a button, and how a press ends.
///
/// Only the left mouse button presses; the events of others go on to the parent widget.
/// Space and Enter press the button that has the keyboard, for as long as they are held.
/// Escape takes a press back, and so does disabling or hiding the widget, leaving its
/// window or, for keys, losing the focus. GUI thread only.
class PressWidget : public QWidget {
    Q_OBJECT

protected:
    /// Not pressed.
    explicit PressWidget(QWidget* parent);

    /// The button that a press at this point of the widget means; -1 for none.
    virtual int targetAt(const QPoint& point) const = 0;
    /// The button that keys act on; -1 for none.
    virtual int keyTarget() const = 0;

    /// What the widget does about a press. Each may delete the widget.
    virtual void pressBegan() = 0;
    /// The pointer has moved while it holds the button: still over it, or not.
    virtual void pressMoved(bool over) = 0;
    /// Released over the button or beside it. The widget calls endPress().
    virtual void pressReleased(bool inside) = 0;
    /// Ended otherwise; there is no press any more. Qt is about to go on with the
    /// widget, so slots are to be called later.
    virtual void pressTakenBack(int target) = 0;

    /// The button under the press in progress; -1 for none.
    int pressTarget() const { return d_target; }
    /// The key that holds it down; 0 for the mouse.
    int pressKey() const { return d_key; }
    /// Different for every press.
    uint32_t pressNumber() const { return d_number; }

    /// Ends the press, if there is one, and tells nobody.
    void endPress();
    /// Ends a press that is held, by pressTakenBack.
    void takePressBack();

    /// From here on the focus is shown, as for users of the keyboard.
    void noteKeyPressed() { d_focusMark.keyPressed(); }
    /// Draws the focus frame, if it is to be seen.
    void drawFocus(QPainter& painter, const QRect& rect) const;

    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isHeldByMouse() const { return d_isHeld && d_key == 0; }
    void begin(int target, int key);
    void release(bool inside);

    int d_target = -1;
    int d_key = 0;
    bool d_isHeld = false; // not released yet
    uint32_t d_number = 0;
    FocusMark d_focusMark;
};

} // namespace NS_QT
