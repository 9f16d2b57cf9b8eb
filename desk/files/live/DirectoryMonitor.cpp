#include "desk/files/live/DirectoryMonitor.h"

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <utility>

#include "desk/core/durable/VolumeProperties.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/FolderStore.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

/// True when the error is that of one folder, and tells nothing of its volume.
bool IsErrorOfFolder(int systemError) {
    static constexpr int kErrors[] = {ENOENT, ENOTDIR, EACCES, EPERM, ELOOP, ENAMETOOLONG};
    return std::ranges::find(kErrors, systemError) != std::end(kErrors);
}

auto Compared(const WatchStatus& status) {
    return std::tie(status.mWatchedFolders, status.mPolledFolders, status.mLimitReached, status.mSystemError,
                    status.mPollInterval, status.mSecondsWithoutAnswer);
}

/// Few of the workers: each poll of a hung volume keeps one for good.
std::size_t MostPollsAtATime() {
    return std::max<std::size_t>(1, GetServices().mWorkerPool->CountThreads() / 6);
}

}  // namespace

DirectoryMonitor::DirectoryMonitor(std::unique_ptr<ChangeSource> source, Client& client)
    : mClient(client),
      mWatcher(std::make_shared<FolderWatcher>(std::move(source), mCollector)),
      mAnswerWatch(
          std::make_shared<AnswerWatch>([this](const host::UTF16String& folder) { return IsMonitored(folder); },
                                        [this] { AnnounceStatus(); })),
      mPoller([this](const host::UTF16String& folder) { mClient.PollFolder(folder); }, MostPollsAtATime()) {
    mCollector->SetReceiver([this](FolderChanges changes) { OnChanges(std::move(changes)); });
}

DirectoryMonitor::~DirectoryMonitor() {
    mWatcher->Stop();
    mAnswerWatch->Stop();
    mCollector->SetReceiver({});
}

void DirectoryMonitor::MonitorDirectory(const host::UTF16String& path, bool recursive, bool allowPolling) {
    const host::UTF16String root = host::PathUtils::ToNormalizedPath(path);
    if (root.empty()) return;
    mRoots.push_back({root, recursive, allowPolling});
    mWatcher->AddRoot(host::UTF16to8(root));
    WatchRoot(root);
    mClient.OnRootMonitored(root);
}

/// Also a root that nobody has listed announces its changes.
void DirectoryMonitor::WatchRoot(const host::UTF16String& root) {
    const std::string path = host::UTF16to8(root);
    const auto end = mLifetime.Guard([this, root, path, watcher = mWatcher] {
        if (!IsMonitored(root) && !mFollowed.contains(root)) watcher->Unfollow(path);
    });
    GetServices().mWorkerPool->Submit([root, path, watcher = mWatcher, answerWatch = mAnswerWatch, end] {
        {
            const AnswerWatch::Call call(answerWatch, std::make_shared<FolderPath>(root));
            watcher->Follow(path);
        }
        GetServices().mMainThread->Post(end);
    });
}

void DirectoryMonitor::StopMonitoringDirectory(const host::UTF16String& path, bool recursive) {
    const host::UTF16String root = host::PathUtils::ToNormalizedPath(path);
    const auto found = std::ranges::find_if(
        mRoots, [&](const Root& other) { return other.mPath == root && other.mIsRecursive == recursive; });
    if (found == mRoots.end()) return;
    mRoots.erase(found);
    mWatcher->RemoveRoot(host::UTF16to8(root));
    std::vector<host::UTF16String> ended{root};
    for (const auto& [folder, followed] : mFollowed) ended.push_back(folder);
    std::erase_if(ended, [&](const host::UTF16String& folder) { return IsMonitored(folder); });
    for (const host::UTF16String& folder : ended) {
        Forget(folder);
        mClient.OnFollowingEnded(folder);
    }
}

bool DirectoryMonitor::IsMonitored(std::u16string_view folder) const {
    return std::ranges::any_of(mRoots, [&](const Root& root) {
        return root.mIsRecursive ? IsSameOrBelow<std::u16string_view>(folder, root.mPath)
                                 : folder == root.mPath;
    });
}

bool DirectoryMonitor::IsRoot(std::u16string_view folder) const {
    return std::ranges::any_of(mRoots, [&](const Root& root) { return folder == root.mPath; });
}

bool DirectoryMonitor::MayPoll(std::u16string_view folder) const {
    return std::ranges::any_of(mRoots, [&](const Root& root) {
        return root.mMayPoll && IsSameOrBelow<std::u16string_view>(folder, root.mPath);
    });
}

bool DirectoryMonitor::FinishListing(const host::UTF16String& folder, Following following, int systemError) {
    // A folder that cannot be listed now is polled until it can.
    if (systemError != 0) following.mHow = Following::How::Polled;
    if (following.mHow != Following::How::Watched || !IsMonitored(folder))
        mWatcher->Unfollow(host::UTF16to8(folder));
    if (!IsMonitored(folder) || (following.mHow == Following::How::Polled && !MayPoll(folder))) {
        Forget(folder);
        return false;
    }
    Followed& followed = mFollowed[folder];
    followed = {following, systemError, followed.mIsLost && systemError != 0};
    if (following.mHow == Following::How::Polled)
        mPoller.Add(folder);
    else
        mPoller.Remove(folder);
    AnnounceStatus();
    return true;
}

void DirectoryMonitor::FinishPoll(const host::UTF16String& folder, std::chrono::milliseconds duration) {
    mPoller.Finished(folder, duration);
    AnnounceStatus();
}

bool DirectoryMonitor::IsPolled(const host::UTF16String& folder) const {
    const auto found = mFollowed.find(folder);
    return found != mFollowed.end() && found->second.mFollowing.mHow == Following::How::Polled;
}

bool DirectoryMonitor::IsLost(const host::UTF16String& folder) const {
    const auto found = mFollowed.find(folder);
    return found != mFollowed.end() && found->second.mIsLost;
}

void DirectoryMonitor::Forget(const host::UTF16String& folder) {
    mWatcher->Unfollow(host::UTF16to8(folder));
    mPoller.Remove(folder);
    if (mFollowed.erase(folder) != 0) AnnounceStatus();
}

void DirectoryMonitor::Announce(const host::UTF16String& folder) const {
    host::BroadcastMessage(host::kStation_DirectoryChanges, host::DirectoryChangedMessage(folder));
}

void DirectoryMonitor::OnChanges(FolderChanges&& changes) {
    for (auto& [path, change] : changes) {
        const host::UTF16String folder = host::UTF8to16(path);
        if (change.mIsLost) OnLost(folder);
        mClient.OnFolderChanged(folder, std::move(change));
        if (IsMonitored(folder)) Announce(folder);
    }
}

/// Until the folder has been listed again, polling finds out what became of it.
void DirectoryMonitor::OnLost(const host::UTF16String& folder) {
    const auto found = mFollowed.find(folder);
    if (found == mFollowed.end()) return;
    found->second.mIsLost = true;
    found->second.mFollowing = {Following::How::Polled, false};
    if (MayPoll(folder)) mPoller.Add(folder);
    AnnounceStatus();
}

WatchStatus DirectoryMonitor::GetStatus() const {
    WatchStatus status;
    for (const auto& [folder, followed] : mFollowed) {
        ++(followed.mFollowing.mHow == Following::How::Watched ? status.mWatchedFolders
                                                               : status.mPolledFolders);
        status.mLimitReached |= followed.mFollowing.mIsLimit;
        if (IsRoot(folder) || !IsErrorOfFolder(followed.mSystemError))
            status.mSystemError = status.mSystemError != 0 ? status.mSystemError : followed.mSystemError;
    }
    status.mSecondsWithoutAnswer = static_cast<int>(mAnswerWatch->GetSilence().count());
    status.mPollInterval = std::chrono::duration<double>(mPoller.GetInterval()).count();
    return status;
}

void DirectoryMonitor::AnnounceStatus() {
    if (std::exchange(mIsStatusQueued, true)) return;
    GetServices().mMainThread->Post(mLifetime.Guard([this] {
        mIsStatusQueued = false;
        const WatchStatus status = GetStatus();
        if (Compared(status) == Compared(mAnnounced)) return;
        mAnnounced = status;
        host::BroadcastMessage(kStation_WatchStatus, WatchStatusChangedMessage());
    }));
}

WatchStatus GetWatchStatus() {
    FolderStore* store = GetServices().mFolderStore;
    return store ? store->GetMonitor().GetStatus() : WatchStatus();
}

}  // namespace desk

namespace host {

void DirectoryChangeMonitor::MonitorDirectory(const UTF16String& path, bool recursive, bool allowPolling) {
    if (desk::FolderStore* store = desk::GetServices().mFolderStore)
        store->GetMonitor().MonitorDirectory(path, recursive, allowPolling);
}

void DirectoryChangeMonitor::StopMonitoringDirectory(const UTF16String& path, bool recursive) {
    if (desk::FolderStore* store = desk::GetServices().mFolderStore)
        store->GetMonitor().StopMonitoringDirectory(path, recursive);
}

bool DirectoryChangeMonitor::DoesPathRequirePolling(const UTF16String& path) {
    try {
        return !desk::DoesVolumeReportChanges(desk::GetServices().mFileSystem->VolumeType(UTF16to8(path)));
    } catch (const FileException&) {
        return true;
    }
}

DirectoryChangedMessage::DirectoryChangedMessage(UTF16String path) : mPath(std::move(path)) {}

DirectoryChangedMessage::~DirectoryChangedMessage() = default;

}  // namespace host
