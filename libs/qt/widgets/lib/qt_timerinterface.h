#pragma once

#include "kern_timerinterface.h"

#include <QObject>

/// Lets Qt find the timers of an object: a class that derives from QObject and from
/// kern::TimerInterface, and says Q_INTERFACES(kern::TimerInterface), is cast by
/// qobject_cast<kern::TimerInterface*>(object).
Q_DECLARE_INTERFACE(kern::TimerInterface, "kern::TimerInterface")
