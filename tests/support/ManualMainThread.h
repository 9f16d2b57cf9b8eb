#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

#include "desk/core/edges/MainThread.h"

/// A main thread whose time the test moves. It is the process's main thread (`desk::GetServices`) while it
/// exists; the thread that made it is the UI thread.
class ManualMainThread : public desk::MainThread {
public:
    ManualMainThread();
    ~ManualMainThread() override;

    /// Runs what is queued and due, lets the workers finish and Qt handle its events (deferred deletes and
    /// paints too), over and over until nothing is left. Delays and timers of the future do not count.
    void RunUntilIdle();
    /// Moves the clock, stopping at each delay and timer on the way, in their order, and runs all that comes
    /// of it.
    void Advance(std::chrono::milliseconds time);
    /// The same while a worker stands still: does not wait for the workers.
    void AdvanceAlone(std::chrono::milliseconds time);
    /// The same, second by second, until `isDone`; false when that has not happened within 20 s of real time.
    bool AdvanceAloneUntil(const std::function<bool()>& isDone);
    /// Runs whatever comes, also from other threads and the system, until `isDone`; false when that has not
    /// happened within `limit` of real time. The clock of this main thread stands still meanwhile.
    bool RunUntil(const std::function<bool()>& isDone,
                  std::chrono::milliseconds limit = std::chrono::seconds(20));
    /// Tasks that wait for the clock and timers that run.
    std::size_t CountDelayed() const;

    void Post(Task task) override;
    void PostDelayed(Task task, std::chrono::milliseconds delay) override;
    TimerID StartTimer(std::chrono::milliseconds interval, Task task) override;
    void StopTimer(TimerID timer) override;
    std::chrono::steady_clock::time_point Now() const override;
    std::chrono::milliseconds GetTimeUnused() const override { return mTimeUnused; }
    /// The program counts as used, unless the test says for how long it has not been.
    std::chrono::milliseconds mTimeUnused{0};

private:
    using Time = std::chrono::steady_clock::time_point;
    struct Delayed {
        Task mTask;
        TimerID mTimer = 0;
        std::chrono::milliseconds mInterval{0};
    };

    void Insert(Time due, Delayed delayed);
    bool HasQueued() const;
    bool WaitForWorkers();
    bool RunQueue();
    bool RunDue();

    mutable std::mutex mMutex;
    std::condition_variable mPosted;
    std::deque<Task> mQueue;
    /// By due time, then in the order of asking.
    std::multimap<Time, Delayed> mDelayed;
    Time mNow{std::chrono::hours(1000)};
    TimerID mLastTimer = 0;
    bool mHaveWorkersHung = false, mIsAlone = false;
    const std::thread::id mThread = std::this_thread::get_id();
    desk::MainThread* mBefore;
};
