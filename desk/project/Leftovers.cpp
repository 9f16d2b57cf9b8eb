#include "desk/project/Leftovers.h"

#include <QCryptographicHash>
#include <array>
#include <charconv>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "desk/core/Desktop.h"
#include "desk/core/Log.h"
#include "desk/core/QtStrings.h"
#include "desk/files/FolderPath.h"
#include "desk/files/ItemCopier.h"
#include "desk/project/LockProtocol.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

constexpr std::string_view kTemporaryPrefix = ".zutmp-";
constexpr std::string_view kGuardPrefix = ".zuguard-";
constexpr std::size_t kDigitsOfNonce = 32;
constexpr std::size_t kLongestID = 64;

/// Identifiers of the system are short and hold nothing that a file name may not.
bool IsUsableID(std::string_view id) {
    constexpr std::string_view kUsable = "0123456789abcdefABCDEF-";
    return !id.empty() && id.size() <= kLongestID && id.find_first_not_of(kUsable) == std::string_view::npos;
}

template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

/// The owner that a temporary file's name tells.
std::optional<LockRecord> ReadOwner(std::string_view name) {
    std::array<std::string_view, 6> parts;
    name.remove_prefix(kTemporaryPrefix.size());
    for (std::string_view& part : parts) {
        const std::size_t end = std::min(name.find('.'), name.size());
        part = name.substr(0, end);
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    LockRecord owner;
    owner.mNonce = parts[0];
    owner.mMachineID = parts[1];
    owner.mBootID = parts[2];
    owner.mIsReadable = name.empty() && IsUsableID(parts[1]) && IsUsableID(parts[2]) &&
                        ReadNumber(parts[3], owner.mPidNamespace) && ReadNumber(parts[4], owner.mPid) &&
                        ReadNumber(parts[5], owner.mProcessStart);
    return owner.mIsReadable ? std::optional(owner) : std::nullopt;
}

bool IsLockName(std::string_view name) {
    return name.starts_with('.') && !GetProjectNameOfLockFile(host::UTF8to16(std::string(name))).empty();
}

void SweepTemporary(FileSystem& fileSystem, const std::string& path) {
    try {
        RemoveTree(fileSystem, path);
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

std::string MakeTemporaryName(const LockRecord& owner) {
    std::string name(kTemporaryPrefix);
    name += owner.mNonce;
    if (!IsUsableID(owner.mMachineID) || !IsUsableID(owner.mBootID)) return name;
    return name + '.' + owner.mMachineID + '.' + owner.mBootID + '.' + std::to_string(owner.mPidNamespace) +
           '.' + std::to_string(owner.mPid) + '.' + std::to_string(owner.mProcessStart);
}

bool IsTemporaryName(std::string_view name) {
    return name.starts_with(kTemporaryPrefix);
}

bool IsTemporaryOfDead(std::string_view name, const Desktop& desktop) {
    if (!IsTemporaryName(name)) return false;
    const auto owner = ReadOwner(name);
    return owner && IsLockStale(*owner, desktop);
}

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
