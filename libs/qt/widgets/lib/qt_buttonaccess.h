#pragma once

class QT_ButtonStrip;

namespace NS_QT {

/// What screen readers and other assistants see of the picture buttons: QT_Button as a
/// button, QT_ButtonStrip as a tool bar with a button, check box or radio button for
/// each of its buttons.

/// Makes both known to Qt; every later call does nothing.
void installButtonAccess();

/// Tell assistants that a button of the strip is checked or unchecked now, or that it
/// has the keyboard.
void tellChecked(QT_ButtonStrip* strip, int index);
void tellFocus(QT_ButtonStrip* strip, int index);

} // namespace NS_QT
