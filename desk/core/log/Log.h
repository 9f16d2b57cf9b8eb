#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "host/core/Export.h"

namespace desk {

enum class LogLevel { Info, Warning, Error };

/// Writes one line to the log: standard error and "log.txt" in the profile (once `OpenLogFile` was called).
/// Control characters in `text` are escaped. Any thread; never throws.
ZUHOST_API void Log(LogLevel level, std::string_view text) noexcept;

/// Sends the log also to a file, which is cut at the start when it is larger than 1 MiB (the old one is kept
/// beside it). A file that cannot be written is told once on standard error.
ZUHOST_API void OpenLogFile(const std::string& path);

/// Receives every log line; for tests. An empty function takes it away. Returns the one before.
using LogSink = std::function<void(LogLevel level, const std::string& text)>;
ZUHOST_API LogSink SetLogSink(LogSink sink);

}  // namespace desk
