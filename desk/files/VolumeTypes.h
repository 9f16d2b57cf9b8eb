#pragma once

#include "host/core/Export.h"

namespace desk {

/// True when a file system of this type number (statfs(2) f_type) reports every change of its files through
/// inotify: the known local ones. Any thread.
ZUHOST_API bool DoesVolumeReportChanges(long type);

}  // namespace desk
