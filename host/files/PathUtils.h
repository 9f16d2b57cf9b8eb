#pragma once

#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

/// Paths are absolute and in the host's form: UTF-16, "/" between components.
namespace host::PathUtils {

/// The form under which paths are compared: trailing and doubled separators and "." components are
/// gone, ".." takes its parent away (and nothing from the root). Touches no disk; letter case stays.
/// Empty stays empty. Any thread.
ZUHOST_API UTF16String ToNormalizedPath(const UTF16String& path);

/// `folder`, one separator, `name`. An empty `folder` gives `name`. Any thread.
ZUHOST_API UTF16String CombinePaths(const UTF16String& folder, const UTF16String& name);

/// `path` with exactly one separator at its end; an empty path stays empty. Any thread.
ZUHOST_API UTF16String AddTrailingSlash(const UTF16String& path);

/// `path` without one separator at its end; the root "/" stays. Any thread.
ZUHOST_API UTF16String RemoveTrailingSlash(const UTF16String& path);

/// The last component without its extension (what follows its last "."; a leading "." begins no
/// extension). Any thread.
ZUHOST_API UTF16String GetFilePart(const UTF16String& path);

/// The last component with its extension; empty when the path ends in a separator. Any thread.
ZUHOST_API UTF16String GetFullFilePart(const UTF16String& path);

/// What stands before the last component, with the separator at its end. Any thread.
ZUHOST_API UTF16String GetFullDirectoryPart(const UTF16String& path);

/// A slash. Any thread.
ZUHOST_API char16_t GetPathSeparator();

/// True for a folder (a symbolic link to a folder counts). Answered from fresh facts of a listed
/// folder without touching the disk, else asks the disk: may wait for the volume. False when it
/// cannot be told. UI thread.
ZUHOST_API bool IsDirectory(const UTF16String& path);

/// True when the fresh facts of a listed folder say that a folder stands at `path`. False for what they do not
/// tell; asks nobody and waits for nothing. UI thread.
ZUHOST_API bool IsKnownDirectory(const UTF16String& path);

/// True when something stands at `path`; a symbolic link is followed when `followLink` is set. From
/// fresh facts where there are any, else asks the disk: may wait for the volume. UI thread.
ZUHOST_API bool ExistsOnDisk(const UTF16String& path, bool followLink);

/// What stands at a path; a link to a folder is a folder, any other link a file.
enum class PathKind { Nothing, File, Folder };

/// What stands at each of `paths`, as `IsDirectory` and `ExistsOnDisk` say it of one: what no listed folder
/// tells is asked of the disk, for all of them at once, while the window lives. `Nothing` also where it cannot
/// be told. Throws `FileException` (ECANCELED) when the user does not want to wait for the volume. UI thread.
ZUHOST_API std::vector<PathKind> GetKinds(const UTF16StringVec& paths);

/// The characters that no name of a file or folder may hold, for people. Some volumes refuse more:
/// `GetIllegalPathCharactersDisplay`.
inline constexpr char16_t kIllegalPathCharactersDisplay[] = u"/";

/// True when a file or folder in `folder` may be named `name` (with its extension; a folder's path may be
/// empty, for what holds everywhere). The rules:
/// - nowhere: an empty name, "." and "..", the separator, control characters and line separators, blanks at the
///   end, a lone surrogate that stands for no byte, names that the host keeps for its own hidden files;
/// - at most 255 bytes in UTF-8, for a project 249: its lock file stands beside it (Linux, NAME_MAX);
/// - on vfat, exfat, ntfs and cifs volumes: no `\ : * ? " < > |`, no dot at the end, no name of a device such
/// as
///   "con" or "lpt1", whatever the letter case and extension.
/// Asks the disk for the kind of the volume, and for nothing else; where that is not told, what holds
/// everywhere decides. May wait for the volume, while the window lives. UI thread; throws nothing.
ZUHOST_API bool IsValidFileName(const UTF16String& name, const UTF16String& folder = {});

/// Why a name is not valid, as a sentence for people, localised; empty for a valid one. As `IsValidFileName`.
ZUHOST_API UTF16String DescribeInvalidFileName(const UTF16String& name, const UTF16String& folder = {});

/// `kIllegalPathCharactersDisplay`, and what the volume of `folder` refuses beyond that. As `IsValidFileName`.
ZUHOST_API UTF16String GetIllegalPathCharactersDisplay(const UTF16String& folder);

}  // namespace host::PathUtils
