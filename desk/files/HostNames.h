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

/// Fresh names for hidden temporaries of this process (see desk/project/TemporaryNames.h): for something that
/// is worth nothing before it has its final name, for the text that is to replace the file `target` of the same
/// folder, and for the mark of the folder `target`, which is to be filled by a copy. Any thread.
ZUHOST_API std::string MakeTemporaryName();
ZUHOST_API std::string MakeSaveName(std::string_view target);
ZUHOST_API std::string MakeFolderCopyName(std::string_view target);

/// A random 128-bit number as 32 hexadecimal digits in lower case. Any thread.
ZUHOST_API std::string MakeNonce();

}  // namespace desk
