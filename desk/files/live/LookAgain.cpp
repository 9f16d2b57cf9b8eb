#include "desk/files/live/LookAgain.h"

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/files/live/DirectoryMonitor.h"
#include "desk/files/live/FolderStore.h"
#include "host/files/PathUtils.h"

namespace desk {

void LookAgainAround(const host::UTF16String& path) {
    FolderStore* store = GetServices().mFolderStore;
    if (!store) return;
    const host::UTF16String folder(FolderOf(host::PathUtils::ToNormalizedPath(path)));
    if (store->GetMonitor().IsPolled(folder)) store->GetMonitor().Announce(folder);
}

}  // namespace desk
