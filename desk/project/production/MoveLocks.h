#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "desk/core/edges/Services.h"
#include "desk/project/document/ProjectLocking.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/project/lock/LockProtocol.h"

namespace desk {

/// What the locks of one folder are made of that are held together for a batch of moves.
struct SharedLock {
    /// Empty where each lock is made by itself.
    std::string mTemporary;
    LockRecord mRecord;
};

/// The locks that a batch of moves takes: those of one folder are names of one file, which is written and
/// flushed once. For a worker.
class SharedLocks {
public:
    SharedLocks() : mProtocol(*GetServices().mFileSystem, *GetServices().mDesktop) {}

    /// A lock is going to be taken in `folder`.
    void Add(const std::string& folder) { ++mFolders[folder].mCount; }
    /// Writes the files of the folders with several locks. Waits for the volume.
    void Write(const LockRecord& owner);
    const SharedLock& In(const std::string& folder) const { return mFolders.at(folder).mLock; }
    /// The lock at `path` is that of a process that is gone. Several threads at once.
    void NoteDead(const std::string& path, const std::string& nonce);
    /// Removes the locks noted since it was last called, several at once. False when there were none. Waits for
    /// the volume.
    bool RemoveDead(const LockRecord& owner);
    /// Removes the files again; the locks stay. Returns what is left, for `LockKeeper::GiveUpInBackground`.
    /// Waits for the volume.
    std::vector<LockRemains> Remove();

private:
    struct Folder {
        int mCount = 0;
        SharedLock mLock;
    };

    LockProtocol mProtocol;
    std::map<std::string, Folder> mFolders;
    std::mutex mMutex;
    /// Paths by folder and nonce.
    std::map<std::pair<std::string, std::string>, std::vector<std::string>> mDead;
    std::vector<LockRemains> mRemains;
};

/// The locks of one project at both places between which it moves. Made and destroyed on the UI thread; between
/// `Take` and `GiveUp` it belongs to a worker.
class MoveLocks {
public:
    /// Both paths normalised. Looks up what this process holds; touches no disk.
    MoveLocks(const host::UTF16String& source, const host::UTF16String& destination);

    enum class Taking {
        Taken,
        /// The project is held by `GetObstacle().mHolder`.
        Held,
        /// For the reason that `GetObstacle` names.
        NoSourceLock,
        NoDestinationLock,
        /// One of the locks is this process's own: `TakeByKeeper` decides.
        Own,
        /// One of the locks is that of a process that is gone: for `SharedLocks::NoteDead`, and to be tried
        /// again.
        Dead,
    };
    /// Takes the lock at the source, unless this process holds it already, then the one at the destination:
    /// from what the locks of these folders share, unless the lock is kept after the move. Waits for the
    /// volume: for a worker.
    /// `Dead` only where something is shared.
    Taking Take(const SharedLock& source = {}, const SharedLock& destination = {});
    /// Which lock was `Dead`.
    const std::string& GetDeadLockPath() const { return mDeadLockPath; }
    /// By a look at the disk: `Held` when somebody else holds the project, `NoSourceLock` when the volume does
    /// not tell whether this process holds it still. Takes nothing, but a lock that this process has lost to
    /// nobody: with that the project moves, and stays lost to who has it open. Waits for the volume: for a
    /// worker.
    Taking CheckSource();
    /// The same as `Take` by the lock keeper, which knows what this process holds and has held. UI thread.
    Taking TakeByKeeper();
    const ProjectLocking& GetObstacle() const { return mObstacle; }
    /// True when somebody held the project's lock before: this process or another.
    bool WasHeld() const { return mWasHeld; }
    /// Of this process.
    const LockRecord& GetOwner() const { return mSource.mRecord; }

    /// Gives up what `Take` has taken, but for the destination's lock when the project was held: that is for
    /// `KeepDestination`. Waits for the volume: for a worker.
    void GiveUp(bool isMoved);
    /// The destination's lock, for an open project that goes on there. UI thread.
    host::ProjectLockFileRef KeepDestination();
    /// Leaves what could not be given up to the lock keeper. UI thread.
    void Finish();

private:
    struct Place {
        std::string mPath;
        LockRecord mRecord;
        /// Held by `mRecord`, and to be given up.
        bool mIsTaken = false;
        /// Held by the keeper.
        HeldLockPtr mHeld;
    };

    Taking TakeAt(Place& place, const SharedLock& shared, Taking failure);
    Taking TakeByKeeperAt(Place& place, Taking failure);
    Taking Fail(const LockTaking& taking, Taking failure);
    void GiveUpAt(Place& place);

    LockProtocol mProtocol;
    Place mSource;
    Place mDestination;
    bool mWasHeld = false;
    bool mIsOwnAtDestination = false;
    /// What this process held at the source is not its any more.
    bool mIsLost = false;
    ProjectLocking mObstacle;
    std::string mDeadLockPath;
    std::vector<LockRemains> mLeft;
};

}  // namespace desk
