#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <string>

#include "host/core/Export.h"

namespace desk {

/// How the records of a production's trash spell what text cannot hold. Any thread.

/// Bytes of a path by RFC 3986: all but letters, digits, "-._~/" become "%" and two digits; and back.
ZUHOST_API QString ToPercentEncoded(const std::string& bytes);
ZUHOST_API std::string FromPercentEncoded(const QString& text);

/// Seconds since the epoch as UTC by ISO 8601 ("2026-11-21T08:30:00Z"), and back; absent for what is no such
/// text.
ZUHOST_API QString ToTimeText(std::int64_t secondsSinceEpoch);
ZUHOST_API std::optional<std::int64_t> FromTimeText(const QString& text);

/// `path` relative to `folder` (both normalised, in bytes); the whole path when it does not lie in it.
ZUHOST_API std::string MakeRelative(const std::string& path, const std::string& folder);

}  // namespace desk
