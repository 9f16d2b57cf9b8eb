#pragma once

#include <map>
#include <string>

#include "host/core/Export.h"

namespace desk {

/// Which messages are traced: by category the largest level that is; a negative one traces nothing.
using TraceLevels = std::map<std::string, int, std::less<>>;

/// The debug database's entries for tracing begin so; the category follows ("Trace.SharedProjects": 8).
inline constexpr char kTraceKeyPrefix[] = "Trace.";

/// Makes `levels` the settings of the process; where they differ from those before, the count of changes moves.
/// Any thread.
ZUHOST_API void SetTraceLevels(TraceLevels levels);

}  // namespace desk
