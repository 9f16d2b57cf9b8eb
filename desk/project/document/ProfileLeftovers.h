#pragma once

#include <functional>
#include <string>

#include "host/core/Export.h"

namespace desk {

/// Removes from `folder` of the profile (bytes) the temporaries that saves of programs which are gone have left
/// (`TemporaryPurpose::Save`), as far as the files that they were to replace are there: where the volume caches
/// names, those that are older than any cache. A temporary without its file may be all that is left of that: it
/// is handed to `handleRest`, which may throw `host::FileException`; without one it stays. What is done, and
/// what fails, goes to the log. Waits for no caches, but for the disk: for a worker. Uses `GetServices()`.
ZUHOST_API void SweepUnfinishedSaves(const std::string& folder,
                                     const std::function<void(const std::string& path)>& handleRest = {});

}  // namespace desk
