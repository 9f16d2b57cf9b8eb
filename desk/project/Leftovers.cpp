#include "desk/project/Leftovers.h"

#include <QCryptographicHash>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "desk/core/Desktop.h"
#include "desk/core/Log.h"
#include "desk/core/QtStrings.h"
#include "desk/files/FolderPath.h"
#include "desk/files/HostNames.h"
#include "desk/files/ItemCopier.h"
#include "desk/project/LockProtocol.h"
#include "desk/project/TargetedLeftovers.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

constexpr std::string_view kGuardPrefix = ".zuguard-";
constexpr std::size_t kDigitsOfNonce = 32;

bool IsLockName(std::string_view name) {
    return name.starts_with('.') && !GetProjectNameOfLockFile(host::UTF8to16(std::string(name))).empty();
}

/// This machine's caches may still show the hidden name of what has its final name by now, and would lead
/// there. The volume itself renames only what does stand under the hidden name.
void SweepTemporary(FileSystem& fileSystem, const std::string& path) {
    const std::string taken = JoinPath<std::string>(FolderOf(path), MakeTemporaryName());
    try {
        fileSystem.Rename(path, taken);
        RemoveTree(fileSystem, taken);
        Log(LogLevel::Info, "removed what a process left that is gone: " + path);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
}

/// The nonces of stray locks.
class StrayLocks {
public:
    void Add(const std::string& nonce) {
        const std::lock_guard lock(mMutex);
        mStates.try_emplace(nonce, State::Stray);
    }
    /// False while it is being removed.
    bool TakeOut(const std::string& nonce) {
        const std::lock_guard lock(mMutex);
        const auto entry = mStates.find(nonce);
        if (entry != mStates.end() && entry->second == State::BeingRemoved) return false;
        mStates.erase(nonce);
        return true;
    }
    /// True for a stray lock, which is then being removed until `EndRemoval`.
    bool BeginRemoval(const std::string& nonce) {
        const std::lock_guard lock(mMutex);
        const auto entry = mStates.find(nonce);
        return entry != mStates.end() && std::exchange(entry->second, State::BeingRemoved) == State::Stray;
    }
    void EndRemoval(const std::string& nonce, bool isRemoved) {
        const std::lock_guard lock(mMutex);
        if (isRemoved)
            mStates.erase(nonce);
        else
            mStates[nonce] = State::Stray;
    }

private:
    enum class State { Stray, BeingRemoved };

    std::mutex mMutex;
    std::map<std::string, State> mStates;
};

StrayLocks& GetStrayLocks() {
    static StrayLocks& locks = *new StrayLocks;
    return locks;
}

void SweepStray(LockProtocol& protocol, const std::string& path, const std::string& nonce) {
    if (!GetStrayLocks().BeginRemoval(nonce)) return;
    const bool isRemoved = protocol.Release(path, nonce) == LockRelease::Done;
    GetStrayLocks().EndRemoval(nonce, isRemoved);
    if (isRemoved) Log(LogLevel::Info, "removed a lock that was given up when it stood elsewhere: " + path);
}

/// A lock or a guard.
void SweepRecord(FileSystem& fileSystem, const Desktop& desktop, const std::string& path) {
    const auto record = ReadLockRecord(fileSystem, path);
    if (!record) return;
    LockProtocol protocol(fileSystem, desktop);
    SweepStray(protocol, path, record->mNonce);
    if (!IsLockStale(*record, desktop)) return;
    const LockRecord mine = MakeLockRecord(desktop, desktop.UserName(), desktop.MachineName());
    if (protocol.RemoveDead(path, record->mNonce, mine))
        Log(LogLevel::Info, "removed what a process left that is gone: " + path);
    for (const LockRemains& remains : protocol.TakeRemains()) protocol.RemoveRemains(remains);
}

}  // namespace

std::string GetGuardName(std::string_view nonce) {
    return std::string(kGuardPrefix) + std::string(nonce);
}

std::string GetGuardName(const std::string& lockName, const std::string& content) {
    if (const LockRecord record = ParseLockRecord(content); record.mIsReadable)
        return GetGuardName(record.mNonce);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(QByteArray::fromStdString(lockName + '\0' + content));
    return GetGuardName(hash.result().toHex().left(kDigitsOfNonce).toStdString());
}

bool IsGuardName(std::string_view name) {
    return name.starts_with(kGuardPrefix) && name.size() == kGuardPrefix.size() + kDigitsOfNonce;
}

void NoteStrayLock(const std::string& nonce) {
    GetStrayLocks().Add(nonce);
}

bool TakeBackStrayLock(const std::string& nonce) {
    return GetStrayLocks().TakeOut(nonce);
}

bool MayBeLeftover(std::string_view name) {
    return name.starts_with('.') && (IsTemporaryName(name) || IsGuardName(name) || IsLockName(name));
}

void SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop, const std::string& folder,
                    const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const std::string path = JoinPath<std::string>(folder, name);
        if (IsTemporaryOfDead(name, desktop)) SweepTemporary(fileSystem, path);
        if (const auto targeted = ParseTargetedTemporary(name); targeted && targeted->mOwner.IsGone(desktop))
            SweepTargeted(fileSystem, path, *targeted);
        if (IsGuardName(name) || IsLockName(name)) SweepRecord(fileSystem, desktop, path);
    }
}

void SweepLeftovers(FileSystem& fileSystem, const Desktop& desktop, const std::string& folder) {
    std::vector<std::string> names;
    try {
        for (FolderEntry& entry : fileSystem.ListFolder(folder))
            if (MayBeLeftover(entry.mName)) names.push_back(std::move(entry.mName));
    } catch (const host::FileException& exception) {
        Log(LogLevel::Info, exception.what());
    }
    SweepLeftovers(fileSystem, desktop, folder, names);
}

}  // namespace desk
