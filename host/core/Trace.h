#pragma once

#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// Grows by one each time the trace settings change, so that who traces may keep the answer of
/// `TraceEnabled` until then. Any thread.
ZUHOST_API int TraceChangeCount();

/// True when messages of `category` at `level` (0, the most important, to 9) are recorded; `byDefault` where
/// the settings do not name the category. Any thread.
ZUHOST_API bool TraceEnabled(std::string_view category, int level, bool byDefault);

/// Records `text` in the host's log, whatever the settings: who traces asks `TraceEnabled` first. A line break
/// at the end is dropped. Any thread.
ZUHOST_API void Trace(int level, std::string_view category, const UTF16String& text);

}  // namespace host
