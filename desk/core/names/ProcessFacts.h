#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "host/core/Export.h"

namespace desk {

/// A process of this machine and pid namespace, as proc(5) tells of it.
struct ProcessFacts {
    /// It has ended; nobody has collected its result yet.
    bool mHasEnded = false;
    /// Clock ticks since boot.
    std::uint64_t mStart = 0;
};

/// Reads the text of /proc/<pid>/stat; absent when it is not of that form. Any thread.
ZUHOST_API std::optional<ProcessFacts> ParseProcessStat(std::string_view stat);

/// Absent when there is no such process or it is hidden from us. Any thread; reads /proc only.
ZUHOST_API std::optional<ProcessFacts> ReadProcessFacts(std::int64_t pid);

/// True when there certainly is no process `pid`, not even a hidden one. Signals nothing. Any thread.
ZUHOST_API bool IsPidFree(std::int64_t pid);

/// The inode of this process's pid namespace; 0 when the system does not tell. Any thread.
ZUHOST_API std::uint64_t GetOwnPidNamespace();

}  // namespace desk
