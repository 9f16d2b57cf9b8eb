#include "host/core/Trace.h"

#include <atomic>
#include <shared_mutex>
#include <utility>

#include "desk/core/log/Log.h"
#include "desk/core/settings/TraceSettings.h"

namespace desk {
namespace {

struct TraceState {
    std::shared_mutex mMutex;
    TraceLevels mLevels;
    std::atomic<int> mChanges{1};
};

/// Never destroyed: static objects of other libraries trace on their way out.
TraceState& State() {
    static auto& state = *new TraceState;
    return state;
}

}  // namespace

void SetTraceLevels(TraceLevels levels) {
    TraceState& state = State();
    const std::unique_lock lock(state.mMutex);
    if (levels == state.mLevels) return;
    state.mLevels = std::move(levels);
    ++state.mChanges;
}

}  // namespace desk

namespace host {

int TraceChangeCount() {
    return desk::State().mChanges;
}

bool TraceEnabled(std::string_view category, int level, bool byDefault) {
    desk::TraceState& state = desk::State();
    const std::shared_lock lock(state.mMutex);
    const auto found = state.mLevels.find(category);
    return found == state.mLevels.end() ? byDefault : level <= found->second;
}

void Trace(int level, std::string_view category, const UTF16String& text) {
    std::u16string_view line = text;
    if (line.ends_with(u'\n')) line.remove_suffix(1);
    if (line.ends_with(u'\r')) line.remove_suffix(1);
    desk::Log(desk::LogLevel::Info,
              "trace " + std::string(category) + ' ' + std::to_string(level) + ": " + UTF16to8(line));
}

}  // namespace host
