#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "host/core/Export.h"

namespace desk {

/// Threads for work that may wait for a volume. Newest work first, so that what the user looks at now overtakes
/// what has scrolled away. There are as many threads as the work needs: few while it computes, more, up to the
/// most, once those that there are mostly wait, and one when nothing is to be done: each thread keeps memory of
/// its own.
class ZUHOST_API WorkerPool {
public:
    using Task = std::function<void()>;

    /// So many threads at most suit a program, since they mostly wait for the volume.
    static constexpr unsigned kThreads = 32;
    /// A thread that has had no work for so long ends, unless it is the last one.
    static constexpr std::chrono::milliseconds kIdleTime{10'000};

    /// `threads` are the most, at least one.
    explicit WorkerPool(unsigned threads, std::chrono::milliseconds idleTime = kIdleTime);
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
    /// The most threads, without those that stand in.
    unsigned CountThreads() const { return mOwnThreads; }
    /// The tasks that have been submitted so far. Any thread.
    std::size_t CountTasks() const;
    /// The threads that there are now. Any thread.
    std::size_t CountRunningThreads() const;
    /// So many workers wait for calls that are not being answered, and cannot be called back: as many others
    /// may stand in for them from now on, but no more than `kMostStandIns` for each of the pool's own. Any
    /// thread.
    void StandInFor(std::size_t hungWorkers);
    static constexpr std::size_t kMostStandIns = 3;

private:
    using Lock = std::unique_lock<std::mutex>;
    struct Worker {
        std::thread mThread;
        std::condition_variable mWake;
        bool mIsIdle = false;
        /// Processor time, where the pace last looked.
        std::chrono::nanoseconds mProcessorTime{0};
    };

    void Add(Task task, bool isFirst);
    void WakeWorker();
    void AddWorker();
    void Run(std::list<Worker>::iterator self);
    void RunNext(Lock& lock);
    bool WaitForWork(Lock& lock, Worker& worker);
    void StartPacing();
    void Pace();
    std::size_t CountWaiting(std::chrono::nanoseconds time);
    static std::chrono::nanoseconds ProcessorTimeOf(Worker& worker);
    void JoinEnded();

    mutable std::mutex mMutex;
    std::condition_variable mBecameIdle;
    std::deque<Task> mTasks;
    std::size_t mSubmitted = 0;
    unsigned mRunning = 0;
    const unsigned mOwnThreads;
    const std::chrono::milliseconds mIdleTime;
    std::size_t mMost;
    bool mIsStopped = false;
    std::list<Worker> mWorkers;
    /// The one that has worked last at the back: it is the next, so that the others can end.
    std::vector<Worker*> mIdle;
    /// Adds workers while work waits.
    std::thread mPacer;
    bool mIsPacing = false;
    std::condition_variable mPace;
    /// Have run to their end, or nearly.
    std::vector<std::thread> mEnded;
};

}  // namespace desk
