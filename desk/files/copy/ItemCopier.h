#pragma once

#include <string>

#include "desk/core/durable/VolumeMove.h"
#include "host/core/Export.h"

/// Copies and moves of files, symbolic links and whole folders, on workers and without any window: paths are
/// the bytes of the disk, normalised. Nothing is ever replaced, nothing is followed out of what is copied, and
/// a name appears only when what it names is complete: what is made is made under a hidden name
/// (`MakeTemporaryName`) beside the destination, made durable, and then renamed. Whatever fails, and a cancel,
/// removes what was made, unless that may have been published. Each throws `host::FileException` (operation,
/// path, reason): EEXIST when something stands at the destination, ECANCELED when `progress` was cancelled,
/// EINVAL when a folder is to go into itself or is a pipe, device or socket. All wait for the volume. Any
/// worker, several at a time; they use `GetServices()`.
namespace desk {

class FileSystem;
class WorkProgress;

/// Copies what stands at `source` to `destination`, with permissions and times. Of a folder are left out lock
/// files, the host's own hidden files and what network file systems leave behind for open files, and, told in
/// the log, pipes, devices and sockets. The bytes are counted first and added to the total of `progress`, so
/// that one `progress` can serve several copies. Throws `MoveInDoubt` when it is not known whether the copy has
/// got its name.
ZUHOST_API void CopyItem(const std::string& source, const std::string& destination, WorkProgress& progress);

/// What still stands where it was after a move, or may.
struct LeftBehind {
    /// The first such item; empty when there is none.
    std::string mPath;
    /// The volume does not tell whether it is there.
    bool mIsInDoubt = false;
    /// Why it was not removed (an errno value).
    int mSystemError = 0;
};

/// What became of a move that did not throw: all of it stands at its destination.
struct ItemMove {
    bool mIsFolder = false;
    LeftBehind mLeftBehind;
};

/// Moves what stands at `source` to `destination`: on its volume (`MoveOnVolume`), and only where the system
/// says that they are on two (EXDEV) by a copy that takes everything along, lock files too, and is compared and
/// published before anything of the source is removed, item by item, as long as it is what was copied. From the
/// publishing on the copy stays, whatever fails then. Throws with ENOENT when nothing stands at `source`. When
/// it throws, the source stands as it was and nothing stands at `destination` that did not before; but when it
/// is not known whether it was moved, or its copy published: `MoveInDoubt`, with `source` and `destination`.
/// With `FolderFlush::ByCaller` a move on one volume does not flush the two folders.
ZUHOST_API ItemMove MoveItem(const std::string& source, const std::string& destination, WorkProgress& progress,
                             FolderFlush flush = FolderFlush::AtOnce);

/// Removes the folder, file or link `path` with all that is in it; follows no link. Stops at the first item
/// that cannot be removed, and throws.
ZUHOST_API void RemoveTree(const std::string& path);
ZUHOST_API void RemoveTree(FileSystem& fileSystem, const std::string& path);

}  // namespace desk
