#pragma once

#include <chrono>
#include <functional>

#include "host/core/Export.h"

namespace desk {

/// The edge to the event loop of the UI thread: its queue, delays, timers, clock and user.
class ZUHOST_API MainThread {
public:
    using Task = std::function<void()>;
    using TimerID = unsigned long long;

    virtual ~MainThread() = default;

    /// Runs `task` on the UI thread after what is already queued. Any thread.
    virtual void Post(Task task) = 0;
    /// Runs `task` on the UI thread once `delay` has passed. Any thread.
    virtual void PostDelayed(Task task, std::chrono::milliseconds delay) = 0;
    /// Runs `task` on the UI thread every `interval` until the timer is stopped. UI thread.
    virtual TimerID StartTimer(std::chrono::milliseconds interval, Task task) = 0;
    virtual void StopTimer(TimerID timer) = 0;
    /// A clock that only moves forward; delays and timers follow it. Any thread.
    virtual std::chrono::steady_clock::time_point Now() const = 0;
    /// How long nobody has used the program: no key, pointer, wheel or touch, and none of its windows became
    /// active. UI thread.
    virtual std::chrono::milliseconds GetTimeUnused() const = 0;
};

/// Runs a task as every main thread does: what it throws is logged, with `where` as the place that caught it.
ZUHOST_API void RunTask(const MainThread::Task& task, const char* where) noexcept;

}  // namespace desk
