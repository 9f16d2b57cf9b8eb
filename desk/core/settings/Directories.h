#pragma once

#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// Gives `host::DirectoryRegistry` the folder of a name, in place of another one; an empty folder takes it
/// back. UI thread.
ZUHOST_API void RegisterDirectory(std::string_view name, const host::UTF16String& folder);

}  // namespace desk
