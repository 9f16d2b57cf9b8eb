#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// Has the folder in which `path` stands looked at now where its volume does not report changes: for what this
/// process has made, moved or removed there. Elsewhere the volume reports it. UI thread.
ZUHOST_API void LookAgainAround(const host::UTF16String& path);

}  // namespace desk
