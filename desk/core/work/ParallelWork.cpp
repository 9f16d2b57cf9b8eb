#include "desk/core/work/ParallelWork.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>

#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {

namespace {

constexpr std::size_t kMostThreads = 12;

/// A helper that begins when all is done finds it closed, and touches nothing else.
class Work {
public:
    Work(std::size_t count, const std::function<void(std::size_t)>& body) : mCount(count), mBody(body) {}

    void Help() {
        {
            const std::lock_guard lock(mMutex);
            if (mIsClosed) return;
            ++mHelpers;
        }
        DoItems();
        const std::lock_guard lock(mMutex);
        if (--mHelpers == 0) mDone.notify_all();
    }

    void Run() {
        DoItems();
        std::unique_lock lock(mMutex);
        mIsClosed = true;
        mDone.wait(lock, [this] { return mHelpers == 0; });
        if (mException) std::rethrow_exception(mException);
    }

private:
    void DoItems() {
        try {
            for (std::size_t index; (index = mNext++) < mCount;) mBody(index);
        } catch (...) {
            mNext = mCount;
            const std::lock_guard lock(mMutex);
            if (!mException) mException = std::current_exception();
        }
    }

    const std::size_t mCount;
    const std::function<void(std::size_t)>& mBody;
    std::atomic<std::size_t> mNext = 0;
    std::mutex mMutex;
    std::condition_variable mDone;
    std::size_t mHelpers = 0;
    bool mIsClosed = false;
    std::exception_ptr mException;
};

}  // namespace

void RunShared(std::size_t count, const std::function<void(std::size_t)>& body) {
    const auto work = std::make_shared<Work>(count, body);
    WorkerPool* pool = GetServices().mWorkerPool;
    // The other half of the workers stays free for what the user looks at.
    const std::size_t threads =
        std::min({count, kMostThreads, std::size_t{pool ? pool->CountThreads() / 2 : 0}});
    for (std::size_t helper = 1; helper < threads; ++helper) pool->Submit([work] { work->Help(); });
    work->Run();
}

}  // namespace desk
