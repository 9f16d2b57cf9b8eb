#include "desk/project/lock/LockHolder.h"

#include <unistd.h>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/live/KnownFacts.h"
#include "desk/project/lock/LockKeeper.h"
#include "host/project/OpenProjects.h"

namespace desk {

namespace {

bool IsOfThisProcess(const LockRecord& record) {
    return record.mPid == ::getpid() &&
           AreOfOneProcess(record, MakeLockRecord(*GetServices().mDesktop, {}, {}));
}

ProjectHolder Judge(const LockRecord& record) {
    const LockHolder who = FindLockHolder(record);
    // What this process has given up counts as removed.
    const bool isRemoved = who == LockHolder::Nobody && IsOfThisProcess(record);
    return isRemoved ? ProjectHolder() : ProjectHolder{who, record};
}

ProjectHolder JudgeFacts(const ItemFacts& facts) {
    if (!facts.mHasLockFile) return {};
    return facts.mLock ? Judge(*facts.mLock) : ProjectHolder{LockHolder::NotTold, {}};
}

}  // namespace

HeldLockPtr FindHeldLock(const host::UTF16String& path) {
    const LockKeeper& keeper = LockKeeper::Instance();
    if (!keeper.HoldsAny()) return {};
    HeldLockPtr held = keeper.Find(GetLockPath(path));
    // One that was opened through a link is held under that name.
    host::ProjectRef project;
    if (!held && host::IsProjectOpen(path, project)) held = keeper.Find(GetLockPath(project->GetProjectPath()));
    return held && !held->IsLost() ? held : nullptr;
}

bool IsHeldElsewhere(const LockRecord& record, const std::string& heldNonce) {
    if (!record.mIsReadable) return true;
    const bool isOwn = record.mNonce == heldNonce || IsOfThisProcess(record);
    return !isOwn && !IsLockStale(record, *GetServices().mDesktop);
}

LockHolder FindLockHolder(const LockRecord& record) {
    if (record.mIsReadable && LockKeeper::Instance().Holds(record.mNonce)) return LockHolder::ThisProcess;
    return IsHeldElsewhere(record) ? LockHolder::AnotherProcess : LockHolder::Nobody;
}

ProjectHolder FindProjectHolder(const host::UTF16String& path) {
    if (const auto known = FindKnownProjectHolder(path)) return *known;
    const auto record = ReadLockRecord(*GetServices().mFileSystem, GetLockPath(path));
    return record ? Judge(*record) : ProjectHolder();
}

std::optional<ProjectHolder> FindKnownProjectHolder(const host::UTF16String& path) {
    if (const HeldLockPtr held = FindHeldLock(path))
        return ProjectHolder{LockHolder::ThisProcess, held->GetRecord()};
    const KnownItem known = FindKnownItemAndRequest(path);
    if (known.mIsAbsent || known.mIsAwaited) return ProjectHolder();
    return known.mFacts ? std::optional(JudgeFacts(*known.mFacts)) : std::nullopt;
}

ProjectHolder FindProjectHolder(const host::UTF16String& path, const ItemFacts& facts) {
    const HeldLockPtr held = FindHeldLock(path);
    return held ? ProjectHolder{LockHolder::ThisProcess, held->GetRecord()} : JudgeFacts(facts);
}

}  // namespace desk
