#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// True when there is a panel that moves items to the trash. UI thread.
ZUHOST_API bool CanMoveToTrash();

/// Moves `paths` to the trash of the open production by the function that its panel has installed
/// (`host::Scripting::SetTryToMoveToSharedProjectsTrashFn`); false when there is none. What it throws is
/// logged. UI thread.
ZUHOST_API bool TryToMoveToTrash(const host::UTF16StringVec& paths);

}  // namespace desk
