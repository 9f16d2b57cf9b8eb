#include "desk/project/lock/HollowLocks.h"

#include <cerrno>

#include "desk/core/durable/Presence.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/StrayLocks.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

/// Of a process that is gone, or of an attempt of this one that came to nothing.
bool IsAbandoned(const TargetedTemporary& temporary, const Desktop& desktop) {
    return temporary.mOwner.IsGone(desktop) || IsStrayNonce(temporary.mOwner.mRecord.mNonce);
}

/// What the volume says of a lock that may be hollow.
struct HollowLook {
    std::optional<HollowLock> mLock;
    /// False while the volume does not tell: then the lock may be hollow.
    bool mIsTold = true;
};

/// Empty when nothing stands there, absent when the volume does not tell.
std::optional<std::string> ReadBytes(FileSystem& fileSystem, const std::string& path) {
    try {
        return fileSystem.ReadSmallFile(path, kLockFileLimit);
    } catch (const host::FileException& exception) {
        return exception.SystemError() == ENOENT ? std::optional(std::string()) : std::nullopt;
    }
}

/// What stands at `path` is hollow if it is the beginning of the record in `temporary`.
HollowLook FindHollow(FileSystem& fileSystem, const Desktop& desktop, const std::string& path,
                      const std::string& temporary) {
    const std::optional<std::string> record = ReadBytes(fileSystem, temporary);
    const auto seen = LockProtocol(fileSystem, desktop).Look(path);
    if (!record || (seen && seen->mSystemError != 0)) return {.mLock = {}, .mIsTold = false};
    const bool isHollow = ParseLockRecord(*record).mIsReadable && seen && seen->mBytes &&
                          record->starts_with(*seen->mBytes) && !ParseLockRecord(*seen->mBytes).mIsReadable;
    return {.mLock = isHollow ? std::optional(HollowLock{path, temporary, *seen}) : std::nullopt};
}

/// False while it cannot be read, and while it is listed although nothing is there by its name, which may be
/// what the volume knew before.
bool IsSettled(FileSystem& fileSystem, const Desktop& desktop, const std::string& path) {
    try {
        const auto seen = LockProtocol(fileSystem, desktop).Look(path);
        return seen ? seen->mSystemError == 0 : !IsListed(fileSystem, path);
    } catch (const host::FileException&) {
        return false;
    }
}

void Remove(FileSystem& fileSystem, const std::string& temporary) {
    try {
        fileSystem.RemoveFile(temporary);
        LogRemovalOfLeftover(temporary);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
}

}  // namespace

std::optional<HollowLock> SweepLockTemporary(FileSystem& fileSystem, const Desktop& desktop,
                                             const std::string& path, const TargetedTemporary& temporary,
                                             const std::vector<std::string>& names) {
    if (!IsAbandoned(temporary, desktop)) return {};
    for (const std::string& name : names) {
        if (IsTemporaryName(name) || !temporary.IsFor(name)) continue;
        const std::string lock = JoinPath<std::string>(FolderOf(path), name);
        HollowLook look = FindHollow(fileSystem, desktop, lock, path);
        if (look.mLock) return look.mLock;
        if (!look.mIsTold || !IsSettled(fileSystem, desktop, lock)) return {};
    }
    Remove(fileSystem, path);
    return {};
}

void SweepHollowLock(FileSystem& fileSystem, const Desktop& desktop, const HollowLock& lock) {
    LockProtocol protocol(fileSystem, desktop);
    const LockRecord mine = MakeLockRecord(desktop, desktop.UserName(), desktop.MachineName());
    const LockBreaking breaking = protocol.Break(lock.mPath, lock.mSeen, mine, [] { return true; });
    protocol.DropRemains();
    if (breaking.mOutcome == LockBreaking::Outcome::Broken) {
        Log(LogLevel::Info, "removed a lock that was never written to its end: " + lock.mPath);
    } else {
        const HollowLook look = FindHollow(fileSystem, desktop, lock.mPath, lock.mTemporary);
        // Otherwise the temporary stays until the next sweep: it is the only proof.
        if (look.mLock || !look.mIsTold || !IsSettled(fileSystem, desktop, lock.mPath)) return;
    }
    Remove(fileSystem, lock.mTemporary);
}

}  // namespace desk
