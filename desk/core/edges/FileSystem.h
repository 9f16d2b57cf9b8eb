#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/core/Export.h"

namespace desk {

enum class ItemKind : std::uint8_t { Unknown, File, Folder, Link, Other };

struct FolderEntry {
    std::string mName;
    /// From the directory entry's type; `Unknown` where the volume does not tell.
    ItemKind mKind = ItemKind::Unknown;
};

struct ItemStatus {
    ItemKind mKind = ItemKind::Unknown;
    std::uint64_t mSize = 0;
    /// Nanoseconds since the epoch.
    std::int64_t mModified = 0;
    /// Absent where the volume does not record births.
    std::optional<std::int64_t> mCreated;
    /// Permission bits (07777).
    unsigned mMode = 0;
    /// Some volumes make it up anew for every look.
    std::uint64_t mInode = 0;
};

/// A time of a status in whole seconds since the epoch.
inline std::int64_t ToSeconds(std::int64_t nanoseconds) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    const std::int64_t seconds = nanoseconds / kSecond;
    return nanoseconds % kSecond < 0 ? seconds - 1 : seconds;
}

/// True when both are of one kind, size and time of modification.
inline bool IsUnchanged(const ItemStatus& before, const ItemStatus& now) {
    // A folder's size tells nothing that its time does not, and differs from volume to volume.
    return before.mKind == now.mKind && before.mModified == now.mModified &&
           (before.mKind == ItemKind::Folder || before.mSize == now.mSize);
}

/// Told while a file is copied: the bytes copied since the last call. False stops the copy.
using CopyStep = std::function<bool(std::uint64_t bytes)>;

/// The edge to the disk. Paths are byte strings as the kernel takes them. Every operation may wait for the
/// volume and throws `host::FileException` (operation, path, errno) when it fails. Any thread.
class ZUHOST_API FileSystem {
public:
    virtual ~FileSystem() = default;

    /// The entries of a folder but for "." and "..", in the volume's order. Asks for nothing beyond the
    /// directory entries themselves.
    virtual std::vector<FolderEntry> ListFolder(const std::string& path) = 0;
    /// Opens a folder as for listing, and closes it: throws as `ListFolder` would, at none of its cost.
    virtual void TryFolder(const std::string& path) = 0;
    /// What stands at `path` (statx); with `followLink` a symbolic link is followed, else it is a `Link`.
    virtual ItemStatus Status(const std::string& path, bool followLink) = 0;
    /// The whole of a regular file of at most `limit` bytes: never blocks on a pipe or device, never follows
    /// a link at `path`. Throws with EFBIG for a larger file, ELOOP for a link, EINVAL for anything that is no
    /// regular file.
    virtual std::string ReadSmallFile(const std::string& path, std::size_t limit) = 0;
    /// Adds to the end of a file, making it (mode 0600) when there is none.
    virtual void AppendToFile(const std::string& path, const std::string& bytes) = 0;
    /// Makes a new file with this content and mode: O_EXCL, write loop, fsync, checked close, size check.
    /// Throws with EEXIST when something stands at `path`. When a later step fails, what was made is removed.
    virtual void CreateNewFile(const std::string& path, const std::string& bytes, unsigned mode) = 0;
    /// Gives the file at `from` the second name `to` in one atomic step (link(2)); follows no symbolic link.
    /// Throws with EEXIST when something stands at `to`; for a volume without links see `HasNoLinks`.
    virtual void Link(const std::string& from, const std::string& to) = 0;
    /// Removes anything but a folder (unlink(2)).
    virtual void RemoveFile(const std::string& path) = 0;
    /// Makes a folder with this mode, less what the process's umask takes away.
    virtual void CreateFolder(const std::string& path, unsigned mode = 0777) = 0;
    /// Renames a file, link or folder in one step that replaces nothing (renameat2(2) with RENAME_NOREPLACE):
    /// throws with EEXIST when something stands at `to`, EXDEV when that is on another volume, and EINVAL,
    /// ENOSYS or EOPNOTSUPP where the volume has no such rename (EINVAL also for a folder that is to go into
    /// itself). Its reply can be lost: `MoveOnVolume` is what moves.
    virtual void RenameNoReplace(const std::string& from, const std::string& to) = 0;
    /// Renames a file, link or folder (rename(2)) in one step. A file or link at `to` is replaced, an empty
    /// folder by a folder; throws with ENOTEMPTY or EEXIST for any other folder. Its reply can be lost.
    virtual void Rename(const std::string& from, const std::string& to) = 0;

    /// Copies the regular file `from` to the new file `to`: O_EXCL, with the content shared where the volume
    /// can (FICLONE), copied by the system where it can (copy_file_range(2)), else read and written; then
    /// permissions (without set-user-ID and set-group-ID) and times of the source, flushed when `isFlushed`,
    /// checked close, size check. Follows no link at either end and never blocks on a pipe or device; holes
    /// stay holes. Returns the status of what was copied. Throws with EEXIST when something stands at `to`,
    /// EINVAL when `from` is no regular file, EBUSY when it changed meanwhile, ECANCELED when `step` said
    /// false. When it fails, what was made is removed.
    virtual ItemStatus CopyFile(const std::string& from, const std::string& to, bool isFlushed,
                                const CopyStep& step) = 0;
    /// Makes at `to` a symbolic link like the one at `from`, with its times; follows neither. Throws with
    /// EEXIST when something stands at `to`, EINVAL when `from` is no link.
    virtual void CopyLink(const std::string& from, const std::string& to) = 0;
    /// Gives the folder `to` the permissions and times of the folder `from`: the last step of its copy. A
    /// volume that cannot keep them is no failure.
    virtual void CopyFolderAttributes(const std::string& from, const std::string& to) = 0;
    /// Removes what stands at `below` (relative; empty for `root` itself) in the folder `root`: a folder (which
    /// must be empty) when `isFolder`, else anything but a folder. No symbolic link on the way from `root` on
    /// is followed, so that nobody who changes the tree meanwhile can lead a removal out of it: ELOOP or
    /// ENOTDIR.
    virtual void RemoveFromTree(const std::string& root, const std::string& below, bool isFolder) = 0;
    /// Throws as the removal of an item of this folder would where permissions or a volume that is read-only
    /// forbid it.
    virtual void TryToChangeFolder(const std::string& path) = 0;
    /// Lets the owner list and change the folder `path` (mode u+rwx), so that what is in it can be removed.
    /// Follows no link.
    virtual void MakeFolderChangeable(const std::string& path) = 0;
    /// Makes what was created, renamed and removed in a folder durable (fsync(2)). A volume whose folders
    /// cannot be flushed has nothing to flush.
    virtual void FlushFolder(const std::string& path) = 0;
    /// Makes everything written so far to the volume that holds `path` durable (syncfs(2)). Only for volumes of
    /// this machine: others take it for their own caches alone.
    virtual void FlushVolume(const std::string& path) = 0;

    /// `path` without any symbolic link in it (realpath(3)). Throws with ENOENT when a link leads nowhere,
    /// ELOOP when links lead in circles.
    virtual std::string ResolveLinks(const std::string& path) = 0;
    /// The file system's type number (statfs(2) f_type) of the volume that holds `path`.
    virtual long VolumeType(const std::string& path) = 0;
    /// Waits until this machine has forgotten the names and attributes that it knew of the volume of `path`
    /// when this was called: for as long as the mount says that they are kept (`FindCacheTime`), which is not
    /// at all on a volume of this machine. False, after five seconds, when they are kept longer. Never throws.
    virtual bool WaitForCaches(const std::string& path) noexcept = 0;
};

}  // namespace desk
