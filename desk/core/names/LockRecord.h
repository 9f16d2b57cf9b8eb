#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

class Desktop;
class FileSystem;

/// What a lock file says. `docs/locking.md` describes the format: one UTF-8 JSON object of at most 4 KiB.
struct LockRecord {
    /// False for a lock file that could not be read or understood: held, by nobody knows whom.
    bool mIsReadable = false;
    std::string mNonce;
    host::UTF16String mUser;
    host::UTF16String mMachine;
    std::string mMachineID;
    std::string mBootID;
    /// 0 when it is not known.
    std::uint64_t mPidNamespace = 0;
    /// 0 when it is not known.
    std::int64_t mPid = 0;
    /// Start time of the process, in clock ticks since boot (proc(5), field 22 of stat).
    std::uint64_t mProcessStart = 0;
    /// Seconds since the epoch.
    std::int64_t mTakenAt = 0;
};

/// The largest lock file that is read, in bytes.
inline constexpr std::size_t kLockFileLimit = 4096;

/// The name of the lock file that belongs to a project's file name ("." + name + ".lock"), and back: empty
/// when `lockName` is no lock file's name. The one place that knows the names.
ZUHOST_API host::UTF16String GetLockFileName(const host::UTF16String& projectName);
ZUHOST_API host::UTF16String GetProjectNameOfLockFile(std::u16string_view lockName);
/// The path, in bytes, of the lock file of the project at `projectPath` (normalised).
ZUHOST_API std::string GetLockPath(const host::UTF16String& projectPath);

/// The format's one writer and one reader.
ZUHOST_API std::string WriteLockRecord(const LockRecord& record);
ZUHOST_API LockRecord ParseLockRecord(const std::string& bytes);

/// Reads the lock file at `path` (bytes): bounded in size and time whatever stands there. Absent when
/// nothing stands there; unreadable for anything that is no well-formed record. May wait for the volume;
/// any thread.
ZUHOST_API std::optional<LockRecord> ReadLockRecord(FileSystem& fileSystem, const std::string& path);

/// A record for this process with a fresh nonce, taken now. Names are cut at 255 units. Any thread.
ZUHOST_API LockRecord MakeLockRecord(const Desktop& desktop, const host::UTF16String& user,
                                     const host::UTF16String& machine);

/// True when both records are of one process. Any thread.
ZUHOST_API bool AreOfOneProcess(const LockRecord& a, const LockRecord& b);

/// True for a readable record of this machine: of its id and of its name, since machines that were cloned share
/// an id. Any thread.
ZUHOST_API bool IsOfThisMachine(const LockRecord& record, const Desktop& desktop);

/// What this machine knows of a process.
enum class ProcessState {
    Alive,
    Gone,
    /// Of another pid namespace, or what is needed to tell is not known.
    Unknown,
};

/// What has become of the process that a record of this machine names. Gone: it is of an earlier boot, or of
/// this pid namespace and has ended (or its pid is another process's now). Looks at nothing else of the record.
/// Any thread; reads /proc only.
ZUHOST_API ProcessState FindProcessState(const LockRecord& record, const Desktop& desktop);

/// True when the lock's holder is known to be gone: the lock is of this machine, and its process is gone. Never
/// true for an unreadable record or another machine's. Any thread; reads /proc only.
ZUHOST_API bool IsLockStale(const LockRecord& record, const Desktop& desktop);

}  // namespace desk
