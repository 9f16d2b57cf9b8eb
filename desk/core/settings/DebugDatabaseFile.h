#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/Export.h"

namespace desk {

using DebugDatabaseEntries = std::map<std::string, double, std::less<>>;

struct ParsedDebugDatabase {
    /// Absent when the text is no JSON object; `mReason` says what is wrong.
    std::optional<DebugDatabaseEntries> mEntries;
    std::string mReason;
    /// Keys whose values are no numbers.
    std::vector<std::string> mIgnored;
};

/// Parses the text of a debug database: one flat JSON object of numbers. Any thread.
ZUHOST_API ParsedDebugDatabase ParseDebugDatabase(std::string_view text);

/// Makes `entries` the overrides of the process's debug database; where they differ from those before, the
/// change counter moves and the change is announced. UI thread.
ZUHOST_API void SetDebugDatabaseEntries(DebugDatabaseEntries entries);

/// The file of the debug database: read when opened, and again whenever it is written, replaced, removed or
/// made anew. Without the file there are no overrides; while it cannot be read or parsed, they stay as they
/// are. The file is never written. UI thread.
class ZUHOST_API DebugDatabaseFile {
public:
    static constexpr const char* kFileName = "Debug Database.json";

    /// Reads "Debug Database.json" of `profileFolder` and begins to watch it. May wait for the disk; reads the
    /// file on a worker from then on.
    explicit DebugDatabaseFile(const std::string& profileFolder);
    ~DebugDatabaseFile();

private:
    struct Watch;
    std::shared_ptr<Watch> mWatch;
};

}  // namespace desk
