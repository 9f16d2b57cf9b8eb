#include "desk/project/lock/StrayLocks.h"

#include <cerrno>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "desk/core/durable/Presence.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/LockRecord.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

constexpr std::size_t kMostFolders = 300;

enum class State { Stray, BeingRemoved, Removed };

/// Nonce, and name of the file.
using Identity = std::pair<std::string, std::string>;

Identity IdentityOf(const std::string& lockPath, const std::string& nonce) {
    return {nonce, NameOf(lockPath)};
}

struct StrayLocks {
    std::mutex mMutex;
    std::map<Identity, State> mStates;
};

StrayLocks& Strays() {
    static StrayLocks& strays = *new StrayLocks;
    return strays;
}

/// The names of the folders in `folder` that show; absent when it is not there.
std::optional<std::vector<std::string>> ListFolders(FileSystem& fileSystem, const std::string& folder) {
    std::vector<std::string> names;
    try {
        for (FolderEntry& entry : fileSystem.ListFolder(folder)) {
            const bool mayBeFolder = entry.mKind == ItemKind::Folder || entry.mKind == ItemKind::Unknown;
            if (mayBeFolder && !entry.mName.starts_with('.') && names.size() < kMostFolders)
                names.push_back(std::move(entry.mName));
        }
    } catch (const host::FileException& exception) {
        if (IsAbsence(exception.SystemError())) return {};
    }
    return names;
}

bool IsFolderThere(FileSystem& fileSystem, const std::string& folder) {
    try {
        fileSystem.TryFolder(folder);
    } catch (const host::FileException& exception) {
        return !IsAbsence(exception.SystemError());
    }
    return true;
}

}  // namespace

void NoteStrayLock(const std::string& lockPath, const std::string& nonce) {
    const std::lock_guard lock(Strays().mMutex);
    Strays().mStates.try_emplace(IdentityOf(lockPath, nonce), State::Stray);
}

bool IsStrayNonce(const std::string& nonce) {
    const std::lock_guard lock(Strays().mMutex);
    const auto first = Strays().mStates.lower_bound({nonce, {}});
    return first != Strays().mStates.end() && first->first.first == nonce;
}

bool IsStrayLockRemoved(const std::string& lockPath, const std::string& nonce) {
    const std::lock_guard lock(Strays().mMutex);
    const auto entry = Strays().mStates.find(IdentityOf(lockPath, nonce));
    return entry != Strays().mStates.end() && entry->second == State::Removed;
}

bool ForgetStrayLock(const std::string& lockPath, const std::string& nonce) {
    const std::lock_guard lock(Strays().mMutex);
    auto& states = Strays().mStates;
    const auto entry = states.find(IdentityOf(lockPath, nonce));
    if (entry == states.end()) return true;
    if (entry->second == State::BeingRemoved) return false;
    states.erase(entry);
    return true;
}

bool BeginStrayRemoval(const std::string& lockPath, const std::string& nonce) {
    const std::lock_guard lock(Strays().mMutex);
    auto& states = Strays().mStates;
    const auto entry = states.find(IdentityOf(lockPath, nonce));
    return entry != states.end() && std::exchange(entry->second, State::BeingRemoved) != State::BeingRemoved;
}

void EndStrayRemoval(const std::string& lockPath, const std::string& nonce, bool isRemoved) {
    const std::lock_guard lock(Strays().mMutex);
    Strays().mStates[IdentityOf(lockPath, nonce)] = isRemoved ? State::Removed : State::Stray;
}

std::string FindMovedLock(FileSystem& fileSystem, const std::string& lockPath, const std::string& nonce) {
    std::string folder = FolderOf(lockPath);
    std::string below = NameOf(lockPath);
    if (IsFolderThere(fileSystem, folder)) return {};
    // What was renamed is the highest folder that is not there.
    for (; folder != "/" && folder != "."; folder = FolderOf(folder)) {
        if (const auto siblings = ListFolders(fileSystem, FolderOf(folder))) {
            for (const std::string& sibling : *siblings) {
                std::string path = FolderOf(folder) + '/' + sibling + '/' + below;
                const auto record = ReadLockRecord(fileSystem, path);
                if (record && record->mIsReadable && record->mNonce == nonce) return path;
            }
            break;
        }
        below = NameOf(folder) + '/' + below;
    }
    return {};
}

}  // namespace desk
