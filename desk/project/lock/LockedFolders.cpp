// Whether folders hold projects that are locked.

#include "desk/core/edges/Services.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/lock/LockHolder.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"

namespace host {

bool DoesDirectoryContainLockedProjects(const UTF16String& folder, bool recursive, bool onlyOthers) {
    return !FindLockedProjectInDirectory(folder, recursive, onlyOthers).empty();
}

UTF16String FindLockedProjectInDirectory(const UTF16String& folder, bool recursive, bool onlyOthers) {
    using desk::LockHolder;
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    if (!store) return {};
    UTF16String found;
    UTF16StringVec unread;
    store->VisitLocks(
        PathUtils::ToNormalizedPath(folder), recursive,
        [&](const UTF16String& path, const desk::ItemFacts& facts) {
            const LockHolder who = desk::FindProjectHolder(path, facts).mWho;
            if (who == LockHolder::NotTold) unread.push_back(path);
            if (who == LockHolder::AnotherProcess || (who == LockHolder::ThisProcess && !onlyOthers))
                found = path;
            return found.empty();
        });
    if (!found.empty() || unread.empty()) return found;
    for (const UTF16String& path : unread) store->FindAndRequest(path);
    return unread.front();
}

}  // namespace host
