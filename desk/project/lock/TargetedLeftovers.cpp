#include "desk/project/lock/TargetedLeftovers.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "desk/core/durable/VolumeMove.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/UniqueNames.h"
#include "desk/project/lock/Leftovers.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

using host::UTF16String;

std::vector<FolderEntry> FindTargets(FileSystem& fileSystem, const std::string& folder,
                                     const TargetedTemporary& temporary) {
    std::vector<FolderEntry> entries = fileSystem.ListFolder(folder);
    std::erase_if(entries, [&](const FolderEntry& entry) { return !temporary.IsFor(entry.mName); });
    return entries;
}

/// No longer text is ever edited, and so left behind: what is longer counts as something else.
constexpr std::size_t kLongestText = 4 * 1024 * 1024;

/// When it was written last, or put in place: a file may be put in place with older times.
std::int64_t LastChange(const ItemStatus& status) {
    return std::max(status.mModified, status.mCreated.value_or(0));
}

/// Whether the text at `path` is worth nothing beside the file at `target`: that has the same content, or is
/// the old file while nobody was told of the text. A look by name proves nothing while it may be an old answer.
bool IsObsolete(FileSystem& fileSystem, const std::string& path, const std::string& target, bool mayBeOlder) {
    const ItemStatus text = fileSystem.Status(path, false);
    const ItemStatus file = fileSystem.Status(target, false);
    if (mayBeOlder && LastChange(file) < LastChange(text)) return true;
    return file.mSize == text.mSize &&
           fileSystem.ReadSmallFile(target, kLongestText) == fileSystem.ReadSmallFile(path, kLongestText);
}

/// `target` is empty when nothing tells for which file the text at `path` was.
UTF16String MoveToVisibleName(FileSystem& fileSystem, const std::string& path, const std::string& target) {
    const UTF16String name =
        target.empty() ? host::ZString("$$$/Desk/Project/TextOfUnknown=Text") + host::GetProjectFileExtension()
                       : host::UTF8to16(target);
    UTF16String visible = MakeCopyPath(host::UTF8to16(FolderOf(path) + '/') + name,
                                       host::ZString("$$$/Desk/Project/RecoveredName=recovered"),
                                       [&](const UTF16String& wanted) { return IsTaken(fileSystem, wanted); });
    MoveOnVolume(fileSystem, path, host::UTF16to8(visible));
    return visible;
}

void SweepSave(FileSystem& fileSystem, const std::string& path, const TargetedTemporary& temporary) {
    const std::string folder = FolderOf(path);
    const bool isLookFresh = fileSystem.WaitForCaches(folder);
    const bool mayBeOlder = isLookFresh && temporary.mPurpose == TemporaryPurpose::Save;
    const std::vector<FolderEntry> targets = FindTargets(fileSystem, folder, temporary);
    const std::string target = targets.empty() ? std::string() : targets.front().mName;
    if (!target.empty() && IsObsolete(fileSystem, path, JoinPath<std::string>(folder, target), mayBeOlder)) {
        fileSystem.RemoveFile(path);
        return LogRemovalOfLeftover(path);
    }
    TellUser(
        host::ZString("$$$/Desk/Project/TextFound=A save did not come to its end. Its text is now in “@0”.",
                      {MoveToVisibleName(fileSystem, path, target)}));
}

void RemoveEmptyFolder(FileSystem& fileSystem, const std::string& path) {
    try {
        fileSystem.RemoveFromTree(path, {}, true);
        LogRemovalOfLeftover(path);
    } catch (const host::FileException& exception) {
        const int error = exception.SystemError();
        const bool isNoEmptyFolder =
            error == ENOTEMPTY || error == EEXIST || error == ENOENT || error == ENOTDIR;
        if (!isNoEmptyFolder) throw;
    }
}

/// The volume removes no folder that holds something, whatever this machine has been told of it.
void SweepFolderCopy(FileSystem& fileSystem, const std::string& path, const TargetedTemporary& temporary) {
    const std::string folder = FolderOf(path);
    std::vector<FolderEntry> targets = FindTargets(fileSystem, folder, temporary);
    if (targets.empty()) {
        if (!fileSystem.WaitForCaches(folder)) return;
        targets = FindTargets(fileSystem, folder, temporary);
    }
    for (const FolderEntry& target : targets)
        RemoveEmptyFolder(fileSystem, JoinPath<std::string>(folder, target.mName));
    RemoveEmptyFolder(fileSystem, path);
}

}  // namespace

void SweepTargeted(FileSystem& fileSystem, const std::string& path, const TargetedTemporary& temporary) {
    try {
        temporary.IsSave() ? SweepSave(fileSystem, path, temporary)
                           : SweepFolderCopy(fileSystem, path, temporary);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
}

}  // namespace desk
