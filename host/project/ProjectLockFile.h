#pragma once

#include "host/core/Export.h"
#include "host/core/RefCounted.h"
#include "host/core/Strings.h"

namespace host {

/// A project's lock. The last reference to one that this process created gives the lock up: it removes the
/// file, if it is still its own. A reference that was read says what the file said, and never removes anything.
/// UI thread.
class ZUHOST_API IProjectLockFile : public RefCounted {
public:
    ~IProjectLockFile() override;

    /// True when the lock is held: always, unless its holder is known to be gone (a process of this
    /// machine that has ended, or another boot of it).
    virtual bool IsLocked() const = 0;

    /// The name of the user that holds the lock. Empty while the volume has not told it yet; a lock
    /// file that cannot be read names an unknown user in the user's language. For a lock of the user that it
    /// was read for, which another process holds (on another machine, or in a second program here), user and
    /// machine: such a lock is in this process's way like anybody else's.
    virtual UTF16String GetLockOwner() const = 0;

    /// True when this process holds the lock for the user and identity that it was read for, so that the
    /// project can be edited here.
    virtual bool IsHeldByReader() const = 0;

    /// Reads the lock again. True when this reference was created and the lock is no longer this process's:
    /// somebody broke it, or removed its file. Then the project must not be written nor moved any more. A lost
    /// lock stays lost. Always false for a reference that was read. Throws `FileException` when the volume does
    /// not tell, with ECANCELED when the user does not want to wait for it. May wait for the volume; events go
    /// on being handled meanwhile, though no input.
    virtual bool IsLost() = 0;
};

using ProjectLockFileRef = RefPtr<IProjectLockFile>;

/// The current user's locking identity: the user name and the name of the machine. Returns false, and
/// leaves both empty, when there is none. UI thread.
ZUHOST_API bool GetProjectLockingPrefs(UTF16String& userName, UTF16String& machineName);

/// Takes the lock of the project at `projectPath` in one atomic step, whether the project exists or not; empty
/// when it could not be taken (a notice and the log say why: who holds it, or the system's reason). A lock
/// whose holder is known to be gone is taken over. A project whose lock this process holds already gives
/// another reference to the same lock, if user and machine are the same. The file goes when the last reference
/// does; if it cannot be removed then (a reader has it open), it is tried again in the background for three
/// seconds. Refused before the disk is touched: what is no project's name, a name whose lock file's name would
/// exceed 255 bytes, an empty user or machine. The only way to take a lock. May wait for the volume; events go
/// on being handled meanwhile, though no input. To give it up waits for two seconds at most. UI thread.
ZUHOST_API ProjectLockFileRef CreateProjectLockFile(const UTF16String& projectPath, const UTF16String& userName,
                                                    const UTF16String& machineName);

/// Reads the lock file of the project at `projectPath`; empty when it has none, and while the first listing of
/// its monitored folder is awaited. Answered from what this process holds itself, else from fresh facts of a
/// listed folder without touching the disk, else asks the disk: may wait for the volume.
/// Whatever stands at the lock's place (empty, huge, binary, a pipe, a link) is answered at once and
/// counts as held. UI thread.
ZUHOST_API ProjectLockFileRef ReadProjectLockFile(const UTF16String& projectPath, const UTF16String& userName,
                                                  const UTF16String& machineName);

/// Who holds the lock of the project at `projectPath`, on which machine and since when: a line for people, such
/// as a tip, localised; empty when nobody does, and for what no listed folder tells. Asks no disk and waits for
/// nothing. UI thread.
ZUHOST_API UTF16String DescribeProjectLock(const UTF16String& projectPath);

}  // namespace host
