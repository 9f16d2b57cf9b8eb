#include "desk/project/TargetedLeftovers.h"

#include <cerrno>
#include <optional>
#include <vector>

#include "desk/core/Log.h"
#include "desk/core/UserNotice.h"
#include "desk/files/FileSystem.h"
#include "desk/files/FolderPath.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

/// What `temporary` belongs to, as the folder is now. Absent when the volume does not tell.
std::optional<std::vector<FolderEntry>> FindTargets(FileSystem& fileSystem, const std::string& folder,
                                                    const TargetedTemporary& temporary) {
    if (!fileSystem.WaitForCaches(folder)) return {};
    std::vector<FolderEntry> entries = fileSystem.ListFolder(folder);
    std::erase_if(entries, [&](const FolderEntry& entry) { return !temporary.IsFor(entry.mName); });
    return entries;
}

void LogRemoval(const std::string& path) {
    Log(LogLevel::Info, "removed what a process left that is gone: " + path);
}

void SweepSave(FileSystem& fileSystem, const std::string& path, const std::vector<FolderEntry>& targets) {
    if (targets.empty()) {
        TellUser(host::ZString(
            "$$$/Desk/Project/TextFound=A save did not come to its end, and its file is not there. Its "
            "text is kept in “@0”.",
            {host::UTF8to16(path)}));
        return;
    }
    fileSystem.RemoveFile(path);
    LogRemoval(path);
}

void RemoveEmptyFolder(FileSystem& fileSystem, const std::string& path) {
    try {
        fileSystem.RemoveFromTree(path, {}, true);
        LogRemoval(path);
    } catch (const host::FileException& exception) {
        const int error = exception.SystemError();
        const bool isNoEmptyFolder =
            error == ENOTEMPTY || error == EEXIST || error == ENOENT || error == ENOTDIR;
        if (!isNoEmptyFolder) throw;
    }
}

void SweepFolderCopy(FileSystem& fileSystem, const std::string& path, const std::vector<FolderEntry>& targets) {
    for (const FolderEntry& target : targets)
        RemoveEmptyFolder(fileSystem, JoinPath<std::string>(FolderOf(path), target.mName));
    RemoveEmptyFolder(fileSystem, path);
}

}  // namespace

void SweepTargeted(FileSystem& fileSystem, const std::string& path, const TargetedTemporary& temporary) {
    try {
        const auto targets = FindTargets(fileSystem, FolderOf(path), temporary);
        if (!targets) return;
        temporary.mPurpose == TemporaryPurpose::Save ? SweepSave(fileSystem, path, *targets)
                                                     : SweepFolderCopy(fileSystem, path, *targets);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
}

}  // namespace desk
