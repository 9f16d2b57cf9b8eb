#include "desk/core/work/WorkerPool.h"

#include <algorithm>
#include <utility>

#include "desk/core/edges/MainThread.h"

namespace desk {

WorkerPool::WorkerPool(unsigned threads) : mOwnThreads(threads) {
    mThreads.reserve(threads);
    while (mThreads.size() < threads) AddThread();
}

WorkerPool::~WorkerPool() {
    std::deque<Task> dropped;
    {
        const std::lock_guard lock(mMutex);
        dropped.swap(mTasks);
    }
    for (std::jthread& thread : mThreads) thread.request_stop();
    mThreads.clear();
}

void WorkerPool::AddThread() {
    mThreads.emplace_back([this](std::stop_token stop) { Run(stop); });
}

void WorkerPool::StandInFor(std::size_t hungWorkers) {
    const std::size_t wanted = mOwnThreads + std::min(hungWorkers, kMostStandIns * mOwnThreads);
    while (mThreads.size() < wanted) AddThread();
}

void WorkerPool::Submit(Task task) {
    {
        const std::lock_guard lock(mMutex);
        mTasks.push_front(std::move(task));
    }
    mWork.notify_one();
}

void WorkerPool::SubmitLast(Task task) {
    {
        const std::lock_guard lock(mMutex);
        mTasks.push_back(std::move(task));
    }
    mWork.notify_one();
}

bool WorkerPool::IsBusy() const {
    const std::lock_guard lock(mMutex);
    return mRunning != 0 || !mTasks.empty();
}

bool WorkerPool::WaitUntilIdle(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mMutex);
    return mIdle.wait_for(lock, timeout, [&] { return mRunning == 0 && mTasks.empty(); });
}

void WorkerPool::Run(std::stop_token stop) {
    std::unique_lock lock(mMutex);
    while (mWork.wait(lock, stop, [&] { return !mTasks.empty(); }) && !stop.stop_requested()) {
        Task task = std::move(mTasks.front());
        mTasks.pop_front();
        ++mRunning;
        lock.unlock();
        RunTask(task, "worker");
        task = nullptr;  // What it holds is gone before it counts as done.
        lock.lock();
        if (--mRunning == 0 && mTasks.empty()) mIdle.notify_all();
    }
}

}  // namespace desk
