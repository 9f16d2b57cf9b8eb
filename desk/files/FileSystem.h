#pragma once

#include <cstddef>
#include <cstdint>
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
};

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
    /// Replaces `path` whole or not at all: hidden temporary file in the same folder (O_EXCL; mode 0600, or
    /// that of the old file), write loop, fsync, checked close, size check, rename, fsync of the folder. On
    /// failure the temporary is removed and the old file stands (but when only the last step fails: then the
    /// new file stands, and is not known to survive a loss of power).
    virtual void ReplaceFile(const std::string& path, const std::string& bytes) = 0;
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
    virtual void CreateFolder(const std::string& path) = 0;
    /// Renames without replacing; throws with EEXIST when `to` exists.
    virtual void RenameNew(const std::string& from, const std::string& to) = 0;
    /// The file system's type number (statfs(2) f_type) of the volume that holds `path`.
    virtual long VolumeType(const std::string& path) = 0;
};

}  // namespace desk
