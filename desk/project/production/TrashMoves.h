#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// From now on each item that moves to the trash of the open production is recorded there (`TrashRecord`), by a
/// worker. What cannot be recorded has moved nevertheless; the log says so once for each trash folder. To be
/// called once the services are set up; again does nothing. UI thread.
ZUHOST_API void RecordMovesToTrash();

/// Moves `paths` to the trash of the open production by the function that its panel has installed
/// (`host::Scripting::SetTryToMoveToSharedProjectsTrashFn`); false when there is none. What it throws is
/// logged. UI thread.
ZUHOST_API bool TryToMoveToTrash(const host::UTF16StringVec& paths);

}  // namespace desk
