#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// The name by which users see a production's trash folder, in their language. On the disk it has one name for
/// all of them (`GetZuProductionTrashDirectoryPath`). Constant while the process lives. UI thread.
ZUHOST_API const UTF16String& GetZuProductionTrashDirectoryDisplayName();

/// The path of the open production's trash folder, whether it exists or not; empty when no production
/// is open. UI thread.
ZUHOST_API UTF16String GetZuProductionTrashDirectoryPath();

/// True when `path`, normalised, is the trash folder of the open production. UI thread.
ZUHOST_API bool IsTheZuProductionTrashDirectory(const UTF16String& path);

/// True when `path`, normalised, lies inside the trash folder of the open production; with
/// `includeTrashFolder` also for the trash folder itself. UI thread.
ZUHOST_API bool IsInZuProductionTrash(const UTF16String& path, bool includeTrashFolder);

}  // namespace host
