#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// How far long work has come: the worker writes, whoever shows it reads. Any thread.
class ZUHOST_API WorkProgress {
public:
    struct State {
        /// What is being worked on now: a name, ready to be shown after escaping.
        host::UTF16String mItem;
        std::uint64_t mBytesDone = 0;
        /// 0 while it is not known.
        std::uint64_t mBytesTotal = 0;
    };

    void SetItem(const host::UTF16String& item);
    void AddToTotal(std::uint64_t bytes) { mBytesTotal += bytes; }
    void AddDone(std::uint64_t bytes) { mBytesDone += bytes; }
    State Get() const;

    /// Asks the worker to stop; it does at its next step.
    void Cancel() { mIsCancelled = true; }
    bool IsCancelled() const { return mIsCancelled; }
    /// Throws `host::FileException` (`operation`, `path`, ECANCELED) when the work is to stop.
    void ThrowIfCancelled(const char* operation, const std::string& path) const;

private:
    mutable std::mutex mMutex;
    host::UTF16String mItem;
    std::atomic<std::uint64_t> mBytesDone = 0;
    std::atomic<std::uint64_t> mBytesTotal = 0;
    std::atomic<bool> mIsCancelled = false;
};

}  // namespace desk
