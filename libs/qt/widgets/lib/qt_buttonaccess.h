#pragma once

#include <QAccessible>
#include <QString>

class QT_Button;
class QT_ButtonStrip;
class QWidget;

namespace NS_QT {

/// What screen readers and other assistants see of the picture buttons: QT_Button as a
/// button, QT_ButtonStrip as a tool bar with a button, check box or radio button for
/// each of its buttons.

/// Makes both known to Qt; every later call does nothing.
void installButtonAccess();

/// Tell assistants that the button, or one of the strip's, is pressed or no longer, checked
/// or unchecked, enabled or disabled now, or that it has the keyboard.
void tellPressed(QT_Button* button);
void tellPressed(QT_ButtonStrip* strip, int index);
void tellChecked(QT_ButtonStrip* strip, int index);
void tellEnabled(QT_ButtonStrip* strip, int index);
void tellFocus(QT_ButtonStrip* strip, int index);

/// A widget's text, with its tool tip as name where it has no other, and not once more
/// as description.
QString nameOrToolTip(const QWidget& widget, QAccessible::Text kind, const QString& text);

} // namespace NS_QT
