#include "host/project/ProductionTrash.h"

#include "desk/project/production/Production.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace host {

const UTF16String& GetZuProductionTrashDirectoryDisplayName() {
    static const UTF16String kName = ZString("$$$/Vantor/Desk/Project/TrashName=Trash");
    return kName;
}

UTF16String GetZuProductionTrashDirectoryPath() {
    const UTF16String& folder = desk::Production::Instance().GetFolder();
    if (folder.empty()) return {};
    return PathUtils::CombinePaths(folder, UTF8to16(desk::kTrashFolderName));
}

bool IsTheZuProductionTrashDirectory(const UTF16String& path) {
    return !path.empty() && PathUtils::ToNormalizedPath(path) == GetZuProductionTrashDirectoryPath();
}

bool IsInZuProductionTrash(const UTF16String& path, bool includeTrashFolder) {
    const UTF16String trash = GetZuProductionTrashDirectoryPath();
    if (trash.empty()) return false;
    const UTF16String normalized = PathUtils::ToNormalizedPath(path);
    if (!normalized.starts_with(trash)) return false;
    return normalized.size() == trash.size() ? includeTrashFolder : normalized[trash.size()] == u'/';
}

}  // namespace host
