#pragma once

#include <optional>
#include <string>
#include <vector>

#include "desk/core/names/TemporaryNames.h"
#include "desk/project/lock/LockProtocol.h"
#include "host/core/Export.h"

namespace desk {

/// A lock or guard that was made and not written to its end, beside the temporary of a process of this machine
/// that was to write it, and is gone (or has given it up). Another machine may be making one at its place just
/// now.
struct HollowLock {
    std::string mPath;
    std::string mTemporary;
    LockSnapshot mSeen;
};

/// Removes the temporary of a lock at `path` (bytes) if it is abandoned and its lock is settled. The lock is
/// among `names`, the locks and guards of its folder; one that is hollow is returned, and the temporary stays,
/// which alone says whose it is. Waits for the volume: for a worker.
std::optional<HollowLock> SweepLockTemporary(FileSystem& fileSystem, const Desktop& desktop,
                                             const std::string& path, const TargetedTemporary& temporary,
                                             const std::vector<std::string>& names);

/// Removes a hollow lock that is as it was seen `FindTimeToBreak` ago, under a guard (`LockProtocol::Break`),
/// and its temporary. Waits for the volume: for a worker.
ZUHOST_API void SweepHollowLock(FileSystem& fileSystem, const Desktop& desktop, const HollowLock& lock);

}  // namespace desk
