#pragma once

#include "kern_timerinterface.h"

#include <QObject>

/// Lets Qt find the timers of an object: a class that derives from QObject and from
/// kern::TimerInterface, and says Q_INTERFACES(kern::TimerInterface), is cast by
/// qobject_cast<kern::TimerInterface*>(object).
///
/// QObject has a startTimer and a killTimer of its own. Such a class says whose it means:
///
///     class Clock : public QDialog, public kern::TimerInterface {
///         Q_OBJECT
///         Q_INTERFACES(kern::TimerInterface)
///     public:
///         using kern::TimerInterface::killTimer;
///         using kern::TimerInterface::startTimer;
///
/// Without these two lines, calls of them are ambiguous and do not compile; restartTimer and
/// timerExpired are no matter. Qt's stay within reach as QObject::startTimer.
Q_DECLARE_INTERFACE(kern::TimerInterface, "kern::TimerInterface")
