#pragma once

#include <string>

#include "host/core/Export.h"

/// Copies and moves of files, symbolic links and whole folders, on workers and without any window: paths are
/// the bytes of the disk, normalised. Nothing is ever replaced, nothing is followed out of what is copied, and
/// a name appears only when what it names is complete: what is made is made under a hidden name
/// (`MakeTemporaryName`) beside the destination, made durable, and then renamed. Whatever fails, and a cancel,
/// removes what was made. Each throws `host::FileException` (operation, path, reason): EEXIST when something
/// stands at the destination, ECANCELED when `progress` was cancelled, EINVAL when a folder is to go into
/// itself or is a pipe, device or socket. All wait for the volume. Any worker, several at a time; they use
/// `GetServices()`.
namespace desk {

class FileSystem;
class WorkProgress;

/// Copies what stands at `source` to `destination`, with permissions and times. Of a folder are left out lock
/// files, the host's own hidden files and what network file systems leave behind for open files, and, told in
/// the log, pipes, devices and sockets. The bytes are counted first and added to the total of `progress`, so
/// that one `progress` can serve several copies.
ZUHOST_API void CopyItem(const std::string& source, const std::string& destination, WorkProgress& progress);

/// What became of a move that did not throw.
struct ItemMove {
    bool mIsFolder = false;
    /// Not empty when items at `source` could not be removed after their copies were complete, or had changed
    /// meanwhile: the first of them, and why (an errno value).
    std::string mLeftBehind;
    int mSystemError = 0;
};

/// Moves what stands at `source` to `destination`: by a rename (`MoveOnVolume`), and only where the system says
/// that they are on two volumes (EXDEV) by a copy that takes everything along, lock files too, is compared and
/// published, and whose source is then removed item by item, as long as it is what was copied. Throws with
/// ENOENT when nothing stands at `source`. When it throws, the source stands as it was and nothing stands at
/// `destination` that did not before.
ZUHOST_API ItemMove MoveItem(const std::string& source, const std::string& destination, WorkProgress& progress);

/// Renames what stands at `from` to `to` on one volume, without replacing. Looks after an error: when `from` is
/// gone and what stands at `to` has its kind and size, the move was done and only the reply was lost. Then
/// makes it durable; what cannot be flushed has moved nevertheless, and the log says so.
ZUHOST_API void MoveOnVolume(const std::string& from, const std::string& to);

/// Removes the folder, file or link `path` with all that is in it; follows no link. Stops at the first item
/// that cannot be removed, and throws.
ZUHOST_API void RemoveTree(const std::string& path);
ZUHOST_API void RemoveTree(FileSystem& fileSystem, const std::string& path);

}  // namespace desk
