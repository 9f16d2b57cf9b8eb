// Which folders hold projects that somebody else has locked, by a look at the volume.
#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>

#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/project/lock/LockHolder.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"

namespace desk {

namespace {

/// Looks through folders level by level, many at a time, until told to stop. Asks for listings, and reads the
/// lock files in them; nothing is asked for a project without one. For a worker.
class LockSearch {
public:
    using StopFlag = std::shared_ptr<std::atomic<bool>>;

    explicit LockSearch(StopFlag stop) : mStop(std::move(stop)) {}

    bool IsAnyLockedIn(const std::string& folder) {
        mNext = {folder};
        while (!mNext.empty() && !mIsFound) {
            const std::vector<std::string> folders = std::exchange(mNext, {});
            RunShared(folders.size(), [&](std::size_t index) { LookInto(folders[index]); });
        }
        return mIsFound;
    }

private:
    bool IsOver() const { return mIsFound || *mStop; }

    void LookInto(const std::string& folder) {
        if (IsOver()) return;
        std::vector<FolderEntry> entries;
        try {
            entries = GetServices().mFileSystem->ListFolder(folder);
        } catch (const host::FileException& exception) {
            return Log(LogLevel::Info, exception.what());
        }
        std::vector<std::string> locks;
        for (const FolderEntry& entry : entries) Take(JoinPath<std::string>(folder, entry.mName), entry, locks);
        RunShared(locks.size(), [&](std::size_t index) {
            if (!IsOver() && IsOfAnother(locks[index])) mIsFound = true;
        });
    }

    void Take(const std::string& path, const FolderEntry& entry, std::vector<std::string>& locks) {
        if (entry.mName.starts_with('.') && !GetProjectNameOfLockFile(host::UTF8to16(entry.mName)).empty())
            return locks.push_back(path);
        const bool isFolder = ResolveKind(path, entry.mKind) == ItemKind::Folder;
        if (!isFolder || IsHiddenName(entry.mName, ItemKind::Folder)) return;
        const std::lock_guard lock(mMutex);
        mNext.push_back(path);
    }

    static ItemKind ResolveKind(const std::string& path, ItemKind kind) {
        if (kind != ItemKind::Unknown) return kind;
        try {
            return GetServices().mFileSystem->Status(path, false).mKind;
        } catch (const host::FileException&) {
            return ItemKind::Other;
        }
    }

    static bool IsOfAnother(const std::string& lockPath) {
        const std::optional<LockRecord> lock = ReadLockRecord(*GetServices().mFileSystem, lockPath);
        return lock && IsHeldElsewhere(*lock);
    }

    const StopFlag mStop;
    std::mutex mMutex;
    std::vector<std::string> mNext;
    std::atomic<bool> mIsFound = false;
};

}  // namespace

}  // namespace desk

namespace host {

UTF16StringVec FindFoldersWithLockedProjects(const UTF16StringVec& folders) {
    if (folders.empty()) return {};
    const auto stop = std::make_shared<std::atomic<bool>>(false);
    const std::shared_ptr<void> stopAtTheEnd(nullptr, [stop](void*) { *stop = true; });
    const UTF16String name = PathUtils::GetFullFilePart(PathUtils::ToNormalizedPath(folders.front()));
    return desk::AskVolume(
        ZString("$$$/Vantor/Desk/Files/Searching=Searching “@0”", {name}), "search", folders.front(),
        [folders, stop] {
            UTF16StringVec found;
            std::ranges::copy_if(folders, std::back_inserter(found), [&](const auto& folder) {
                return desk::LockSearch(stop).IsAnyLockedIn(UTF16to8(PathUtils::ToNormalizedPath(folder)));
            });
            return found;
        });
}

}  // namespace host
