#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "desk/core/edges/MainThread.h"
#include "host/core/Strings.h"

namespace desk {

/// What has changed in a folder.
struct FolderChange {
    /// More names than this count as the whole folder.
    static constexpr std::size_t kMostNames = 64;

    /// The entries that have changed; empty when the whole folder has.
    std::set<host::UTF16String> mNames;
    bool mIsWhole = false;
    /// The folder is not watched any more: it was moved, deleted, or its volume was unmounted.
    bool mIsLost = false;

    void Add(host::UTF16String name);
    void AddWhole();
    void Merge(FolderChange&& other);
};

/// By the folder's path in the bytes of the disk.
using FolderChanges = std::map<std::string, FolderChange>;

/// Paces changes on their way to the UI thread: the first at once, then one batch per 40 ms while they go on.
class ChangeCollector : public std::enable_shared_from_this<ChangeCollector> {
public:
    static constexpr std::chrono::milliseconds kPace{40};
    using Receiver = std::function<void(FolderChanges)>;

    /// UI thread; an empty receiver ends the announcements.
    void SetReceiver(Receiver receiver) { mReceiver = std::move(receiver); }
    /// Any thread.
    void Add(FolderChanges&& changes);

private:
    void Flush();

    std::mutex mMutex;
    FolderChanges mChanges;
    bool mIsFlushing = false;
    Receiver mReceiver;
};

}  // namespace desk
