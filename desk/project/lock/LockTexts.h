#pragma once

#include "desk/core/names/LockRecord.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// How a lock is described to the user: "ines on edit-bay-4, since 10:40 (3 hours ago)". UI thread.
ZUHOST_API host::UTF16String DescribeHolder(const LockRecord& record);

}  // namespace desk
