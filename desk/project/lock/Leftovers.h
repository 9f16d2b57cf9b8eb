#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "desk/core/names/TemporaryNames.h"
#include "desk/project/lock/HollowLocks.h"
#include "host/core/Export.h"

namespace desk {

class Desktop;
class FileSystem;

/// Writes to the log that what a process that is gone had left at `path` (bytes) has been removed. Any thread.
void LogRemovalOfLeftover(const std::string& path);

/// Removes the temporary files, guards and locks in `folder` (bytes) whose processes are known to be gone,
/// which can only be processes of this machine, and stray locks of this process; nobody else's. What cannot be
/// removed stays, and so does what belongs to another name and is still of use (`SweepTargeted`). Writes what
/// it does to the log. Of all that is in the folder, or of `names` in it. Returns what is to be given to
/// `SweepHollowLock` after the time of `FindTimeToBreak`. Waits for the volume: for a worker.
ZUHOST_API std::vector<HollowLock> SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop,
                                                  const std::string& folder);
ZUHOST_API std::vector<HollowLock> SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop,
                                                  const std::string& folder,
                                                  const std::vector<std::string>& names);
/// All of that on workers: of all that is in `folder`, or of `names` in it. Any thread.
void SweepFolderInBackground(const std::string& folder);
ZUHOST_API void SweepInBackground(const std::string& folder, std::vector<std::string> names);
/// The same for an attempt of this process that is over and has left its temporary, in the folder in which that
/// stands now: somebody may have renamed it (`FindMovedLock`). Its lock counts as stray. Any thread.
void SweepAttempt(const LockRemains& attempt);

}  // namespace desk
