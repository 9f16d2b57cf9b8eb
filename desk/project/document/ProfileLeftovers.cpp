#include "desk/project/document/ProfileLeftovers.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <vector>

#include "desk/core/durable/CacheWaits.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/TemporaryNames.h"
#include "desk/project/lock/Leftovers.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

using Handler = std::function<void(const std::string& path)>;

/// Nothing keeps names for so long.
constexpr std::chrono::hours kLongestCache(1);

bool IsUnfinishedSave(const TargetedTemporary& temporary) {
    return temporary.IsSave() && temporary.mOwner.IsGone(*GetServices().mDesktop);
}

/// Whether a look at `folder` tells what has been there since the file at `path` was written.
bool IsLookFresh(FileSystem& disk, const std::string& folder, const std::string& path) {
    const ScNoCacheWaits noWaits;
    if (disk.WaitForCaches(folder)) return true;
    const auto now = GetServices().mDesktop->Now().time_since_epoch();
    return now - std::chrono::nanoseconds(disk.Status(path, false).mModified) > kLongestCache;
}

void Settle(const std::string& folder, const std::string& path, bool hasFile, const Handler& handleRest) {
    FileSystem& disk = *GetServices().mFileSystem;
    try {
        if (!hasFile && handleRest) return handleRest(path);
        if (!hasFile || !IsLookFresh(disk, folder, path)) return;
        disk.RemoveFile(path);
        LogRemovalOfLeftover(path);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
}

}  // namespace

void SweepUnfinishedSaves(const std::string& folder, const Handler& handleRest) {
    try {
        const std::vector<FolderEntry> entries = GetServices().mFileSystem->ListFolder(folder);
        for (const FolderEntry& entry : entries) {
            const auto temporary = ParseTargetedTemporary(entry.mName);
            if (!temporary || !IsUnfinishedSave(*temporary)) continue;
            const bool hasFile = std::ranges::any_of(
                entries, [&](const FolderEntry& other) { return temporary->IsFor(other.mName); });
            Settle(folder, folder + '/' + entry.mName, hasFile, handleRest);
        }
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ENOENT) Log(LogLevel::Info, exception.what());
    }
}

}  // namespace desk
