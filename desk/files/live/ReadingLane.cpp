#include "desk/files/live/ReadingLane.h"

#include <algorithm>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {

std::size_t ReadingLane::CountWorkers() {
    return std::max<std::size_t>(1, GetServices().mWorkerPool->CountThreads() * 3 / 4);
}

void ReadingLane::Add(Task task, bool isFirst) {
    {
        const std::lock_guard lock(mMutex);
        mTasks.insert(isFirst ? mTasks.begin() : mTasks.end(), std::move(task));
        if (mWorkers == CountWorkers()) return;
        ++mWorkers;
    }
    GetServices().mWorkerPool->Submit([self = shared_from_this()] { self->RunNext(); });
}

/// Runs one task and stands in line again, behind what has been asked of the workers meanwhile.
void ReadingLane::RunNext() {
    Task task;
    {
        const std::lock_guard lock(mMutex);
        if (mTasks.empty()) {
            --mWorkers;
            return;
        }
        task = std::move(mTasks.front());
        mTasks.pop_front();
    }
    RunTask(task, "reader");
    task = nullptr;
    GetServices().mWorkerPool->SubmitLast([self = shared_from_this()] { self->RunNext(); });
}

}  // namespace desk
