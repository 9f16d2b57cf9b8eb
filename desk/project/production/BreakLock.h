#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "desk/project/lock/LockProtocol.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// A lock of a project, as it stands on the disk.
struct StandingLock {
    std::string mPath;
    LockSnapshot mSeen;
    LockRecord mRecord;
};

/// The lock files that keep the project at `path` (normalised) from being written: its own and, for a symbolic
/// link, that of the file that it leads to (`filePath`, bytes). Of one of which the volume does not tell,
/// `mSeen.mSystemError` says why. Waits for the volume: for a worker.
ZUHOST_API std::vector<StandingLock> FindStandingLocks(const host::UTF16String& path,
                                                       const std::string& filePath);

/// How long to wait before a lock is removed, in place of what its volume asks for; for tests.
using BreakWait = std::optional<std::chrono::milliseconds>;

/// Breaks the lock of somebody else on the project at `path`: reads it anew, shows the user who holds it since
/// when, and, if the user wants it, removes it as `docs/locking.md` says; what came of it is told and logged.
/// The waiting can be cancelled up to the removal. A lock that this process holds is never broken. True when it
/// was broken. UI thread.
ZUHOST_API bool BreakProjectLock(const host::UTF16String& path, const std::string& filePath,
                                 BreakWait wait = {});

}  // namespace desk
