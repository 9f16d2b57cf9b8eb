// What keeps items from being moved: locks of somebody else, in folders by a look at the volume.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/files/search/FolderWalk.h"
#include "desk/project/lock/LockHolder.h"
#include "desk/project/production/ItemOperation.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

/// What keeps a folder where it is: a project in it that somebody else has locked, or a folder in it that
/// cannot be looked through.
struct Obstacle {
    host::UTF16String mName;
    LockRecord mHolder;
    /// An errno value; 0 for a project.
    int mSystemError = 0;
};

/// Asks for listings, and reads the lock files in them; nothing is asked for a project without one. For a
/// worker.
class LockSearch {
public:
    explicit LockSearch(const WorkProgress& progress) : mProgress(progress) {}

    std::optional<Obstacle> Run(const host::UTF16String& root) {
        FolderWalk::Parameters parameters;
        parameters.mRoot = root;
        parameters.mHasLockFiles = true;
        parameters.mIsEntered = [this](const host::UTF16String&) { return !mIsFound; };
        parameters.mVisitor = [this](const auto& folder, const auto& entries) { LookInto(folder, entries); };
        const auto unreadable =
            std::make_shared<FolderWalk>(std::move(parameters), FolderWalk::Completion())->Run(mProgress);
        for (const FolderWalk::UnreadableFolder& folder : unreadable)
            if (!mFound && folder.mSystemError != ENOENT)
                mFound = {host::PathUtils::GetFullFilePart(folder.mPath), {}, folder.mSystemError};
        return mFound;
    }

private:
    void LookInto(const host::UTF16String& folder, const std::vector<FolderEntry>& entries) {
        std::vector<std::string> locks;
        for (const FolderEntry& entry : entries)
            if (IsLockFileName(entry.mName)) locks.push_back(entry.mName);
        RunShared(locks.size(), [&](std::size_t index) {
            if (!mIsFound && !mProgress.IsCancelled()) Read(host::UTF16to8(folder), locks[index]);
        });
    }

    void Read(const std::string& folder, const std::string& name) {
        const auto lock = ReadLockRecord(*GetServices().mFileSystem, JoinPath<std::string>(folder, name));
        if (!lock || !IsHeldElsewhere(*lock)) return;
        const std::lock_guard guard(mMutex);
        if (!mFound) mFound = {GetProjectNameOfLockFile(host::UTF8to16(name)), *lock};
        mIsFound = true;
    }

    const WorkProgress& mProgress;
    std::atomic<bool> mIsFound = false;
    std::mutex mMutex;
    std::optional<Obstacle> mFound;
};

using Obstacles = std::vector<std::optional<Obstacle>>;

/// One for each of `folders`.
Obstacles FindObstacles(const host::UTF16StringVec& folders) {
    if (folders.empty()) return {};
    const auto progress = std::make_shared<WorkProgress>();
    const std::shared_ptr<void> stopAtTheEnd(nullptr, [progress](void*) { progress->Cancel(); });
    const host::UTF16String name = host::PathUtils::GetFullFilePart(folders.front());
    return AskVolume(host::ZString("$$$/Vantor/Desk/Files/Searching=Searching “@0”", {name}), "search",
                     folders.front(), [folders, progress] {
                         Obstacles found;
                         for (const host::UTF16String& folder : folders)
                             found.push_back(LockSearch(*progress).Run(folder));
                         return found;
                     });
}

host::UTF16String DescribeFolder(const host::UTF16String& folder, const Obstacle& obstacle) {
    const host::UTF16String name = host::PathUtils::GetFullFilePart(folder);
    if (obstacle.mSystemError != 0)
        return host::ZString(
            "$$$/Vantor/Desk/Files/UnreadableInside=“@0” was not moved. The folder “@1” cannot be looked through. @2",
            {name, obstacle.mName, DescribeReason({"list folder", folder, obstacle.mSystemError})});
    if (!obstacle.mHolder.mIsReadable)
        return host::ZString(
            "$$$/Vantor/Desk/Files/LockedInsideUnknown=“@0” was not moved. Somebody has “@1” in it open.",
            {name, obstacle.mName});
    return host::ZString("$$$/Vantor/Desk/Files/LockedInside=“@0” was not moved. @2 has “@1” in it open on @3.",
                         {name, obstacle.mName, obstacle.mHolder.mUser, obstacle.mHolder.mMachine});
}

/// Of an item that is no folder.
host::UTF16String FindReasonToStay(const host::UTF16String& path) {
    const host::UTF16String name = host::PathUtils::GetFullFilePart(path);
    if (host::IsInZuProductionTrash(path, true))
        return host::ZString("$$$/Vantor/Desk/Files/InTrash=“@0” was not moved. It is in the trash already.",
                             {name});
    if (!host::IsVantorProjectFile(path)) return {};
    const ProjectHolder holder = FindProjectHolder(path);
    return holder.mWho == LockHolder::AnotherProcess ? DescribeHolder(name, holder.mRecord)
                                                     : host::UTF16String();
}

}  // namespace

}  // namespace desk

namespace host {

UTF16StringVec FindReasonsToStay(const UTF16StringVec& items) {
    UTF16StringVec paths, reasons, folders;
    std::ranges::transform(items, std::back_inserter(paths), PathUtils::ToNormalizedPath);
    std::ranges::transform(paths, std::back_inserter(reasons), desk::FindReasonToStay);
    const std::vector<PathUtils::PathKind> kinds = PathUtils::GetKinds(paths);
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (!reasons[i].empty() || kinds[i] != PathUtils::PathKind::Folder) continue;
        folders.push_back(paths[i]);
        places.push_back(i);
    }
    const desk::Obstacles found = desk::FindObstacles(folders);
    for (std::size_t i = 0; i < folders.size(); ++i)
        if (found[i]) reasons[places[i]] = desk::DescribeFolder(folders[i], *found[i]);
    return reasons;
}

}  // namespace host
