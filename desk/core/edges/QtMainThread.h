#pragma once

#include <memory>

#include "desk/core/edges/MainThread.h"

namespace desk {

/// The main thread on Qt's event loop. Posted tasks run in batches of a few milliseconds, so that a flood of
/// results from the workers leaves room for input and painting. Made and destroyed on the UI thread, after
/// and before the QCoreApplication; tasks that have not run by then are dropped.
class ZUHOST_API QtMainThread : public MainThread {
public:
    QtMainThread();
    ~QtMainThread() override;

    void Post(Task task) override;
    void PostDelayed(Task task, std::chrono::milliseconds delay) override;
    TimerID StartTimer(std::chrono::milliseconds interval, Task task) override;
    void StopTimer(TimerID timer) override;
    std::chrono::steady_clock::time_point Now() const override;
    std::chrono::milliseconds GetTimeUnused() const override;

    /// True when no task waits, and none that was delayed falls due within `time`; timers do not count. UI
    /// thread.
    bool IsIdleFor(std::chrono::milliseconds time) const;

private:
    class Receiver;
    std::unique_ptr<Receiver> mReceiver;
};

}  // namespace desk
