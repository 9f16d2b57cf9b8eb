#pragma once

#include <atomic>
#include <bit>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "host/core/Export.h"
#include "host/core/Messaging.h"

namespace host {

/// Named tunables with compiled-in defaults. A developer overrides them at run time in the
/// database's file; the host re-reads it when it changes. UI thread, but for `GetChangeCount`.
class ZUHOST_API DebugDatabase {
public:
    /// The process-wide database; never null.
    static DebugDatabase* Instance();

    /// True when the database overrides `key`.
    bool HasEntry(std::string_view key) const;

    /// The override of `key`, or `defaultValue` when there is none or it is not a number. Numbers out
    /// of the range of a 32-bit integer are clamped.
    std::int32_t GetEntry(std::string_view key, std::int32_t defaultValue) const;
    float GetEntry(std::string_view key, float defaultValue) const;
    double GetEntry(std::string_view key, double defaultValue) const;

    /// Counts the changes of the database since the process began, from 1. Any thread.
    std::uint32_t GetChangeCount() const;
};

/// Announced on `kStation_DebugDatabase` after the database's entries have changed.
class ZUHOST_API DebugDatabaseChangedMessage : public MessageTemplate<DebugDatabaseChangedMessage> {
public:
    ~DebugDatabaseChangedMessage() override;
};

inline const StationID kStation_DebugDatabase{"host.debugdatabase"};

/// A tunable of type T (32-bit integer, float or double): read from the database once and kept until
/// the database's change counter moves. The cached value is exchanged atomically.
template <class T>
class CachedDatabaseValue {
    static_assert(std::is_same_v<T, std::int32_t> || std::is_same_v<T, float> || std::is_same_v<T, double>);

public:
    /// `key` must outlive the value (a string literal).
    constexpr CachedDatabaseValue(const char* key, T defaultValue)
        : mKey(key), mDefault(defaultValue), mValue(defaultValue) {}

    /// The current value. UI thread.
    T Get() const {
        const DebugDatabase* database = DebugDatabase::Instance();
        const std::uint32_t count = database->GetChangeCount();
        if (mChangeCount.exchange(count) != count) mValue.exchange(database->GetEntry(mKey, mDefault));
        return mValue.load();
    }

    const char* Key() const { return mKey; }
    T Default() const { return mDefault; }

private:
    const char* mKey;
    T mDefault;
    mutable std::atomic<T> mValue;
    mutable std::atomic<std::uint32_t> mChangeCount{0};
};

}  // namespace host
