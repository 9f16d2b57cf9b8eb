#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/core/Export.h"

namespace host {

/// One usage event with named values, sent as a whole.
class ZUHOST_API UsageLogGroup {
public:
    virtual ~UsageLogGroup();
    /// Adds a value; the order of adding is kept, and a key may stand only once (the last one wins).
    virtual void AddKeyValue(std::string_view key, std::string_view value) = 0;
    /// Hands the group to the logger. Called at most once; a group that is never sent is dropped.
    virtual void Send() = 0;
};

/// Records how the product is used. Texts are UTF-8. Never waits for a disk, never throws. UI thread.
class ZUHOST_API UsageLogger {
public:
    /// The process-wide logger, or null when usage is not recorded.
    static UsageLogger* Get();

    /// Records one event: `category`, and within it `name` with `value`.
    void LogEvent(std::string_view category, std::string_view name, std::string_view value);

    /// Begins a group for the event `eventName` under `category`.
    std::unique_ptr<UsageLogGroup> CreateGroup(std::string_view category, std::string_view eventName,
                                               std::string_view groupName);
};

}  // namespace host
