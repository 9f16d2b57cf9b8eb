#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <map>

#include "desk/core/edges/MainThread.h"
#include "host/core/Strings.h"

namespace desk {

/// Says when a folder is to be polled: every two seconds, few folders at a time, one that takes long less
/// often, all less often while nobody uses the program, and none again before its last poll has finished. UI
/// thread.
class FolderPoller {
public:
    using Milliseconds = std::chrono::milliseconds;
    static constexpr Milliseconds kInterval{2000};

    /// `poll` begins the poll of a folder; `Finished` is called when it has come to an end. No more than
    /// `mostAtATime` are under way: what a hung volume does not answer holds up as many workers, and no more.
    FolderPoller(std::function<void(const host::UTF16String& folder)> poll, std::size_t mostAtATime)
        : mPoll(std::move(poll)), mMostAtATime(mostAtATime) {}
    ~FolderPoller();

    void Add(const host::UTF16String& folder);
    void Remove(const host::UTF16String& folder);
    void Finished(const host::UTF16String& folder, Milliseconds duration);
    /// The longest time between two polls of a folder at present.
    Milliseconds GetInterval() const;

private:
    struct Poll {
        std::chrono::steady_clock::time_point mFinished;
        Milliseconds mInterval = kInterval;
        bool mIsUnderWay = false;
    };

    void Tick();
    void StartWaiting();

    const std::function<void(const host::UTF16String&)> mPoll;
    const std::size_t mMostAtATime;
    std::map<host::UTF16String, Poll> mFolders;
    std::deque<host::UTF16String> mWaiting;
    std::size_t mUnderWay = 0;
    MainThread::TimerID mTimer = 0;
};

}  // namespace desk
