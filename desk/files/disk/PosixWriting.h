#pragma once

#include <string>
#include <string_view>

/// Steps that the operations of `PosixFileSystem` which write have in common. All return 0 or an errno.
namespace desk {

int WriteAll(int file, std::string_view bytes);
int Flush(int file);
/// Makes what was renamed, created or removed in a folder durable. A volume whose folders cannot be flushed
/// says EINVAL and has nothing to flush.
int FlushFolderAt(const std::string& folder);

}  // namespace desk
