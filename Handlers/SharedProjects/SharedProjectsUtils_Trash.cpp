// The production's trash: deleting is moving there.
#include "Handlers/SharedProjects/SharedProjectsUtils.h"
#include "host/core/Logging.h"
#include "host/files/Dir.h"
#include "host/files/FileUtils.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"

namespace HandlerSharedProjects::Utils {

namespace {

/// Asks the disk: what was last heard of the production may be older than a trash folder.
bool MakeSureOfFolder(const UTF16String& path) {
    const Dir folder(path);
    if (folder.Exists()) return true;
    try {
        FileUtils::CreateNewDirectory(path);
        return true;
    } catch (const std::exception& exception) {
        if (folder.Exists()) return true;
        LogException(exception, __PRETTY_FUNCTION__);
        return false;
    }
}

bool CanBeDeleted(const UTF16String& path) {
    return !IsInZuProductionTrash(path, true) && !IsALockedProject(path) &&
           !(PathUtils::IsDirectory(path) && DoesDirectoryContainLockedProjects(path, true, true));
}

}  // namespace

void MoveToSharedProjectsTrash(const UTF16StringVec& paths, bool closeWithoutPrompt, bool saveFirst) {
    if (!CloseOpenProjectsInList(paths, closeWithoutPrompt, saveFirst)) return;
    const UTF16String trashFolder = GetZuProductionTrashDirectoryPath();
    if (trashFolder.empty() || !MakeSureOfFolder(trashFolder)) return;
    CopyFiles(paths, trashFolder, true, true);
}

bool CanAllBeDeleted(const UTF16StringVec& paths) {
    return !paths.empty() && std::ranges::all_of(paths, CanBeDeleted);
}

bool IsInTrash(const UTF16String& path, bool includeTrashFolder) {
    return IsInZuProductionTrash(path, includeTrashFolder);
}

}  // namespace HandlerSharedProjects::Utils
