#pragma once

#include <QString>
#include <cstdint>
#include <string>

#include "host/core/Export.h"

namespace desk {

/// How the host's records on the disk spell times and paths. Any thread.

/// Bytes of a path by RFC 3986: all but letters, digits, "-._~/" become "%" and two digits.
ZUHOST_API QString ToPercentEncoded(const std::string& bytes);

/// Seconds since the epoch as UTC by ISO 8601 ("2026-11-21T08:30:00Z").
ZUHOST_API QString ToTimeText(std::int64_t secondsSinceEpoch);

/// `path` relative to `folder` (both normalised, in bytes); the whole path when it does not lie in it.
ZUHOST_API std::string MakeRelative(const std::string& path, const std::string& folder);

}  // namespace desk
