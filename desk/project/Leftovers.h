#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "desk/project/TemporaryNames.h"
#include "host/core/Export.h"

namespace desk {

class Desktop;
class FileSystem;

/// The name of the guard of a lock: by the lock's nonce; for a lock whose content is no record, by the lock's
/// name and the content.
ZUHOST_API std::string GetGuardName(std::string_view nonce);
ZUHOST_API std::string GetGuardName(const std::string& lockName, const std::string& content);
ZUHOST_API bool IsGuardName(std::string_view name);

/// Notes that this process has given up the lock that bears `nonce` without having found it where it was
/// (somebody may have moved the folder that it stood in) or having been able to remove it: a sweep that comes
/// upon it removes it. Any thread.
ZUHOST_API void NoteStrayLock(const std::string& nonce);
/// The lock is held again. False while a sweep is removing it. Any thread.
ZUHOST_API bool TakeBackStrayLock(const std::string& nonce);

/// True for the names that a sweep looks at: temporary files, guards, locks.
ZUHOST_API bool MayBeLeftover(std::string_view name);

/// Removes the temporary files, guards and locks in `folder` (bytes) whose processes are known to be gone,
/// which can only be processes of this machine, and stray locks of this process; nobody else's. What cannot be
/// removed stays, and so does what belongs to another name and is still of use (`SweepTargeted`). Writes what
/// it does to the log. Of all that is in the folder, or of `names` in it. Waits for the volume: for a worker.
ZUHOST_API void SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop, const std::string& folder);
ZUHOST_API void SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop, const std::string& folder,
                               const std::vector<std::string>& names);

}  // namespace desk
