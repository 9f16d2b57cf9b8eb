#include "desk/project/document/ProjectLocking.h"

#include <cerrno>
#include <utility>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/project/lock/LockKeeper.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

using Obstacle = ProjectLocking::Obstacle;

constexpr std::size_t kLongestName = 255;

/// A share in a lock that this process holds.
class CreatedLockFile : public host::IProjectLockFile {
public:
    explicit CreatedLockFile(HeldLockPtr lock) : mLock(std::move(lock)) {}
    bool IsLocked() const override { return !mLock->IsLost(); }
    host::UTF16String GetLockOwner() const override { return mLock->GetRecord().mUser; }
    bool IsHeldByReader() const override { return !mLock->IsLost(); }
    bool IsLost() override {
        const LockReport report = mLock->Check();
        if (report.mStanding == LockStanding::Unknown)
            throw host::FileException("read lock", host::UTF8to16(mLock->GetPath()),
                                      report.mSystemError != 0 ? report.mSystemError : EIO);
        return report.mStanding == LockStanding::Lost;
    }
    LockReport Check() { return mLock->Check(); }

private:
    HeldLockPtr mLock;
};

ProjectLocking Refuse(int systemError) {
    ProjectLocking locking;
    locking.mObstacle = Obstacle::Refused;
    locking.mSystemError = systemError;
    return locking;
}

/// For the current user.
ProjectLocking TakeOne(const host::UTF16String& path) {
    host::UTF16String user;
    host::UTF16String machine;
    host::GetProjectLockingPrefs(user, machine);
    return TakeProjectLock(path, user, machine);
}

}  // namespace

ProjectLocking TakeProjectLock(const host::UTF16String& path, const host::UTF16String& user,
                               const host::UTF16String& machine) {
    if (user.empty() || machine.empty() || !host::IsVantorProjectFile(path)) return Refuse(EINVAL);
    if (host::UTF16to8(GetLockFileName(host::PathUtils::GetFullFilePart(path))).size() > kLongestName)
        return Refuse(ENAMETOOLONG);
    const LockKeeper::Taking taking = LockKeeper::Instance().Take(GetLockPath(path), user, machine);
    ProjectLocking locking;
    if (taking.mLock) {
        locking.mLock = MakeLockReference(taking.mLock);
        return locking;
    }
    locking.mObstacle =
        taking.mResult.mOutcome == LockTaking::Outcome::Held ? Obstacle::Held : Obstacle::Refused;
    locking.mHolder = taking.mResult.mRecord;
    locking.mSystemError = taking.mResult.mSystemError != 0 ? taking.mResult.mSystemError : EAGAIN;
    return locking;
}

ProjectLocking TakeProjectLocks(const host::UTF16String& path, const ProjectFilePlace& file) {
    if (!file.mIsLink) return TakeOne(path);
    const host::UTF16String target = host::UTF8to16(file.mPath);
    ProjectLocking locking;
    locking.mObstacle = Obstacle::TargetIsNoProject;
    if (!host::IsVantorProjectFile(target)) return locking;
    ProjectLocking targetLocking = TakeOne(target);
    if (targetLocking.mObstacle != Obstacle::None) return targetLocking;
    locking = TakeOne(path);
    if (locking.mObstacle == Obstacle::None) locking.mTargetLock = targetLocking.mLock;
    return locking;
}

host::ProjectLockFileRef MakeLockReference(const HeldLockPtr& lock) {
    return new CreatedLockFile(lock);
}

LockReport CheckProjectLock(const host::ProjectLockFileRef& lock) {
    if (auto* created = dynamic_cast<CreatedLockFile*>(lock.get())) return created->Check();
    return {LockStanding::Ours, {}, LockReport::Trouble::None, 0};
}

}  // namespace desk
