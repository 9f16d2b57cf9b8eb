#include "desk/files/live/FolderWatcher.h"

#include <sys/inotify.h>

#include <algorithm>
#include <cerrno>

#include "desk/core/durable/VolumeProperties.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "host/files/FileException.h"

namespace desk {

FolderWatcher::FolderWatcher(std::unique_ptr<ChangeSource> source, std::shared_ptr<ChangeCollector> collector)
    : mCollector(std::move(collector)), mSource(std::move(source)) {
    mSource->Start([this](const std::vector<ChangeSource::Event>& events) { Receive(events); });
}

FolderWatcher::~FolderWatcher() {
    Stop();
}

void FolderWatcher::Stop() {
    mSource->Stop();
}

void FolderWatcher::AddRoot(const std::string& root) {
    const std::lock_guard lock(mMutex);
    mRoots.push_back({root, {}});
}

void FolderWatcher::RemoveRoot(const std::string& root) {
    const std::lock_guard lock(mMutex);
    const auto found = std::ranges::find(mRoots, root, &Root::mPath);
    if (found != mRoots.end()) mRoots.erase(found);
}

/// The root of a production that is polled speaks for all that is below it; below a local one, another volume
/// may be mounted.
bool FolderWatcher::MustPoll(const std::string& folder) {
    const auto isAbove = [&](const Root& root) { return IsSameOrBelow(folder, root.mPath); };
    {
        const std::lock_guard lock(mMutex);
        const auto root = std::ranges::find_if(mRoots, isAbove);
        if (root != mRoots.end() && root->mIsPolled.value_or(false)) return true;
    }
    bool mustPoll = true;
    try {
        mustPoll = !DoesVolumeReportChanges(GetServices().mFileSystem->VolumeType(folder));
    } catch (const host::FileException&) {
        return true;
    }
    const std::lock_guard lock(mMutex);
    const auto root = std::ranges::find(mRoots, folder, &Root::mPath);
    if (root != mRoots.end()) root->mIsPolled = mustPoll;
    return mustPoll;
}

Following FolderWatcher::Follow(const std::string& folder) {
    if (MustPoll(folder)) {
        Unfollow(folder);
        return {Following::How::Polled, false};
    }
    {
        const std::lock_guard lock(mMutex);
        ++mBeginning;
    }
    // May wait for the volume: nobody may wait for this meanwhile.
    const int watch = mSource->Add(folder);
    FolderChanges early;
    {
        const std::lock_guard lock(mMutex);
        if (watch >= 0) TakeWatch(folder, watch, early);
        if (--mBeginning == 0) mEarly.clear();
    }
    mCollector->Add(std::move(early));
    if (watch >= 0) return {Following::How::Watched, false};
    return {Following::How::Polled, watch == -ENOSPC || watch == -EMFILE || watch == -ENOMEM};
}

/// Also takes what the watch told before its path was known.
void FolderWatcher::TakeWatch(const std::string& folder, int watch, FolderChanges& changes) {
    const auto known = mWatches.find(folder);
    if (known != mWatches.end() && known->second == watch) return;
    FolderChanges ignored;
    if (known != mWatches.end()) LosePath(known, ignored);
    mWatches.emplace(folder, watch);
    mPaths[watch].push_back(folder);
    for (const ChangeSource::Event& event : mEarly)
        if (event.mWatch == watch) ReceiveEvent(event, changes);
}

void FolderWatcher::Unfollow(const std::string& folder) {
    const std::lock_guard lock(mMutex);
    const auto found = mWatches.find(folder);
    if (found == mWatches.end()) return;
    FolderChanges ignored;
    LosePath(found, ignored);
}

void FolderWatcher::Receive(const std::vector<ChangeSource::Event>& events) {
    FolderChanges changes;
    {
        const std::lock_guard lock(mMutex);
        for (const ChangeSource::Event& event : events) {
            if (mBeginning > 0 && !mPaths.contains(event.mWatch)) mEarly.push_back(event);
            ReceiveEvent(event, changes);
        }
    }
    mCollector->Add(std::move(changes));
}

void FolderWatcher::ReceiveEvent(const ChangeSource::Event& event, FolderChanges& changes) {
    if ((event.mMask & IN_Q_OVERFLOW) != 0) {
        for (const auto& [folder, watch] : mWatches) changes[folder].AddWhole();
        return;
    }
    if ((event.mMask & (IN_IGNORED | IN_UNMOUNT | IN_DELETE_SELF | IN_MOVE_SELF)) != 0)
        return Lose(event.mWatch, changes);
    const auto paths = mPaths.find(event.mWatch);
    if (paths == mPaths.end() || event.mName.empty()) return;
    // Copies: what is lost below a folder may be a watch of that folder too.
    for (const std::string& folder : std::vector<std::string>(paths->second)) {
        FolderChange& change = changes[folder];
        if (!change.mIsWhole) change.Add(host::UTF8to16(event.mName));
        // What stood at the path of a folder that came or went is another folder, or has another path.
        if ((event.mMask & IN_ISDIR) != 0 && (event.mMask & (IN_CREATE | IN_MOVED_FROM | IN_MOVED_TO)) != 0)
            LoseBelow(JoinPath(folder, event.mName), changes);
    }
}

void FolderWatcher::Lose(int watch, FolderChanges& changes) {
    const auto paths = mPaths.find(watch);
    if (paths == mPaths.end()) return;
    for (const std::string& folder : std::vector<std::string>(paths->second)) LoseBelow(folder, changes);
}

/// Folders that moved have other paths now, with all below them.
void FolderWatcher::LoseBelow(const std::string& folder, FolderChanges& changes) {
    for (auto path = mWatches.lower_bound(folder); path != mWatches.end() && path->first.starts_with(folder);) {
        const auto next = std::next(path);
        if (IsSameOrBelow(path->first, folder)) LosePath(path, changes);
        path = next;
    }
}

void FolderWatcher::LosePath(std::map<std::string, int>::iterator path, FolderChanges& changes) {
    FolderChange& change = changes[path->first];
    change.AddWhole();
    change.mIsLost = true;
    const auto paths = mPaths.find(path->second);
    std::erase(paths->second, path->first);
    if (paths->second.empty()) {
        mSource->Remove(path->second);
        mPaths.erase(paths);
    }
    mWatches.erase(path);
}

}  // namespace desk
