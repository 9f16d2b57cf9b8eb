#pragma once

#include <cstdint>
#include <exception>
#include <string_view>

#include "host/core/Strings.h"

namespace host {

/// Writes an exception to the host's log with the place that caught it. `context` is the full
/// signature of the catching function. Any thread; never throws.
ZUHOST_API void LogException(const std::exception& exception, std::string_view context) noexcept;

/// The same for whatever is being handled in the current catch block, also when it is not a
/// `std::exception`. Any thread; never throws.
ZUHOST_API void LogCurrentException(std::string_view context) noexcept;

/// Marks a stretch of code for the host's profiler from construction to destruction. `label` must
/// outlive the scope. Costs next to nothing while no profile is being taken. Any thread.
class ZUHOST_API CodeProfilerScope {
public:
    explicit CodeProfilerScope(const char* label) {
        if (sIsProfiling) Begin(label);
    }
    ~CodeProfilerScope() {
        if (mLabel) End();
    }
    CodeProfilerScope(const CodeProfilerScope&) = delete;
    CodeProfilerScope& operator=(const CodeProfilerScope&) = delete;

    /// True while the host takes a profile.
    static bool sIsProfiling;

private:
    void Begin(const char* label);
    void End();

    const char* mLabel = nullptr;
    std::int64_t mStartNanoseconds = 0;
};

}  // namespace host
