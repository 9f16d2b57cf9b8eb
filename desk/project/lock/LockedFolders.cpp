// Whether folders hold projects that are locked.

#include "desk/core/edges/Services.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/lock/LockHolder.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"

namespace host {

bool DoesDirectoryContainLockedProjects(const UTF16String& folder, bool recursive, bool onlyOthers) {
    using desk::LockHolder;
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    if (!store) return false;
    bool isFound = false;
    UTF16StringVec unread;
    store->VisitLocks(PathUtils::ToNormalizedPath(folder), recursive,
                      [&](const UTF16String& path, const desk::ItemFacts& facts) {
                          const LockHolder who = desk::FindProjectHolder(path, facts).mWho;
                          if (who == LockHolder::NotTold) unread.push_back(path);
                          isFound = who == LockHolder::AnotherProcess ||
                                    (who == LockHolder::ThisProcess && !onlyOthers);
                          return !isFound;
                      });
    if (!isFound)
        for (const UTF16String& path : unread) store->FindAndRequest(path);
    return isFound || !unread.empty();
}

}  // namespace host
