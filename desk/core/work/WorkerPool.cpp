#include "desk/core/work/WorkerPool.h"

#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "desk/core/edges/MainThread.h"

namespace desk {
namespace {

using std::chrono::nanoseconds;

/// While work waits, this often it is looked whether the workers that there are wait too.
constexpr std::chrono::milliseconds kPace{2};

/// What computes needs no more threads than this.
std::size_t CountProcessors() {
    static const std::size_t sProcessors = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 2, 8);
    return sProcessors;
}

}  // namespace

WorkerPool::WorkerPool(unsigned threads, std::chrono::milliseconds idleTime)
    : mOwnThreads(threads), mIdleTime(idleTime), mMost(threads) {}

WorkerPool::~WorkerPool() {
    std::deque<Task> dropped;
    {
        Lock lock(mMutex);
        dropped.swap(mTasks);
        mIsStopped = true;
        for (Worker& worker : mWorkers) worker.mWake.notify_one();
        mPace.notify_one();
        // The last one to end says so.
        mBecameIdle.wait(lock, [this] { return mWorkers.empty() && !mIsPacing; });
        JoinEnded();
    }
    if (mPacer.joinable()) mPacer.join();
}

void WorkerPool::Submit(Task task) {
    Add(std::move(task), true);
}

void WorkerPool::SubmitLast(Task task) {
    Add(std::move(task), false);
}

void WorkerPool::Add(Task task, bool isFirst) {
    const Lock lock(mMutex);
    ++mSubmitted;
    mTasks.insert(isFirst ? mTasks.begin() : mTasks.end(), std::move(task));
    WakeWorker();
}

void WorkerPool::WakeWorker() {
    if (!mIdle.empty()) {
        Worker* worker = mIdle.back();
        mIdle.pop_back();
        worker->mIsIdle = false;
        worker->mWake.notify_one();
    } else if (mWorkers.size() < std::min(CountProcessors(), mMost)) {
        AddWorker();
    } else {
        StartPacing();
    }
}

void WorkerPool::AddWorker() {
    const auto worker = mWorkers.emplace(mWorkers.end());
    try {
        worker->mThread = std::thread([this, worker] { Run(worker); });
    } catch (const std::system_error&) {
        mWorkers.erase(worker);
        // The system has no more threads: those that there are do the work, if there is one.
        if (mWorkers.empty()) throw;
    }
}

bool WorkerPool::IsBusy() const {
    const Lock lock(mMutex);
    return mRunning != 0 || !mTasks.empty();
}

bool WorkerPool::WaitUntilIdle(std::chrono::milliseconds timeout) {
    Lock lock(mMutex);
    return mBecameIdle.wait_for(lock, timeout, [&] { return mRunning == 0 && mTasks.empty(); });
}

std::size_t WorkerPool::CountTasks() const {
    const Lock lock(mMutex);
    return mSubmitted;
}

std::size_t WorkerPool::CountRunningThreads() const {
    const Lock lock(mMutex);
    return mWorkers.size();
}

void WorkerPool::StandInFor(std::size_t hungWorkers) {
    const Lock lock(mMutex);
    mMost = mOwnThreads + std::min(hungWorkers, kMostStandIns * mOwnThreads);
    if (!mTasks.empty()) StartPacing();
}

void WorkerPool::Run(std::list<Worker>::iterator self) {
    Lock lock(mMutex);
    do {
        while (!mTasks.empty()) RunNext(lock);
    } while (WaitForWork(lock, *self));
    JoinEnded();
    mEnded.push_back(std::move(self->mThread));
    mWorkers.erase(self);
    mBecameIdle.notify_all();
}

void WorkerPool::RunNext(Lock& lock) {
    Task task = std::move(mTasks.front());
    mTasks.pop_front();
    ++mRunning;
    lock.unlock();
    RunTask(task, "worker");
    task = nullptr;  // What it holds is gone before it counts as done.
    lock.lock();
    if (--mRunning == 0 && mTasks.empty()) mBecameIdle.notify_all();
}

/// False when the worker is to end.
bool WorkerPool::WaitForWork(Lock& lock, Worker& worker) {
    if (mIsStopped) return false;
    worker.mIsIdle = true;
    mIdle.push_back(&worker);
    const auto isWoken = [&] { return mIsStopped || !worker.mIsIdle; };
    if (!worker.mWake.wait_for(lock, mIdleTime, isWoken)) {
        if (mWorkers.size() > 1) {
            std::erase(mIdle, &worker);
            return false;
        }
        worker.mWake.wait(lock, isWoken);
    }
    return !mIsStopped;
}

void WorkerPool::StartPacing() {
    if (mIsPacing || mIsStopped || mWorkers.size() >= mMost) return;
    mIsPacing = true;
    if (mPacer.joinable()) mPacer.join();
    mPacer = std::thread([this] { Pace(); });
}

/// As long as work waits and the workers mostly wait too, there are twice as many of them in each step.
void WorkerPool::Pace() {
    Lock lock(mMutex);
    while (!mIsStopped && !mTasks.empty() && mWorkers.size() < mMost) {
        CountWaiting(nanoseconds::max());
        const auto begin = std::chrono::steady_clock::now();
        mPace.wait_for(lock, kPace);
        const std::size_t waiting = CountWaiting(std::chrono::steady_clock::now() - begin);
        if (waiting * 2 < mWorkers.size()) continue;
        std::size_t more = std::min({mTasks.size(), waiting, mMost - std::min(mMost, mWorkers.size())});
        for (; more > 0; --more) AddWorker();
    }
    mIsPacing = false;
    mBecameIdle.notify_all();
}

/// The workers that have used less than half of the time since the last call, which was `time` ago.
std::size_t WorkerPool::CountWaiting(nanoseconds time) {
    std::size_t waiting = 0;
    for (Worker& worker : mWorkers) {
        const nanoseconds now = ProcessorTimeOf(worker);
        waiting += (now - std::exchange(worker.mProcessorTime, now)) * 2 < time;
    }
    return waiting;
}

nanoseconds WorkerPool::ProcessorTimeOf(Worker& worker) {
    clockid_t clock = 0;
    timespec time{};
    if (pthread_getcpuclockid(worker.mThread.native_handle(), &clock) != 0 || clock_gettime(clock, &time) != 0)
        return {};
    return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

/// Those that have ended hold neither the lock nor anything that waits for it.
void WorkerPool::JoinEnded() {
    for (std::thread& thread : std::exchange(mEnded, {})) thread.join();
}

}  // namespace desk
