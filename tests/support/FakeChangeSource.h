#pragma once

#include <sys/inotify.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "desk/files/live/ChangeSource.h"

/// A source of changes that the test speaks for.
class FakeChangeSource : public desk::ChangeSource {
public:
    void Start(Receiver receiver) override { mReceiver = std::move(receiver); }
    void Stop() override { mReceiver = nullptr; }
    int Add(const std::string& path) override {
        int watch = 0;
        {
            const std::lock_guard lock(mMutex);
            if (mError != 0) return -mError;
            watch = mWatches.try_emplace(path, ++mLast).first->second;
        }
        if (mDuringAdd) mDuringAdd();
        return watch;
    }
    void Remove(int watch) override {
        const std::lock_guard lock(mMutex);
        std::erase_if(mWatches, [watch](const auto& entry) { return entry.second == watch; });
    }

    /// What happens before `Add` returns.
    std::function<void()> mDuringAdd;
    /// Every new watch fails with this errno; 0 for none.
    void FailWatches(int error) {
        const std::lock_guard lock(mMutex);
        mError = error;
    }
    /// Tells of a change in the folder at `path`.
    void Tell(const std::string& path, std::uint32_t mask, const std::string& name = {}) {
        if (const int watch = WatchOf(path)) mReceiver({{watch, mask, name}});
    }
    void Overflow() { mReceiver({{-1, IN_Q_OVERFLOW, {}}}); }
    bool IsWatched(const std::string& path) { return WatchOf(path) != 0; }

private:
    int WatchOf(const std::string& path) {
        const std::lock_guard lock(mMutex);
        const auto found = mWatches.find(path);
        return found == mWatches.end() ? 0 : found->second;
    }

    Receiver mReceiver;
    std::mutex mMutex;
    std::map<std::string, int> mWatches;
    int mLast = 0, mError = 0;
};
