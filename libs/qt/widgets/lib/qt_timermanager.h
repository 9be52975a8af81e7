#pragma once

#include "kern_servermanagers.h"

#include <memory>

namespace NS_QT {

/// The timers of Qt's event loop: with one of these on a thread, the objects of that
/// thread can use kern::TimerInterface. Usually it stands beside the application object:
///
///     QApplication application(argc, argv);
///     NS_QT::QtTimerManager timers;
///
/// Intervals are milliseconds; timers are precise and repeat, and 0 means each time the
/// event loop comes round. What a late timer missed is not made up for. A timer does not
/// expire again while its callback runs. Callbacks may kill and start any timers, and
/// destroy any object that has some.
///
/// All timers share one of Qt's, which is set for the first deadline; a hundred thousand
/// are fine. Ids are never used twice in a process. Killing an id that the object does
/// not have is a failed check.
///
/// Needs a thread with Qt's event dispatcher (the main thread once the application
/// object exists, or a QThread); without one no timer starts. Destroying the manager
/// ends all its timers.
class QtTimerManager : public kern::TimerManager {
public:
    QtTimerManager();
    ~QtTimerManager() override;

    int64_t startTimer(uint32_t interval, kern::TimerInterface* owner) override;
    int32_t removeTimers(kern::TimerInterface* owner) override;
    void killTimer(int64_t id, kern::TimerInterface* owner) override;
    int32_t runningTimers(const kern::TimerInterface* owner) const override;

private:
    class Timers;
    std::unique_ptr<Timers> d_timers;
};

} // namespace NS_QT
