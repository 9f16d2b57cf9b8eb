#include "desk/files/LookAgain.h"

#include "desk/core/Services.h"
#include "desk/files/DirectoryMonitor.h"
#include "desk/files/FolderPath.h"
#include "desk/files/FolderStore.h"
#include "host/files/PathUtils.h"

namespace desk {

void LookAgainAround(const host::UTF16String& path) {
    FolderStore* store = GetServices().mFolderStore;
    if (!store) return;
    const host::UTF16String folder(FolderOf(host::PathUtils::ToNormalizedPath(path)));
    if (store->GetMonitor().IsPolled(folder)) store->GetMonitor().Announce(folder);
}

}  // namespace desk
