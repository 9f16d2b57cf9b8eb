// Whether folders hold projects that are locked.

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/LockRecord.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/lock/LockKeeper.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectLockFile.h"

namespace desk {

namespace {

/// Judges locks by what the folder store knows of them.
class LockJudge {
public:
    explicit LockJudge(bool onlyOthers) : mOnlyOthers(onlyOthers) {
        host::GetProjectLockingPrefs(mUser, mMachine);
    }

    /// True when the project's lock is held by somebody who counts.
    bool Counts(const host::UTF16String& project, const ItemFacts& facts) const {
        if (IsHeldHere(project)) return !mOnlyOthers;
        if (!facts.mLock) return true;
        const LockRecord& lock = *facts.mLock;
        if (IsLockStale(lock, *GetServices().mDesktop)) return false;
        if (!lock.mIsReadable) return true;
        if (LockKeeper::Instance().HasGivenUp(lock)) return false;
        return !mOnlyOthers || lock.mUser != mUser || lock.mMachine != mMachine;
    }

private:
    static bool IsHeldHere(const host::UTF16String& project) {
        const LockKeeper& keeper = LockKeeper::Instance();
        if (!keeper.HoldsAny()) return false;
        const HeldLockPtr held = keeper.Find(GetLockPath(project));
        return held && !held->IsLost();
    }

    bool mOnlyOthers;
    host::UTF16String mUser;
    host::UTF16String mMachine;
};

}  // namespace

}  // namespace desk

namespace host {

bool DoesDirectoryContainLockedProjects(const UTF16String& folder, bool recursive, bool onlyOthers) {
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    if (!store) return false;
    const desk::LockJudge judge(onlyOthers);
    bool isFound = false;
    UTF16StringVec unread;
    store->VisitLocks(PathUtils::ToNormalizedPath(folder), recursive,
                      [&](const UTF16String& path, const desk::ItemFacts& facts) {
                          if (!judge.Counts(path, facts)) return true;
                          if (!facts.mLock) unread.push_back(path);
                          isFound = facts.mLock != nullptr;
                          return !isFound;
                      });
    if (!isFound)
        for (const UTF16String& path : unread) store->FindAndRequest(path);
    return isFound || !unread.empty();
}

}  // namespace host
