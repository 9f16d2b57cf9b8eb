#pragma once

#include <memory>
#include <optional>
#include <string>

#include "desk/core/names/LockRecord.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

class HeldLock;
struct ItemFacts;

/// Who holds a project's lock, for this process. Rows, menus, moves, folders and the trash all ask here, and so
/// agree.
enum class LockHolder {
    /// There is no lock file, its holder is known to be gone, or this process has given the lock up or lost it.
    Nobody,
    ThisProcess,
    /// Another process: another user's, the same user's on another machine or in a second program here, or
    /// nobody can tell whose.
    AnotherProcess,
    /// There is a lock file, and the volume has not told yet what it says.
    NotTold,
};

/// The rule: true when a lock file that says `record` keeps this process from changing the project.
/// `heldNonce` is that of the lock that this process holds on it, if any. Any thread; reads /proc only.
ZUHOST_API bool IsHeldElsewhere(const LockRecord& record, const std::string& heldNonce = {});

/// The same with the locks that this process holds, wherever they stand. UI thread; reads /proc only.
ZUHOST_API LockHolder FindLockHolder(const LockRecord& record);

/// The lock that this process holds on the project at `path` (normalised), under whichever name it has the
/// project open, and has not lost; empty when it holds none. UI thread; touches no disk.
ZUHOST_API std::shared_ptr<HeldLock> FindHeldLock(const host::UTF16String& path);

/// Who holds a project.
struct ProjectHolder {
    LockHolder mWho = LockHolder::Nobody;
    /// What the lock file says; unreadable when there is none, or when it is not known.
    LockRecord mRecord;
};

/// Who holds the project at `path` (normalised), in this order: by what this process holds itself, by fresh
/// facts of a listed folder, by the disk. UI thread; may wait for the volume.
ZUHOST_API ProjectHolder FindProjectHolder(const host::UTF16String& path);

/// The same without the disk: absent when no listing tells. UI thread.
ZUHOST_API std::optional<ProjectHolder> FindKnownProjectHolder(const host::UTF16String& path);

/// The same for a project of which the listing of its folder tells `facts`. UI thread.
ZUHOST_API ProjectHolder FindProjectHolder(const host::UTF16String& path, const ItemFacts& facts);

}  // namespace desk
