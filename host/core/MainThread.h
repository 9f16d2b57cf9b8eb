#pragma once

#include <functional>

#include "host/core/Export.h"
#include "host/core/RefCounted.h"

namespace host {

/// The queue of work for the UI thread.
class ZUHOST_API MainThreadExecutor {
public:
    /// Runs `task` later on the UI thread, after what is already queued. What `task` throws is logged.
    /// Any thread.
    void Queue(std::function<void()> task);
};

/// The executor of the registered main thread (the UI thread); never null. Any thread.
ZUHOST_API MainThreadExecutor* GetRegisteredMainThread();

/// Runs `task` on the UI thread once `delaySeconds` (0 or more) have passed. What `task` throws is
/// logged. Any thread.
ZUHOST_API void AsyncCallFromMainThread(std::function<void()> task, double delaySeconds);

/// A task for an executor that is queued at most once at a time: queuing it again before it has run
/// does nothing. The executor keeps the task alive until it has run, so that dropping the last
/// reference does not cancel a run that is already queued. UI thread.
class ZUHOST_API QueueOnlyOnce : public RefCounted {
public:
    QueueOnlyOnce(MainThreadExecutor* executor, std::function<void()> task);
    ~QueueOnlyOnce() override;

    /// Queues the task unless it is waiting already.
    void Queue();

private:
    MainThreadExecutor* mExecutor;
    std::function<void()> mTask;
    bool mIsQueued = false;
};

}  // namespace host
