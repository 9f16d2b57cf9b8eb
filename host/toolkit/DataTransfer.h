#pragma once

#include <string_view>

#include "host/core/Export.h"

namespace host {

/// The system data type of generic data.
inline constexpr char kUTTypeData[] = "public.data";

/// Declares a drag-and-drop data type of the panel's own as a kind of `systemType`. Declaring it again
/// changes nothing. UI thread.
ZUHOST_API void RegisterCustomDataType(std::string_view type, std::string_view systemType);

}  // namespace host
