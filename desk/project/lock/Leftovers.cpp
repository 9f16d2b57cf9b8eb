#include "desk/project/lock/Leftovers.h"

#include <map>
#include <optional>
#include <utility>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/project/lock/LockProtocol.h"
#include "desk/project/lock/StrayLocks.h"
#include "desk/project/lock/TargetedLeftovers.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

/// This machine's caches may still show the hidden name of what has its final name by now, and would lead
/// there. The volume itself renames only what does stand under the hidden name.
void SweepTemporary(FileSystem& fileSystem, const std::string& path) {
    const std::string taken = JoinPath<std::string>(FolderOf(path), MakeTemporaryName());
    try {
        fileSystem.Rename(path, taken);
        RemoveTree(fileSystem, taken);
        LogRemovalOfLeftover(path);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
}

void SweepStray(LockProtocol& protocol, const std::string& path, const std::string& nonce) {
    if (!BeginStrayRemoval(path, nonce)) return;
    const bool isRemoved = protocol.Release(path, nonce) == LockRelease::Done;
    EndStrayRemoval(path, nonce, isRemoved);
    if (isRemoved) Log(LogLevel::Info, "removed a lock that was given up when it stood elsewhere: " + path);
}

/// What was left by processes that are gone. By nonce: the locks of a batch share one.
using DeadRecords = std::map<std::string, std::vector<std::string>>;

/// A lock or a guard.
void SweepRecord(FileSystem& fileSystem, const Desktop& desktop, const std::string& path, DeadRecords& dead) {
    const auto record = ReadLockRecord(fileSystem, path);
    if (!record) return;
    LockProtocol protocol(fileSystem, desktop);
    SweepStray(protocol, path, record->mNonce);
    protocol.DropRemains();
    if (IsLockStale(*record, desktop)) dead[record->mNonce].push_back(path);
}

void SweepDead(FileSystem& fileSystem, const Desktop& desktop, const DeadRecords& dead) {
    const LockRecord mine = MakeLockRecord(desktop, desktop.UserName(), desktop.MachineName());
    LockProtocol protocol(fileSystem, desktop);
    for (const auto& [nonce, paths] : dead)
        for (const std::string& path : protocol.RemoveDead(paths, nonce, mine)) LogRemovalOfLeftover(path);
    protocol.DropRemains();
}

std::vector<std::string> FindLeftovers(FileSystem& fileSystem, const std::string& folder) {
    std::vector<std::string> names;
    try {
        for (FolderEntry& entry : fileSystem.ListFolder(folder))
            if (MayBeLeftover(entry.mName)) names.push_back(std::move(entry.mName));
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
    return names;
}

void SweepLater(const HollowLock& lock) {
    GetServices().mMainThread->PostDelayed(
        [lock] {
            GetServices().mWorkerPool->SubmitLast(
                [lock] { SweepHollowLock(*GetServices().mFileSystem, *GetServices().mDesktop, lock); });
        },
        FindTimeToBreak(lock.mPath));
}

/// On a worker.
void SweepNow(const std::string& folder, const std::vector<std::string>& names) {
    const Services& services = GetServices();
    for (const HollowLock& lock : SweepLeftovers(*services.mFileSystem, *services.mDesktop, folder, names))
        SweepLater(lock);
}

}  // namespace

void LogRemovalOfLeftover(const std::string& path) {
    Log(LogLevel::Info, "removed what a process left that is gone: " + path);
}

std::vector<HollowLock> SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop,
                                       const std::string& folder, const std::vector<std::string>& names) {
    std::vector<HollowLock> hollow;
    DeadRecords dead;
    for (const std::string& name : names) {
        const std::string path = JoinPath<std::string>(folder, name);
        if (IsTemporaryOfDead(name, desktop)) SweepTemporary(fileSystem, path);
        if (IsGuardName(name) || IsLockFileName(name)) SweepRecord(fileSystem, desktop, path, dead);
        const auto targeted = ParseTargetedTemporary(name);
        if (!targeted) continue;
        if (targeted->mPurpose != TemporaryPurpose::Lock) {
            if (targeted->mOwner.IsGone(desktop)) SweepTargeted(fileSystem, path, *targeted);
        } else if (auto lock = SweepLockTemporary(fileSystem, desktop, path, *targeted, names)) {
            hollow.push_back(*std::move(lock));
        }
    }
    SweepDead(fileSystem, desktop, dead);
    return hollow;
}

std::vector<HollowLock> SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop,
                                       const std::string& folder) {
    return SweepLeftovers(fileSystem, desktop, folder, FindLeftovers(fileSystem, folder));
}

void SweepInBackground(const std::string& folder, std::vector<std::string> names) {
    GetServices().mWorkerPool->SubmitLast([folder, names = std::move(names)] { SweepNow(folder, names); });
}

void SweepFolderInBackground(const std::string& folder) {
    GetServices().mWorkerPool->SubmitLast(
        [folder] { SweepNow(folder, FindLeftovers(*GetServices().mFileSystem, folder)); });
}

void SweepAttempt(const LockRemains& attempt) {
    NoteStrayLock(attempt.mPath, attempt.mNonce);
    GetServices().mWorkerPool->SubmitLast([attempt] {
        FileSystem& fileSystem = *GetServices().mFileSystem;
        const std::string moved = FindMovedLock(fileSystem, attempt.mTemporary, attempt.mNonce);
        const std::string folder = FolderOf(moved.empty() ? attempt.mTemporary : moved);
        SweepNow(folder, FindLeftovers(fileSystem, folder));
    });
}

}  // namespace desk
