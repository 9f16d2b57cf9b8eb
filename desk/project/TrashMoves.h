#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// Throws `host::FileException` when `destination` (normalised) lies in the trash folder of the open production
/// and that is a symbolic link (ELOOP) or no folder (ENOTDIR): nothing may leave the production so. To be asked
/// before anything moves there. May wait for the volume. UI thread.
ZUHOST_API void CheckMoveToTrash(const host::UTF16String& destination);

/// From now on each item that moves to the trash of the open production is recorded there (`TrashRecord`), by a
/// worker. What cannot be recorded has moved nevertheless; the log says so once for each trash folder. To be
/// called once the services are set up; again does nothing. UI thread.
ZUHOST_API void RecordMovesToTrash();

/// Moves `paths` to the trash of the open production by the function that its panel has installed
/// (`host::Scripting::SetTryToMoveToSharedProjectsTrashFn`); false when there is none. What it throws is
/// logged. UI thread.
ZUHOST_API bool TryToMoveToTrash(const host::UTF16StringVec& paths);

}  // namespace desk
