#pragma once

#include <string>
#include <string_view>

#include "desk/core/edges/FileSystem.h"
#include "host/core/Export.h"

namespace desk {

/// True for an entry of a folder that the host never shows: what network file systems leave behind for open
/// files (".nfs*", ".fuse_hidden*"), the host's temporary files, lock files, guards and trash records, and
/// folders (links to folders too) that begin with a dot. Hidden project files do show. `name` in the bytes of
/// the disk. Any thread.
ZUHOST_API bool IsHiddenName(std::string_view name, ItemKind kind);

/// The name of the guard of a lock: by the lock's nonce; for a lock whose content is no record, by the lock's
/// name and the content.
ZUHOST_API std::string GetGuardName(std::string_view nonce);
ZUHOST_API std::string GetGuardName(const std::string& lockName, const std::string& content);
ZUHOST_API bool IsGuardName(std::string_view name);

/// True for the names that a sweep looks at: temporary files, guards, locks.
ZUHOST_API bool MayBeLeftover(std::string_view name);

/// The name of the folder that holds the records of a trash folder, beside its items. It is never shown,
/// searched or copied; programs that do not know it hide it as they hide every name that begins with a dot.
inline constexpr std::string_view kTrashRecordsName = ".zurecords";

/// True for the name of a project's lock file (`GetLockFileName`). Any thread.
ZUHOST_API bool IsLockFileName(std::string_view name);

/// Fresh names for hidden temporaries of this process (see TemporaryNames.h): for something that
/// is worth nothing before it has its final name, for the text that is to replace the file `target` of the same
/// folder, for such a text of which the user is told, and for the mark of the folder `target`, which is to be
/// filled by a copy. Any thread.
ZUHOST_API std::string MakeTemporaryName();
ZUHOST_API std::string MakeSaveName(std::string_view target);
ZUHOST_API std::string MakeToldSaveName(std::string_view target);
ZUHOST_API std::string MakeFolderCopyName(std::string_view target);

/// A random 128-bit number as 32 hexadecimal digits in lower case. Any thread.
ZUHOST_API std::string MakeNonce();

}  // namespace desk
