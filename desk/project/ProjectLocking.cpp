#include "desk/project/ProjectLocking.h"

#include <cerrno>
#include <utility>

#include "desk/core/Services.h"
#include "desk/files/FileSystem.h"
#include "desk/files/FolderPath.h"
#include "desk/project/LockKeeper.h"
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
        const LockStanding standing = mLock->Check();
        if (standing == LockStanding::Unknown)
            throw host::FileException("read lock", host::UTF8to16(mLock->GetPath()), EIO);
        return standing == LockStanding::Lost;
    }

private:
    HeldLockPtr mLock;
};

ProjectLocking Refuse(int systemError) {
    ProjectLocking locking;
    locking.mObstacle = Obstacle::Refused;
    locking.mSystemError = systemError;
    return locking;
}

bool IsThere(const std::string& path) {
    try {
        GetServices().mFileSystem->Status(path, false);
        return true;
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ENOENT && exception.SystemError() != ENOTDIR) throw;
        return false;
    }
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
        locking.mLock = new CreatedLockFile(taking.mLock);
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

ProjectLocking FindLockHolder(const host::UTF16String& path) {
    ProjectLocking locking;
    const auto record = ReadLockRecord(*GetServices().mFileSystem, GetLockPath(path));
    if (!record) {
        locking.mSystemError = ENOENT;
        return locking;
    }
    locking.mObstacle = Obstacle::Held;
    locking.mHolder = *record;
    return locking;
}

ProjectRemains FindRemains(const host::UTF16String& path) {
    if (IsThere(host::UTF16to8(path))) return ProjectRemains::Project;
    return IsThere(host::UTF16to8(host::PathUtils::GetFullDirectoryPart(path))) ? ProjectRemains::Folder
                                                                                : ProjectRemains::Nothing;
}

}  // namespace desk
