#include "host/core/Logging.h"

#include <algorithm>
#include <boost/core/demangle.hpp>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <typeinfo>
#include <vector>

#include "desk/core/log/Log.h"

namespace host {
namespace {

struct Span {
    std::int64_t mNanoseconds = 0;
    std::int64_t mCount = 0;
};

struct Profile {
    std::mutex mMutex;
    /// By text: a label may stand in several libraries.
    std::map<std::string, Span, std::less<>> mSpans;
};

/// Never destroyed: scopes may end while the process exits.
Profile& TheProfile() {
    static auto& profile = *new Profile;
    return profile;
}

void LogProfile() {
    Profile& profile = TheProfile();
    const std::lock_guard lock(profile.mMutex);
    std::vector<std::pair<std::string, Span>> spans(profile.mSpans.begin(), profile.mSpans.end());
    std::ranges::sort(spans, std::greater{}, [](const auto& span) { return span.second.mNanoseconds; });
    for (const auto& [label, span] : spans)
        desk::Log(desk::LogLevel::Info, "profile: " + label + ": " + std::to_string(span.mCount) + " times, " +
                                            std::to_string(span.mNanoseconds / 1000) + " microseconds");
}

std::int64_t NowNanoseconds() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void LogUnknownException(std::string_view context) noexcept {
    try {
        desk::Log(desk::LogLevel::Error,
                  "An exception of an unknown kind (caught in " + std::string(context) + ")");
    } catch (...) {
        desk::Log(desk::LogLevel::Error, "An exception of an unknown kind");
    }
}

}  // namespace

void LogException(const std::exception& exception, std::string_view context) noexcept {
    try {
        desk::Log(desk::LogLevel::Error, std::string(exception.what()) + " (" +
                                             boost::core::demangle(typeid(exception).name()) + ", caught in " +
                                             std::string(context) + ")");
    } catch (...) {
        desk::Log(desk::LogLevel::Error, exception.what());
    }
}

void LogCurrentException(std::string_view context) noexcept {
    try {
        if (std::current_exception()) throw;
    } catch (const std::exception& exception) {
        LogException(exception, context);
    } catch (...) {
        LogUnknownException(context);
    }
}

bool CodeProfilerScope::sIsProfiling = [] {
    const bool isWanted = std::getenv("ZU_PROFILE") != nullptr;
    if (isWanted) std::atexit(LogProfile);
    return isWanted;
}();

void CodeProfilerScope::Begin(const char* label) {
    mLabel = label;
    mStartNanoseconds = NowNanoseconds();
}

void CodeProfilerScope::End() {
    const std::int64_t time = NowNanoseconds() - mStartNanoseconds;
    Profile& profile = TheProfile();
    const std::lock_guard lock(profile.mMutex);
    Span& span = profile.mSpans[mLabel];
    span.mNanoseconds += time;
    ++span.mCount;
}

}  // namespace host
