#pragma once

#include <string>
#include <string_view>

#include "host/core/Export.h"

namespace desk {

/// A path (bytes) as a file URI (RFC 8089); every byte that is neither unreserved (RFC 3986) nor a separator is
/// percent-encoded, whether it is text or not. Any thread.
ZUHOST_API std::string MakeFileURI(const std::string& path);

/// The path of a file URI; empty for anything that is no absolute path of this machine. Any thread.
ZUHOST_API std::string ReadFileURI(std::string_view uri);

}  // namespace desk
