#pragma once

#include <functional>
#include <map>
#include <string>

#include "host/core/Export.h"

namespace desk {

/// The drag-and-drop data types that panels have declared, with the system data type that each is a kind of.
/// UI thread.
ZUHOST_API std::map<std::string, std::string, std::less<>>& GetCustomDataTypes();

}  // namespace desk
