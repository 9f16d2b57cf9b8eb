#include "desk/core/work/LongWork.h"

#include <chrono>
#include <future>

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {

namespace {

/// Most work is done before the user would see anything.
constexpr std::chrono::milliseconds kUnnoticed(20);

int sRunning = 0;

}  // namespace

void RunLongWork(const host::UTF16String& title, const std::function<void(WorkProgress&)>& work) {
    WorkProgress progress;
    std::packaged_task<void()> task([&] { work(progress); });
    std::future<void> done = task.get_future();
    ++sRunning;
    GetServices().mWorkerPool->Submit([&task] { task(); });
    if (done.wait_for(kUnnoticed) != std::future_status::ready)
        GetServices().mDialogs->WaitFor(title, progress, done);
    --sRunning;
    done.get();
}

bool IsLongWorkRunning() {
    return sRunning > 0;
}

}  // namespace desk
