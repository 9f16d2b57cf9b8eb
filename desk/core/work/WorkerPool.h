#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <stop_token>
#include <thread>
#include <vector>

#include "host/core/Export.h"

namespace desk {

/// Threads for work that may wait for a volume: many small ones, since they mostly wait. Newest work
/// first, so that what the user looks at now overtakes what has scrolled away.
class ZUHOST_API WorkerPool {
public:
    using Task = std::function<void()>;

    explicit WorkerPool(unsigned threads);
    /// Drops what has not begun and waits for what has.
    ~WorkerPool();

    /// Runs `task` on a worker, before all work that is waiting already. An exception is logged. Any thread.
    void Submit(Task task);
    /// Runs `task` on a worker after all other waiting work (polling, read-ahead). Any thread.
    void SubmitLast(Task task);
    /// True while work is waiting or under way. Any thread.
    bool IsBusy() const;
    /// Waits until no work is waiting or under way, or until `timeout` has passed; true when idle. For tests
    /// and shutdown. Any thread but a worker.
    bool WaitUntilIdle(std::chrono::milliseconds timeout);
    /// Without those that stand in.
    unsigned CountThreads() const { return mOwnThreads; }
    /// So many workers wait for calls that are not being answered, and cannot be called back: as many others
    /// stand in for them from now on, but no more than `kMostStandIns` for each of the pool's own. The thread
    /// that made this.
    void StandInFor(std::size_t hungWorkers);
    static constexpr std::size_t kMostStandIns = 3;

private:
    void AddThread();
    void Run(std::stop_token stop);

    mutable std::mutex mMutex;
    std::condition_variable_any mWork;
    std::condition_variable mIdle;
    std::deque<Task> mTasks;
    unsigned mRunning = 0;
    const unsigned mOwnThreads;
    std::vector<std::jthread> mThreads;
};

}  // namespace desk
