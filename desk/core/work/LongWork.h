#pragma once

#include <functional>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

class WorkProgress;

/// Runs `work` on a worker and returns when it is done; what it throws is thrown here. The window stays alive:
/// after a moment events are handled again, though no input; when the work takes longer, a dialog with `title`
/// shows its progress and lets the user cancel it (`WorkProgress::IsCancelled`, which `work` is to follow). No
/// command is let in until the end. `work` touches nothing that belongs to the UI thread. May be called while
/// another is running (from what its events cause). UI thread.
ZUHOST_API void RunLongWork(const host::UTF16String& title, const std::function<void(WorkProgress&)>& work);

/// True while one is running: commands wait.
ZUHOST_API bool IsLongWorkRunning();

}  // namespace desk
