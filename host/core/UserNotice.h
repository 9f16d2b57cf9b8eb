#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// Tells the user something without asking anything: the status bar shows `text` (localised, plain) for some
/// time, and the log keeps it. For what was done where the user may not be looking, and for why something
/// cannot be done. Any thread; waits for nothing.
ZUHOST_API void TellInStatusBar(const UTF16String& text);

}  // namespace host
