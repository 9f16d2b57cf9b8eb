#pragma once

#include <string>

#include "host/core/Export.h"

namespace desk {

class FileSystem;

/// Locks that this process has given up without having found them where they were (somebody may have moved the
/// folder that they stood in) or having been able to remove them: whoever comes upon one removes it. They are
/// known by the names of their files, which they keep when their folder moves, and by their nonces: the locks
/// of one batch share a nonce. `lockPath` is any path of such a lock (bytes). Any thread.

ZUHOST_API void NoteStrayLock(const std::string& lockPath, const std::string& nonce);
/// True when a lock with this nonce is stray, whatever its name.
ZUHOST_API bool IsStrayNonce(const std::string& nonce);
/// True once somebody has come upon it and removed it.
bool IsStrayLockRemoved(const std::string& lockPath, const std::string& nonce);
/// The lock is held again. False while somebody is removing it.
ZUHOST_API bool ForgetStrayLock(const std::string& lockPath, const std::string& nonce);

/// True for a stray lock, which is then this caller's to remove until `EndStrayRemoval`.
bool BeginStrayRemoval(const std::string& lockPath, const std::string& nonce);
void EndStrayRemoval(const std::string& lockPath, const std::string& nonce, bool isRemoved);

/// Where the lock (or the temporary of one) that stood at `lockPath` (bytes) and bears `nonce` stands now;
/// empty when it is not found. Looks for it when its folder is not there: a folder that was renamed stands
/// beside its old place, with all that is in it. Of the folders there, the first hundreds are looked into,
/// afresh. Waits for the volume: for a worker.
ZUHOST_API std::string FindMovedLock(FileSystem& fileSystem, const std::string& lockPath,
                                     const std::string& nonce);

}  // namespace desk
