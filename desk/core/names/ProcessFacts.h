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

/// This process, as others can tell it from all others.
struct OwnProcess {
    /// 0 when /proc does not tell the start: without it a process cannot be told from a later one of its
    /// number.
    std::int64_t mPid = 0;
    /// Clock ticks since boot.
    std::uint64_t mStart = 0;
    /// The inode of the pid namespace; 0 when the system does not tell.
    std::uint64_t mPidNamespace = 0;
};
/// Reads /proc once in each thread. Any thread.
ZUHOST_API OwnProcess GetOwnProcess();

}  // namespace desk
