#pragma once

#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "desk/core/work/Lifetime.h"
#include "desk/files/live/AnswerWatch.h"
#include "desk/files/live/FolderPoller.h"
#include "desk/files/live/FolderWatcher.h"
#include "desk/files/live/WatchStatus.h"

namespace desk {

/// Behind `host::DirectoryChangeMonitor`: follows the listed folders below the monitored roots, by watching
/// where the volume reports changes and the system's limit allows it, else by polling, and announces what
/// changes. Part of the folder store, which lists and polls. UI thread.
class DirectoryMonitor {
public:
    class Client {
    public:
        /// Something has changed in a folder; called before it is announced.
        virtual void OnFolderChanged(const host::UTF16String& folder, FolderChange&& change) = 0;
        /// A folder is to be polled; `FinishPoll` is called when that has come to an end.
        virtual void PollFolder(const host::UTF16String& folder) = 0;
        /// Folders below `root` are monitored from now on.
        virtual void OnRootMonitored(const host::UTF16String& root) = 0;
        /// A folder is not followed any more.
        virtual void OnFollowingEnded(const host::UTF16String& folder) = 0;

    protected:
        ~Client() = default;
    };

    DirectoryMonitor(std::unique_ptr<ChangeSource> source, Client& client);
    ~DirectoryMonitor();

    void MonitorDirectory(const host::UTF16String& path, bool recursive, bool allowPolling);
    void StopMonitoringDirectory(const host::UTF16String& path, bool recursive);
    bool IsMonitored(std::u16string_view folder) const;
    bool IsRoot(std::u16string_view folder) const;

    /// What listings use to begin watching, on their workers.
    const std::shared_ptr<FolderWatcher>& GetWatcher() const { return mWatcher; }
    /// Where workers mark their calls to the volume.
    const std::shared_ptr<AnswerWatch>& GetAnswerWatch() const { return mAnswerWatch; }
    /// Takes what a listing has found: how the folder can be followed, and how the volume answered (errno).
    /// False when the folder is not followed.
    bool FinishListing(const host::UTF16String& folder, Following following, int systemError);
    void FinishPoll(const host::UTF16String& folder, std::chrono::milliseconds duration);
    bool IsPolled(const host::UTF16String& folder) const;
    /// True when the folder's watch was lost and it has not been listed since.
    bool IsLost(const host::UTF16String& folder) const;
    void Forget(const host::UTF16String& folder);
    void Announce(const host::UTF16String& folder) const;

    WatchStatus GetStatus() const;

private:
    struct Root {
        host::UTF16String mPath;
        bool mIsRecursive;
        bool mMayPoll;
    };
    struct Followed {
        Following mFollowing;
        int mSystemError = 0;
        bool mIsLost = false;
    };

    bool MayPoll(std::u16string_view folder) const;
    void WatchRoot(const host::UTF16String& root);
    void OnChanges(FolderChanges&& changes);
    void OnLost(const host::UTF16String& folder);
    void AnnounceStatus();

    Client& mClient;
    std::shared_ptr<ChangeCollector> mCollector = std::make_shared<ChangeCollector>();
    std::shared_ptr<FolderWatcher> mWatcher;
    std::shared_ptr<AnswerWatch> mAnswerWatch;
    FolderPoller mPoller;
    std::vector<Root> mRoots;
    std::map<host::UTF16String, Followed, std::less<>> mFollowed;
    bool mIsStatusQueued = false;
    WatchStatus mAnnounced;
    Lifetime mLifetime;
};

}  // namespace desk
