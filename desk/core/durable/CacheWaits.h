#pragma once

#include "host/core/Export.h"

namespace desk {

/// While one lives, `FileSystem::WaitForCaches` waits for nothing on this thread: it says at once whether there
/// would have been nothing to wait for. What a volume with caches has failed to do stays in doubt then
/// (`FindPresence`), and is told as that, in place of being looked after for seconds: for the files of the
/// profile, which the UI thread writes. Any thread.
class ZUHOST_API ScNoCacheWaits {
public:
    ScNoCacheWaits();
    ~ScNoCacheWaits();
    ScNoCacheWaits(const ScNoCacheWaits&) = delete;
    ScNoCacheWaits& operator=(const ScNoCacheWaits&) = delete;

    /// True while one lives on this thread.
    static bool AreOff();
};

}  // namespace desk
