#pragma once

#include <string>
#include <string_view>

#include "desk/files/FileSystem.h"
#include "host/core/Export.h"

namespace desk {

/// True for an entry of a folder that the host never shows: what network file systems leave behind for open
/// files (".nfs*", ".fuse_hidden*"), the host's temporary files, lock files, guards and trash records, and
/// folders (links to folders too) that begin with a dot. Hidden project files do show. `name` in the bytes of
/// the disk. Any thread.
ZUHOST_API bool IsHiddenName(std::string_view name, ItemKind kind);

/// A fresh name for a temporary file of this process (`MakeTemporaryName` of desk/project/Leftovers.h). Any
/// thread.
ZUHOST_API std::string MakeTemporaryName();

/// A random 128-bit number as 32 hexadecimal digits in lower case. Any thread.
ZUHOST_API std::string MakeNonce();

}  // namespace desk
