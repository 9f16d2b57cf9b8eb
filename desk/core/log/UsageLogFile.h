#pragma once

#include <memory>
#include <string>

#include "host/core/Export.h"

namespace desk {

/// Records usage in a JSON-lines file while it exists: `host::UsageLogger::Get` answers from its construction
/// to its destruction. A line is {"time": UTC (ISO 8601), "category", "event", "group" (of a group), "values"
/// in their order}. Lines are written by a worker, in order; when the file passes 4 MiB it becomes
/// "<name>.old" and a new one is begun. A file that cannot be written is logged once. One at a time; UI thread.
class ZUHOST_API UsageLogFile {
public:
    static constexpr const char* kFileName = "usage.jsonl";

    explicit UsageLogFile(const std::string& path);
    /// Lines that are waiting are still written, by the worker.
    ~UsageLogFile();

    class Writer;

private:
    std::shared_ptr<Writer> mWriter;
};

}  // namespace desk
