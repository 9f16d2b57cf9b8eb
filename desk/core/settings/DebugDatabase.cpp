#include "host/core/DebugDatabase.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "desk/core/settings/DebugDatabaseFile.h"
#include "desk/core/settings/TraceSettings.h"

namespace desk {
namespace {

struct DatabaseState {
    DebugDatabaseEntries mEntries;
    std::atomic<std::uint32_t> mChangeCount{1};
};

DatabaseState& State() {
    static auto& state = *new DatabaseState;
    return state;
}

std::optional<double> FindEntry(std::string_view key) {
    const auto found = State().mEntries.find(key);
    return found == State().mEntries.end() ? std::nullopt : std::optional(found->second);
}

TraceLevels FindTraceLevels(const DebugDatabaseEntries& entries) {
    TraceLevels levels;
    for (const auto& [key, level] : entries)
        if (key.starts_with(kTraceKeyPrefix))
            levels[key.substr(sizeof kTraceKeyPrefix - 1)] = static_cast<int>(std::clamp(level, -1.0, 9.0));
    return levels;
}

}  // namespace

void SetDebugDatabaseEntries(DebugDatabaseEntries entries) {
    DatabaseState& state = State();
    if (entries == state.mEntries) return;
    state.mEntries = std::move(entries);
    ++state.mChangeCount;
    SetTraceLevels(FindTraceLevels(state.mEntries));
    BroadcastMessage(host::kStation_DebugDatabase, host::DebugDatabaseChangedMessage());
}

}  // namespace desk

namespace host {

DebugDatabase* DebugDatabase::Instance() {
    static DebugDatabase database;
    return &database;
}

bool DebugDatabase::HasEntry(std::string_view key) const {
    return desk::FindEntry(key).has_value();
}

std::int32_t DebugDatabase::GetEntry(std::string_view key, std::int32_t defaultValue) const {
    using Limits = std::numeric_limits<std::int32_t>;
    const auto entry = desk::FindEntry(key);
    if (!entry) return defaultValue;
    return static_cast<std::int32_t>(std::clamp<double>(std::round(*entry), Limits::min(), Limits::max()));
}

float DebugDatabase::GetEntry(std::string_view key, float defaultValue) const {
    constexpr double largest = std::numeric_limits<float>::max();
    const auto entry = desk::FindEntry(key);
    return entry ? static_cast<float>(std::clamp(*entry, -largest, largest)) : defaultValue;
}

double DebugDatabase::GetEntry(std::string_view key, double defaultValue) const {
    return desk::FindEntry(key).value_or(defaultValue);
}

std::uint32_t DebugDatabase::GetChangeCount() const {
    return desk::State().mChangeCount;
}

DebugDatabaseChangedMessage::~DebugDatabaseChangedMessage() = default;

}  // namespace host
