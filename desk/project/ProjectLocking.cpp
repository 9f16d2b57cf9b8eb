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

host::UTF16String LockNameOf(const host::UTF16String& path) {
    return GetLockFileName(host::PathUtils::GetFullFilePart(path));
}

std::string LockPathOf(const host::UTF16String& path) {
    return host::UTF16to8(host::PathUtils::GetFullDirectoryPart(path) + LockNameOf(path));
}

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

ProjectLocking TakeOne(const host::UTF16String& path) {
    host::UTF16String user;
    host::UTF16String machine;
    if (!host::GetProjectLockingPrefs(user, machine) || !host::IsVantorProjectFile(path)) return Refuse(EINVAL);
    if (host::UTF16to8(LockNameOf(path)).size() > kLongestName) return Refuse(ENAMETOOLONG);
    const LockKeeper::Taking taking = LockKeeper::Instance().Take(LockPathOf(path), user, machine);
    ProjectLocking locking;
    if (taking.mLock) locking.mLock = host::CreateProjectLockFile(path, user, machine);  // shares it
    if (locking.mLock) return locking;
    locking.mObstacle =
        taking.mResult.mOutcome == LockTaking::Outcome::Held ? Obstacle::Held : Obstacle::Refused;
    locking.mHolder = taking.mResult.mRecord;
    locking.mSystemError = taking.mResult.mSystemError != 0 ? taking.mResult.mSystemError : EAGAIN;
    return locking;
}

}  // namespace

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
    const auto record = ReadLockRecord(*GetServices().mFileSystem, LockPathOf(path));
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
