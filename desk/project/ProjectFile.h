#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "desk/files/FileSystem.h"
#include "desk/project/EditedText.h"
#include "host/core/Export.h"

namespace desk {

class WorkProgress;

/// What a project's file holds, as far as the host has to know: bytes, which are opaque.
struct ProjectContent {
    enum class Kind {
        /// Text that the editor gives back as it is: `mBytes` holds all of it.
        EditableText,
        /// Text that an editor would not give back (`mObstacle`), or too large a one. `mBytes` holds its beginning.
        Text,
        /// Anything else. `mBytes` holds its beginning.
        Binary,
    };
    Kind mKind = Kind::Binary;
    EditedText::Obstacle mObstacle = EditedText::Obstacle::None;
    std::string mBytes;
    /// Size and times of the file when it was read. Together with the bytes they tell whether it is still the
    /// same; inode numbers do not (some volumes change them at will).
    ItemStatus mStatus;
};

/// The largest file that is edited; of anything larger only the beginning is read.
inline constexpr std::size_t kEditableLimit = 4 * 1024 * 1024;
/// How much is read of what is not edited.
inline constexpr std::size_t kBeginningLength = 4096;

/// Where the file of the project at `path` (bytes) really is: `path` without symbolic links at its end. Throws
/// `host::FileException` when nothing stands there (ENOENT), when it is no regular file (EINVAL), when a link
/// leads in circles (ELOOP). May wait for the volume; any thread.
ZUHOST_API std::string FindProjectFile(FileSystem& fileSystem, const std::string& path);

/// Reads the regular file at `path`; once more when it changes meanwhile. Throws `host::FileException`. May wait
/// for the volume; any thread.
ZUHOST_API ProjectContent ReadProjectFile(FileSystem& fileSystem, const std::string& path);

/// True when both are of one state of a file, told by size and time of modification.
inline bool IsSameState(const ItemStatus& a, const ItemStatus& b) {
    return a.mKind == b.mKind && a.mSize == b.mSize && a.mModified == b.mModified;
}

/// What was found where a project's file should be as it was read.
struct FileComparison {
    enum class Outcome {
        Same,
        Changed,
        /// Nothing stands there any more.
        Missing,
    };
    Outcome mOutcome = Outcome::Same;
    /// The file's present state; with `Same` it is `expected`'s from now on, even if only its time has changed.
    ItemStatus mStatus;
};

/// Looks whether the file at `path` still holds `expected`. A file whose size or time differ, but not its bytes,
/// is the same; with `alwaysReads` the bytes of an editable one are compared in any case (times of some volumes
/// are whole seconds). Throws `host::FileException` when the volume does not tell. May wait for the volume; any
/// thread.
ZUHOST_API FileComparison CompareProjectFile(FileSystem& fileSystem, const std::string& path,
                                             const ProjectContent& expected, bool alwaysReads);

}  // namespace desk
