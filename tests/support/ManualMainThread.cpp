#include "tests/support/ManualMainThread.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>
#include <algorithm>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"

namespace {

using std::chrono::milliseconds;

/// Longer than any test's work takes: what hangs fails the test instead of stopping the program.
constexpr milliseconds kLongestWork = std::chrono::seconds(60);

void HandleQtEvents() {
    if (!QCoreApplication::instance()) return;
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace

ManualMainThread::ManualMainThread() : mBefore(std::exchange(desk::GetServices().mMainThread, this)) {}

ManualMainThread::~ManualMainThread() {
    desk::GetServices().mMainThread = mBefore;
}

void ManualMainThread::RunUntilIdle() {
    ASSERT_EQ(std::this_thread::get_id(), mThread);
    const auto end = std::chrono::steady_clock::now() + kLongestWork;
    // Handling events may post new ones; only rounds without any effect count as idle.
    for (int quietRounds = 0; quietRounds < 3; ++quietRounds) {
        const bool hasRun = RunQueue() | RunDue();
        HandleQtEvents();
        if (WaitForWorkers() || hasRun) quietRounds = -1;
        if (mHaveWorkersHung) return;
        if (std::chrono::steady_clock::now() < end) continue;
        ADD_FAILURE() << "Work goes on without end";
        return;
    }
}

/// Waits for the workers to finish or to ask for the main thread; false when they had nothing to do.
bool ManualMainThread::WaitForWorkers() {
    const desk::Services& services = desk::GetServices();
    if (mIsAlone || !services.mWorkerPool || !services.mWorkerPool->IsBusy()) return false;
    const auto end = std::chrono::steady_clock::now() + (mHaveWorkersHung ? milliseconds(0) : kLongestWork);
    while (!services.mWorkerPool->WaitUntilIdle(milliseconds(1)) && !HasQueued()) {
        mHaveWorkersHung = std::chrono::steady_clock::now() >= end;
        if (!mHaveWorkersHung) continue;
        ADD_FAILURE() << "The workers did not come to rest";
        break;
    }
    return true;
}

bool ManualMainThread::HasQueued() const {
    const std::lock_guard lock(mMutex);
    return !mQueue.empty();
}

void ManualMainThread::Advance(milliseconds time) {
    RunUntilIdle();
    const Time end = Now() + time;
    for (;;) {
        {
            const std::lock_guard lock(mMutex);
            mNow = mDelayed.empty() ? end : std::min(end, std::max(mNow, mDelayed.begin()->first));
        }
        RunUntilIdle();
        if (Now() >= end || mHaveWorkersHung) return;
    }
}

void ManualMainThread::AdvanceAlone(milliseconds time) {
    mIsAlone = true;
    Advance(time);
    mIsAlone = false;
}

bool ManualMainThread::AdvanceAloneUntil(const std::function<bool()>& isDone) {
    mIsAlone = true;
    const bool isReached = RunUntil([&] { return Advance(std::chrono::seconds(1)), isDone(); });
    mIsAlone = false;
    return isReached;
}

bool ManualMainThread::RunUntil(const std::function<bool()>& isDone, milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    for (;;) {
        RunUntilIdle();
        if (isDone()) return true;
        if (mHaveWorkersHung) return false;
        if (std::chrono::steady_clock::now() >= end) return false;
        std::unique_lock lock(mMutex);
        mPosted.wait_for(lock, milliseconds(5), [&] { return !mQueue.empty(); });
    }
}

std::size_t ManualMainThread::CountDelayed() const {
    const std::lock_guard lock(mMutex);
    return mDelayed.size();
}

void ManualMainThread::Post(Task task) {
    {
        const std::lock_guard lock(mMutex);
        mQueue.push_back(std::move(task));
    }
    mPosted.notify_one();
}

void ManualMainThread::PostDelayed(Task task, milliseconds delay) {
    Insert(Now() + delay, {std::move(task)});
}

desk::MainThread::TimerID ManualMainThread::StartTimer(milliseconds interval, Task task) {
    interval = std::max(interval, milliseconds(1));
    Insert(Now() + interval, {std::move(task), ++mLastTimer, interval});
    return mLastTimer;
}

void ManualMainThread::StopTimer(TimerID timer) {
    const std::lock_guard lock(mMutex);
    std::erase_if(mDelayed, [timer](const auto& entry) { return timer && entry.second.mTimer == timer; });
}

std::chrono::steady_clock::time_point ManualMainThread::Now() const {
    const std::lock_guard lock(mMutex);
    return mNow;
}

void ManualMainThread::Insert(Time due, Delayed delayed) {
    const std::lock_guard lock(mMutex);
    mDelayed.emplace(due, std::move(delayed));
}

bool ManualMainThread::RunQueue() {
    for (bool hasRun = false;; hasRun = true) {
        Task task;
        {
            const std::lock_guard lock(mMutex);
            if (mQueue.empty()) return hasRun;
            task = std::move(mQueue.front());
            mQueue.pop_front();
        }
        desk::RunTask(task, "main thread: task");
    }
}

bool ManualMainThread::RunDue() {
    Task task;
    {
        const std::lock_guard lock(mMutex);
        if (mDelayed.empty() || mDelayed.begin()->first > mNow) return false;
        const auto entry = mDelayed.extract(mDelayed.begin());
        Delayed& delayed = entry.mapped();
        task = delayed.mTask;
        // The timer's next time, before its task can stop it.
        if (delayed.mTimer) mDelayed.emplace(entry.key() + delayed.mInterval, std::move(delayed));
    }
    desk::RunTask(task, "main thread: delayed task");
    return true;
}
