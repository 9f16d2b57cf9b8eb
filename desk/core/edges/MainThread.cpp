#include "desk/core/edges/MainThread.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "desk/core/edges/Services.h"
#include "host/core/Logging.h"
#include "host/core/MainThread.h"

namespace desk {

void RunTask(const MainThread::Task& task, const char* where) noexcept {
    try {
        task();
    } catch (...) {
        host::LogCurrentException(where);
    }
}

}  // namespace desk

namespace host {

void MainThreadExecutor::Queue(std::function<void()> task) {
    desk::GetServices().mMainThread->Post(std::move(task));
}

MainThreadExecutor* GetRegisteredMainThread() {
    static MainThreadExecutor executor;
    return &executor;
}

void AsyncCallFromMainThread(std::function<void()> task, double delaySeconds) {
    constexpr double longest = 1e9;
    const double seconds = std::clamp(std::isnan(delaySeconds) ? 0.0 : delaySeconds, 0.0, longest);
    desk::GetServices().mMainThread->PostDelayed(std::move(task),
                                                 std::chrono::milliseconds(std::llround(seconds * 1000)));
}

QueueOnlyOnce::QueueOnlyOnce(MainThreadExecutor* executor, std::function<void()> task)
    : mExecutor(executor), mTask(std::move(task)) {}

QueueOnlyOnce::~QueueOnlyOnce() = default;

void QueueOnlyOnce::Queue() {
    if (std::exchange(mIsQueued, true)) return;
    mExecutor->Queue([self = RefPtr<QueueOnlyOnce>(this)] {
        self->mIsQueued = false;
        self->mTask();
    });
}

}  // namespace host
