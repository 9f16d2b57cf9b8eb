#pragma once

#include <chrono>

#include "host/core/Export.h"

namespace desk {

/// From now on, for `time`, the keys that the user presses go nowhere, neither to a widget nor to a command:
/// they were meant for what has just gone from under the user's hands. UI thread.
ZUHOST_API void PauseKeys(std::chrono::milliseconds time);

}  // namespace desk
