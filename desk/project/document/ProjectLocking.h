#pragma once

#include <string>

#include "desk/project/document/ProjectFile.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/project/lock/LockProtocol.h"
#include "host/core/Export.h"
#include "host/project/ProjectLockFile.h"

namespace desk {

/// The locks with which a project can be edited, or why they could not be had.
struct ProjectLocking {
    /// Why not.
    enum class Obstacle {
        None,
        /// `mHolder` has the lock.
        Held,
        /// For the reason that `mSystemError` names: a folder or volume that cannot be written, a name without
        /// room.
        Refused,
        /// The project is a link to a file whose name is no project's: nobody could lock that.
        TargetIsNoProject,
    };
    Obstacle mObstacle = Obstacle::None;
    host::ProjectLockFileRef mLock;
    /// The lock of the file that a project leads to that is a symbolic link; else empty.
    host::ProjectLockFileRef mTargetLock;
    /// Unreadable when nobody can tell who it is.
    LockRecord mHolder;
    int mSystemError = 0;
};

/// Takes the lock of the project at `path` (normalised) for `user` on `machine`; the reference is what
/// `host::CreateProjectLockFile` gives. Refused before the disk is touched: what is no project's name (EINVAL),
/// a name whose lock file's name would exceed 255 bytes (ENAMETOOLONG), an empty user or machine (EINVAL).
/// Works on workers while the window lives (`RunLongWork`). UI thread.
ZUHOST_API ProjectLocking TakeProjectLock(const host::UTF16String& path, const host::UTF16String& user,
                                          const host::UTF16String& machine);

/// Takes the lock of the project at `path` (normalised), and of the file that it leads to if it is a link, for
/// the current user; all of them or none. Waits like `TakeProjectLock`. UI thread.
ZUHOST_API ProjectLocking TakeProjectLocks(const host::UTF16String& path, const ProjectFilePlace& file);

/// A share in a lock that this process holds. UI thread.
ZUHOST_API host::ProjectLockFileRef MakeLockReference(const HeldLockPtr& lock);

/// What has become of a lock that `TakeProjectLock` has given, as `HeldLock::Check` says; any other reference,
/// and an empty one, is never lost. UI thread.
ZUHOST_API LockReport CheckProjectLock(const host::ProjectLockFileRef& lock);

}  // namespace desk
