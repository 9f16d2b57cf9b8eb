#pragma once

#include <QString>
#include <chrono>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// Where a file dialog may begin without standing still: `wanted`, if its volume and those that are mounted in
/// it answer within `limit`, else the user's home folder; Qt's dialog asks for every item of the folder that it
/// shows. The question itself is asked on a worker. UI thread, which waits for `limit` at most.
ZUHOST_API QString FindStartFolder(const host::UTF16String& wanted,
                                   std::chrono::milliseconds limit = std::chrono::seconds(1));

}  // namespace desk
