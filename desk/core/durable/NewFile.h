#pragma once

#include <string>

#include "host/core/Export.h"

/// Files that are new, and have their names only when they are complete: each is written and flushed under a
/// hidden name (`MakeTemporaryName`) beside its place and then renamed. Paths are bytes of the disk. Each
/// throws `host::FileException`; then nothing is left of what was begun, unless it stands complete (its reply
/// was lost). All wait for the volume. Any thread.
namespace desk {

class FileSystem;

/// Makes the file `path` with this content and mode, without replacing (`MoveOnVolume`), and makes it durable.
/// Throws with EEXIST when something stands there, and `MoveInDoubt` when it is not known whether the file
/// stands there or will survive a loss of power. Uses `GetServices()`.
ZUHOST_API void MakeNewFile(const std::string& path, const std::string& bytes, unsigned mode);

/// Makes the folder `path`, for which a look has found the place free: what stands there after a reply was lost
/// is taken for it. Throws with EEXIST when something stands there before, and `MoveInDoubt` when the volume
/// does not tell whether the folder was made. Uses `GetServices()`.
ZUHOST_API void MakeNewFolder(const std::string& path);

/// The same as `MakeNewFile` for a name that nobody else can have chosen (`MakeNonce`). Its content is durable,
/// its name not yet: for many that are made in a row. Throws `MoveInDoubt` when it is not known whether the
/// file stands there.
ZUHOST_API void MakeFileOfOwnName(FileSystem& fileSystem, const std::string& path, const std::string& bytes,
                                  unsigned mode);

/// Removes a file of a name that only this process can have made: whatever else is, or has become, of its
/// content is not touched. After `reason`, an error of its making or its rename (errno) that is no refusal,
/// caches may say that it is not there: that is not believed before they have run out. False, and the log says
/// why, when the volume does not remove it.
ZUHOST_API bool RemoveTemporaryFile(FileSystem& fileSystem, const std::string& path, int reason = 0);

/// The permissions of a new file that colleagues are to read as they can the files of other programs: what the
/// process's umask leaves of 0666. Any thread; reads /proc only.
ZUHOST_API unsigned GetModeOfNewFiles();

}  // namespace desk
