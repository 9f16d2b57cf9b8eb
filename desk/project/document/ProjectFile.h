#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/core/edges/FileSystem.h"
#include "desk/project/document/EditedText.h"
#include "host/core/Export.h"
#include "host/files/FileException.h"

namespace desk {

/// What a project's file holds, as far as the host has to know: bytes, which are opaque.
struct ProjectContent {
    enum class Kind {
        /// Text that an editor gives back as it is: `mBytes` holds all of it. The other kinds are not kept.
        EditableText,
        /// Text that an editor would not give back, for the reason `mObstacle`.
        Text,
        /// Something else.
        Binary,
        /// More than `kEditableLimit` bytes, which nobody has looked at.
        Large,
    };
    Kind mKind = Kind::Binary;
    EditedText::Obstacle mObstacle = EditedText::Obstacle::None;
    std::string mBytes;
    /// Size, times and mode of the file when it was read. Size and times, together with the bytes, tell whether
    /// it is still the same; inode numbers do not (some volumes change them at will).
    ItemStatus mStatus;
    /// What saves have written since, of which it is not known whether they came through: the file may hold one
    /// of these in place of `mBytes`.
    std::vector<std::string> mMayHold{};
};

using ProjectContentPtr = std::shared_ptr<const ProjectContent>;

/// The largest file that is read.
inline constexpr std::size_t kEditableLimit = 4 * 1024 * 1024;

/// Where a project's file really is.
struct ProjectFilePlace {
    /// In bytes.
    std::string mPath;
    /// The project's path is a symbolic link to it.
    bool mIsLink = false;
    /// Without any symbolic link: another path than `mPath` where a folder on the way is one.
    std::string mRealPath;
};

/// Follows the project's path (bytes) to a regular file. Throws `host::FileException` when nothing stands there
/// (ENOENT), when it is no regular file (EINVAL), when links lead in circles (ELOOP). May wait for the volume;
/// any thread.
ZUHOST_API ProjectFilePlace FindProjectFile(FileSystem& fileSystem, const std::string& path);

/// Reads the regular file at `path`; again when it changes meanwhile. Throws `host::FileException`. May wait
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
    /// The file's present state.
    ItemStatus mStatus;
};

/// Looks whether the file at `path` still holds `expected`, or what it may hold. A file whose size or time
/// differ, but not its bytes, is the same; with `alwaysReads` the bytes of an editable one are compared in any
/// case (times of some volumes are whole seconds). Throws `host::FileException` when the volume does not tell.
/// May wait for the volume; any thread.
ZUHOST_API FileComparison CompareProjectFile(FileSystem& fileSystem, const std::string& path,
                                             const ProjectContent& expected, bool alwaysReads);

/// What came of writing a project's file.
struct FileWriting {
    enum class Outcome {
        Written,
        /// The file is not what was expected (`mFound`); nothing was written.
        Differs,
        /// Nothing was written, for the reason `mError`.
        Failed,
        /// The volume has not told, for the reason `mError`, whether the bytes stand in the file now.
        MayBeWritten,
    };
    Outcome mOutcome = Outcome::Failed;
    FileComparison mFound;
    /// The file's state after it was written, as far as the volume tells.
    ItemStatus mStatus;
    std::optional<host::FileException> mError;
    /// Where the bytes may lie in place of the file (`FileReplacement::mKept`).
    std::string mKept;
};

/// Replaces the file at `path` by `bytes` (`ReplaceFile`), if it still is what was `expected`, or what the user
/// has agreed to overwrite (`approved`: what an earlier attempt found). A file that is gone is made with the
/// mode that it had. Throws nothing. May wait for the volume; any thread.
ZUHOST_API FileWriting WriteProjectFile(FileSystem& fileSystem, const std::string& path,
                                        const std::string& bytes, const ProjectContent& expected,
                                        const std::optional<FileComparison>& approved);

}  // namespace desk
