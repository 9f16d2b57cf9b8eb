#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "host/core/Export.h"

namespace desk {

/// Reads of single items, of which there may be thousands: together they never take all workers, so that
/// listings, and all that other volumes answer, go on while every item of a volume that stands still is being
/// asked for. Any thread.
class ZUHOST_API ReadingLane : public std::enable_shared_from_this<ReadingLane> {
public:
    using Task = std::function<void()>;

    /// So many workers read at most.
    static std::size_t CountWorkers();
    /// Runs `task` on a worker, before all that waits in the lane.
    void Submit(Task task) { Add(std::move(task), true); }
    /// Runs `task` on a worker after all that waits in the lane.
    void SubmitLast(Task task) { Add(std::move(task), false); }

private:
    void Add(Task task, bool isFirst);
    void RunNext();

    std::mutex mMutex;
    std::deque<Task> mTasks;
    std::size_t mWorkers = 0;
};

}  // namespace desk
