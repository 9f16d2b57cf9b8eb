// Which folders hold projects that somebody else has locked, by a look at the volume.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <iterator>
#include <memory>
#include <optional>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/search/FolderWalk.h"
#include "desk/project/lock/LockHolder.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"

namespace desk {

namespace {

bool IsOfAnother(const std::string& lockPath) {
    const std::optional<LockRecord> lock = ReadLockRecord(*GetServices().mFileSystem, lockPath);
    return lock && IsHeldElsewhere(*lock);
}

/// Asks for listings, and reads the lock files in them; nothing is asked for a project without one. For a
/// worker.
bool MayAnyBeLockedIn(const host::UTF16String& root, const WorkProgress& progress) {
    std::atomic<bool> isFound = false;
    FolderWalk::Parameters parameters;
    parameters.mRoot = root;
    parameters.mHasLockFiles = true;
    parameters.mIsEntered = [&](const host::UTF16String&) { return !isFound; };
    parameters.mVisitor = [&](const host::UTF16String& folder, const std::vector<FolderEntry>& entries) {
        std::vector<std::string> locks;
        for (const FolderEntry& entry : entries)
            if (IsLockFileName(entry.mName))
                locks.push_back(JoinPath<std::string>(host::UTF16to8(folder), entry.mName));
        RunShared(locks.size(), [&](std::size_t index) {
            if (!isFound && !progress.IsCancelled() && IsOfAnother(locks[index])) isFound = true;
        });
    };
    const auto unreadable =
        std::make_shared<FolderWalk>(std::move(parameters), FolderWalk::Completion())->Run(progress);
    return isFound || std::ranges::any_of(unreadable, [](const FolderWalk::UnreadableFolder& folder) {
               return folder.mSystemError != ENOENT;
           });
}

}  // namespace

}  // namespace desk

namespace host {

UTF16StringVec FindFoldersWithLockedProjects(const UTF16StringVec& folders) {
    if (folders.empty()) return {};
    const auto progress = std::make_shared<desk::WorkProgress>();
    const std::shared_ptr<void> stopAtTheEnd(nullptr, [progress](void*) { progress->Cancel(); });
    const UTF16String name = PathUtils::GetFullFilePart(PathUtils::ToNormalizedPath(folders.front()));
    return desk::AskVolume(
        ZString("$$$/Vantor/Desk/Files/Searching=Searching “@0”", {name}), "search", folders.front(),
        [folders, progress] {
            UTF16StringVec found;
            std::ranges::copy_if(folders, std::back_inserter(found), [&](const auto& folder) {
                return desk::MayAnyBeLockedIn(PathUtils::ToNormalizedPath(folder), *progress);
            });
            return found;
        });
}

}  // namespace host
