#pragma once

#include "host/core/Export.h"
#include "host/core/RefCounted.h"
#include "host/core/Strings.h"

namespace host {

/// What a project's lock file says. A reference that was read never removes anything. UI thread.
class ZUHOST_API IProjectLockFile : public RefCounted {
public:
    ~IProjectLockFile() override;

    /// True when the lock is held: always, unless its holder is known to be gone (a process of this
    /// machine that has ended, or another boot of it).
    virtual bool IsLocked() const = 0;

    /// The name of the user that holds the lock. Empty while the volume has not told it yet; a lock
    /// file that cannot be read names an unknown user in the user's language.
    virtual UTF16String GetLockOwner() const = 0;

    /// True when the lock is held by the user and identity that it was read for, so that the project
    /// can be edited here.
    virtual bool IsHeldByReader() const = 0;
};

using ProjectLockFileRef = RefPtr<IProjectLockFile>;

/// The current user's locking identity: the user name and the name of the machine. Returns false, and
/// leaves both empty, when there is none. UI thread.
ZUHOST_API bool GetProjectLockingPrefs(UTF16String& userName, UTF16String& machineName);

/// Reads the lock file of the project at `projectPath`; empty when it has none. Answered from fresh
/// facts of a listed folder without touching the disk, else asks the disk: may wait for the volume.
/// Whatever stands at the lock's place (empty, huge, binary, a pipe, a link) is answered at once and
/// counts as held. UI thread.
ZUHOST_API ProjectLockFileRef ReadProjectLockFile(const UTF16String& projectPath, const UTF16String& userName,
                                                  const UTF16String& machineName);

}  // namespace host
