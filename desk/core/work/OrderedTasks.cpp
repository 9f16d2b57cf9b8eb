#include "desk/core/work/OrderedTasks.h"

#include <deque>
#include <mutex>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {

struct OrderedTasks::State {
    std::mutex mMutex;
    std::deque<Task> mTasks;
    bool mIsRunning = false;

    void RunAll() {
        std::unique_lock lock(mMutex);
        for (; !mTasks.empty(); lock.lock()) {
            Task task = std::move(mTasks.front());
            mTasks.pop_front();
            lock.unlock();
            RunTask(task, "ordered task");
            task = nullptr;
        }
        mIsRunning = false;
    }
};

OrderedTasks::OrderedTasks() : mState(std::make_shared<State>()) {}

void OrderedTasks::Submit(Task task) {
    {
        const std::lock_guard lock(mState->mMutex);
        mState->mTasks.push_back(std::move(task));
        if (std::exchange(mState->mIsRunning, true)) return;
    }
    GetServices().mWorkerPool->Submit([state = mState] { state->RunAll(); });
}

}  // namespace desk
