#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "desk/core/names/LockRecord.h"
#include "desk/project/lock/LockProtocol.h"
#include "host/core/Export.h"

namespace desk {

/// A lock that this process holds. It is given up when its last owner lets go: within two seconds, after which
/// a volume that does not answer is left to a worker. UI thread.
class ZUHOST_API HeldLock {
public:
    ~HeldLock();
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;

    const LockRecord& GetRecord() const { return mRecord; }
    /// The lock file's path, in bytes.
    const std::string& GetPath() const { return mPath; }
    /// Reads the lock again, on a worker (`AskVolume`, `LockProtocol::Check`). A lost lock stays lost; of one
    /// whose standing is unknown nothing changes. To be asked before each save and each move of the project.
    /// Throws `host::FileException` with ECANCELED when the user does not want to wait for the volume.
    LockReport Check();
    /// What the last `Check`, or `LockKeeper::NoteLoss`, found.
    bool IsLost() const { return mIsLost; }

private:
    friend class LockKeeper;
    HeldLock(std::string path, LockRecord record) : mPath(std::move(path)), mRecord(std::move(record)) {}
    void NoteLoss();

    std::string mPath;
    LockRecord mRecord;
    bool mIsLost = false;
};

using HeldLockPtr = std::shared_ptr<HeldLock>;

/// While one lives, locks are given up together: each is begun at once, and all are waited for when it goes,
/// for as long as for a single one at most. UI thread.
class ZUHOST_API ScGiveUpTogether {
public:
    ScGiveUpTogether();
    ~ScGiveUpTogether();
    /// Waits for those that have been begun, with the window alive (`RunLongWork`).
    void Wait();
    ScGiveUpTogether(const ScGiveUpTogether&) = delete;
    ScGiveUpTogether& operator=(const ScGiveUpTogether&) = delete;
};

/// The locks that this process holds, one for each project, however many refer to it. UI thread.
class ZUHOST_API LockKeeper {
public:
    static LockKeeper& Instance();

    struct Taking {
        /// Empty when the lock could not be taken.
        HeldLockPtr mLock;
        /// Why not: who holds it, or the error.
        LockTaking mResult;
    };

    /// Takes the lock at `lockPath` (bytes, normalised) for a user and a machine. A lock that this process
    /// holds already for them is shared, once it has been read again; so is one whose file came here with a
    /// moved folder, one that is just being given up, one that seemed to be lost, and one that an earlier
    /// failure left behind. Works on workers while the window lives (`RunLongWork`).
    Taking Take(const std::string& lockPath, const host::UTF16String& user, const host::UTF16String& machine);

    /// Holds the lock at `lockPath` that a worker has taken for this process by `LockProtocol::Take` with
    /// `record`. Touches no disk.
    HeldLockPtr Keep(const std::string& lockPath, const LockRecord& record);
    /// Goes on in the background with what a worker has left: locks that it took and could not give up, and
    /// `doubtful` files (`LockProtocol::TakeRemains`).
    void GiveUpInBackground(const std::vector<LockRemains>& locks, std::vector<LockRemains> doubtful);

    /// The lock that this process holds at `lockPath`; empty when it holds none. Touches no disk.
    HeldLockPtr Find(const std::string& lockPath) const;
    bool HoldsAny() const { return !mLocks.empty(); }
    /// The lock with this nonce that this process holds at `lockPath` was found lost: it stays lost. False when
    /// this process holds none such there any more. Touches no disk.
    bool NoteLoss(const std::string& lockPath, const std::string& nonce);
    /// True while this process holds a lock with this nonce, wherever it stands, and has not lost it. Touches
    /// no disk.
    bool Holds(const std::string& nonce) const;

    /// Tries again for at most `patience` to give up what could not be given up yet, and returns when all is,
    /// or the time is over: for the end of the program, after which nobody does. Needs no events.
    void FinishGivingUp(std::chrono::milliseconds patience);

    /// The locks at and below `oldFolder` (bytes, normalised) have moved with it to `newFolder`: they keep
    /// their nonces and are from now on looked for there. Call it after a folder has been renamed or moved,
    /// before anything asks for locks at the new place. Returns where each stood: a move that has left
    /// something behind may have left the lock's file too. Touches no disk.
    std::vector<LockRemains> FollowMove(const std::string& oldFolder, const std::string& newFolder);

private:
    friend class HeldLock;
    friend class ScGiveUpTogether;
    struct GivingUp;

    Taking TakeOrThrow(const std::string& lockPath, const LockRecord& mine);
    Taking TakeOnce(const std::string& lockPath, const LockRecord& mine);
    HeldLockPtr TakeBack(const std::string& lockPath, const LockRecord& found, const LockRecord& wanted);
    /// The lock with this nonce and the name of `lockPath`, in whichever folder.
    HeldLockPtr FindWherever(const std::string& lockPath, const std::string& nonce) const;
    void Forget(const HeldLock& lock);
    void GiveUp(const HeldLock& lock);
    void AwaitFirstAttempts();
    void GiveUpLater(std::vector<LockRemains> remains);
    /// Empty when nobody could carry it out.
    std::shared_ptr<GivingUp> AddGivingUp(LockRemains remains, bool isDoubtful);
    /// What a worker's next attempt comes to.
    std::future<LockRelease> Try(const std::shared_ptr<GivingUp>& task,
                                 const std::function<void(LockRelease)>& then = {});
    /// Ready when a worker has tried; what follows from it follows on the UI thread.
    std::future<LockRelease> TryToGiveUp(const std::shared_ptr<GivingUp>& task);
    void TryLater(const std::shared_ptr<GivingUp>& task);
    void Note(const std::shared_ptr<GivingUp>& task, LockRelease release);
    void End(const std::shared_ptr<GivingUp>& task, LockRelease release);

    std::map<std::string, std::weak_ptr<HeldLock>> mLocks;
    std::vector<std::shared_ptr<GivingUp>> mGivingUp;
    /// The window stands still for them.
    std::vector<std::future<LockRelease>> mFirstAttempts;
    int mTogetherScopes = 0;
};

}  // namespace desk
