#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "host/core/Export.h"

namespace desk {

/// How fast the volume answers, from what was measured: how many questions one worker should ask in a row, so
/// that a slow volume is asked by many workers at once and a fast one costs few tasks. Any thread.
class VolumeSpeed {
public:
    void Note(std::chrono::nanoseconds duration, std::size_t questions) {
        if (questions == 0) return;
        const long long each = std::max<long long>(1, duration.count() / static_cast<long long>(questions));
        const long long before = mNanoseconds.load(std::memory_order_relaxed);
        mNanoseconds.store(before == 0 ? each : (before * 3 + each) / 4, std::memory_order_relaxed);
    }
    /// For a task that takes about `time`; while nothing is known of the volume, few.
    std::size_t ChunkSize(std::chrono::nanoseconds time = std::chrono::microseconds(500)) const {
        const long long each = mNanoseconds.load(std::memory_order_relaxed);
        return each == 0 ? 4 : static_cast<std::size_t>(std::clamp<long long>(time.count() / each, 1, 64));
    }

private:
    /// Mean time of a question, the last ones counting most; 0 when nothing is known.
    std::atomic<long long> mNanoseconds{0};
};

/// Calls `body(begin, end)` for all of 0..count in chunks, several at once, as tasks that `submit` takes; then
/// `done`, in one of them. The caller is a worker and does not wait.
inline void RunInChunks(const std::function<void(std::function<void()>)>& submit, std::size_t count,
                        std::size_t chunk, std::function<void(std::size_t begin, std::size_t end)> body,
                        std::function<void()> done) {
    if (count <= chunk) {
        body(0, count);
        return done();
    }
    struct Work {
        std::function<void(std::size_t, std::size_t)> mBody;
        std::function<void()> mDone;
        std::atomic<std::size_t> mLeft;
    };
    auto work = std::make_shared<Work>(std::move(body), std::move(done), (count + chunk - 1) / chunk);
    for (std::size_t begin = 0; begin < count; begin += chunk)
        submit([work, begin, end = std::min(begin + chunk, count)] {
            work->mBody(begin, end);
            if (--work->mLeft == 0) work->mDone();
        });
}

/// Calls `body(index)` for each of 0..count, in no order: on this thread, and at the same time on workers of
/// the pool that are free (never more than twelve threads, since a volume that is slow to answer answers
/// several at once). Returns when all are done. After the first exception no more are begun, and it is thrown
/// here. Any thread; a worker may call it.
ZUHOST_API void RunShared(std::size_t count, const std::function<void(std::size_t index)>& body);

}  // namespace desk
