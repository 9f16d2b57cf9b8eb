#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// A volume that has not answered a call for so long hangs: nobody waits for it without being told.
inline constexpr std::chrono::seconds kVolumePatience{5};

/// A call to a volume that hangs cannot be cancelled, but what only asks can be left behind: the question goes
/// on by itself, and its answer is dropped. So it owns all that it touches, and changes nothing on the disk.

/// Has `question` answered by a worker. UI thread.
template <class Question>
auto BeginToAsk(Question question) {
    using Found = decltype(question());
    auto task = std::make_shared<std::packaged_task<Found()>>(std::move(question));
    std::future<Found> answer = task->get_future();
    GetServices().mWorkerPool->Submit([task] { (*task)(); });
    return answer;
}

/// Returns when `isAnswered`, which waits for at most the time that it is given, says true; meanwhile as
/// `RunLongWork` with `title`, about the item at `path`. Throws `host::FileException` (`operation`, `path`,
/// ECANCELED) when the user does not want to wait any longer. UI thread.
ZUHOST_API void WaitForAnswer(const host::UTF16String& title, const char* operation,
                              const host::UTF16String& path,
                              const std::function<bool(std::chrono::milliseconds)>& isAnswered);

/// The answer to `question`, asked by a worker while the window lives (`WaitForAnswer`). What it throws is
/// thrown here. UI thread.
template <class Question>
auto AskVolume(const host::UTF16String& title, const char* operation, const host::UTF16String& path,
               Question question) {
    auto answer = BeginToAsk(std::move(question));
    WaitForAnswer(title, operation, path, [&answer](std::chrono::milliseconds time) {
        return answer.wait_for(time) == std::future_status::ready;
    });
    return answer.get();
}

/// The answer to `question`, which throws nothing; absent when there is none within `limit`, for which nothing
/// else happens. UI thread.
template <class Question>
auto AskVolumeWithin(std::chrono::milliseconds limit, Question question) {
    auto answer = BeginToAsk(std::move(question));
    const bool isAnswered = answer.wait_for(limit) == std::future_status::ready;
    return isAnswered ? std::optional(answer.get()) : std::nullopt;
}

}  // namespace desk
