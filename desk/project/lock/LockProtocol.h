#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/names/LockRecord.h"
#include "host/core/Export.h"

namespace desk {

class Desktop;

/// What came of taking a lock.
struct LockTaking {
    enum class Outcome {
        /// The lock is ours.
        Ours,
        /// Somebody else holds it, or something that cannot be read stands in its place.
        Held,
        /// It could not be taken, for the reason that `mSystemError` names.
        Failed,
    };
    Outcome mOutcome = Outcome::Failed;
    /// Our record, or the holder's.
    LockRecord mRecord;
    /// An errno value.
    int mSystemError = 0;
};

/// What stands at a lock's place, byte for byte, so that it can be told whether it is still the same.
struct LockSnapshot {
    /// Absent for what is no readable regular file of at most `kLockFileLimit` bytes.
    std::optional<std::string> mBytes;
    ItemStatus mStatus;
    /// The errno for which the volume does not tell; then nothing else is known. 0 otherwise.
    int mSystemError = 0;
};

enum class LockRelease {
    /// The lock file is gone.
    Done,
    /// The lock was not (or is no longer) ours; nothing was removed.
    NotOurs,
    /// It could not be removed now: a reader has it open, somebody is about to break it, or the volume refuses.
    /// Try again.
    Retry,
    /// It is not where it was, and neither is what it belongs to: that was moved, or its volume is not mounted.
    /// Look elsewhere, and try again.
    Away,
};

enum class LockStanding {
    Ours,
    /// Somebody else's lock stands in its place, or none beside its project: it was taken over or removed.
    Lost,
    /// The volume refuses to tell, or what the lock belongs to is away: it may well be there.
    Unknown,
};

/// What has become of a lock of ours.
struct LockReport {
    /// Why its standing is unknown.
    enum class Trouble {
        None,
        /// For the reason that `mSystemError` names.
        Refused,
        /// Something stands there that is no record.
        Unreadable,
        /// Its folder is not there: it was moved or removed, or its volume is not mounted.
        FolderAway,
        /// Its folder holds neither it nor its project: they were moved or removed, or the folder is the empty
        /// place of a volume.
        ProjectAway,
    };
    LockStanding mStanding = LockStanding::Unknown;
    /// Who has a lost lock now; unreadable when nobody has.
    LockRecord mHolder;
    Trouble mTrouble = Trouble::None;
    /// An errno value.
    int mSystemError = 0;

    bool IsAway() const { return mTrouble == Trouble::FolderAway || mTrouble == Trouble::ProjectAway; }
};

/// What came of breaking a lock.
struct LockBreaking {
    enum class Outcome {
        Broken,
        /// The lock is not what the person saw any more; nothing was removed.
        Changed,
        /// Somebody else is about to break it (`mGuard`) or was when they died on another machine.
        Guarded,
        /// The person has changed their mind; nothing was removed.
        Cancelled,
        /// For the reason that `mSystemError` names.
        Failed,
    };
    Outcome mOutcome = Outcome::Failed;
    LockRecord mGuard;
    int mSystemError = 0;
};

/// A file of ours that could not be removed.
struct LockRemains {
    std::string mPath;
    /// Of a lock or guard; empty for a temporary.
    std::string mNonce;
    /// The temporary of a lock, or guard, that may have been made and not written: what stands there then is
    /// told to be ours by this alone. Else empty.
    std::string mTemporary;
};

/// For how long a lock at `path` (bytes) must stay as it is before somebody else removes it: three seconds, and
/// twice the time that its volume caches. May wait for the volume; any thread; never throws.
ZUHOST_API std::chrono::seconds FindTimeToBreak(const std::string& path) noexcept;

/// Takes, gives up and breaks lock files on shared volumes, as `docs/locking.md` describes. Every operation may
/// wait for the volume; none throws. Any thread, one at a time.
class ZUHOST_API LockProtocol {
public:
    /// Neither is owned.
    LockProtocol(FileSystem& fileSystem, const Desktop& desktop);

    /// Takes the lock at `lockPath` for `mine` in one atomic step: the whole record is written to a temporary
    /// file, which is linked to the lock's name. After any error the lock is read again, since a volume may
    /// fail a call that it has carried out. A lock whose holder is known to be gone is taken over; of several
    /// takers one wins.
    LockTaking Take(const std::string& lockPath, const LockRecord& mine);

    /// The same for many locks of one folder that are given up together, before any of them counts as stray:
    /// each is a second name of `temporary`, which holds `mine` (`WriteShared`). Where that does not work, as
    /// `Take`. The lock of a holder that is gone is left as it is: `RemoveDead` removes all of that holder's.
    LockTaking TakeShared(const std::string& temporary, const std::string& lockPath, const LockRecord& mine);
    /// Writes `mine` to a hidden file of `folder` and returns its path; empty when that cannot be done.
    std::string WriteShared(const std::string& folder, const LockRecord& mine);
    void RemoveShared(const std::string& temporary);

    /// Removes the lock at `lockPath` if it still bears `nonce` and nobody guards it. One that is not there any
    /// more, and one that is another's now, counts as stray (`NoteStrayLock`).
    LockRelease Release(const std::string& lockPath, const std::string& nonce);
    /// Removes what a move to another volume has left of a lock at `lockPath`, if that bears `nonce`: the lock
    /// itself is held on, where it stands now. Tries only.
    void RemoveLeftBehind(const std::string& lockPath, const std::string& nonce);

    /// Reads the lock again: the one judgement of whether it is lost. It is only when somebody else's record
    /// stands there, or a fresh listing of its folder has its project and not it. A volume may show old content
    /// for a moment: a loss is looked at three times within 200 ms, and once more when what the system keeps of
    /// the volume is forgotten (`FileSystem::WaitForCaches`).
    LockReport Check(const std::string& lockPath, const std::string& nonce);

    /// Absent when nothing stands there.
    std::optional<LockSnapshot> Look(const std::string& lockPath);

    /// Removes somebody else's lock, after a person has been shown it: guards it for `mine`, calls `wait`
    /// (which takes at least three seconds and twice the time that the volume caches, and returns false to give
    /// up), and removes it if it is still what the person saw. A guard that is in the way can be broken the
    /// same way.
    LockBreaking Break(const std::string& lockPath, const LockSnapshot& seen, const LockRecord& mine,
                       const std::function<bool()>& wait);
    /// Where the guard of a lock stands that was seen so.
    static std::string FindGuardPath(const std::string& lockPath, const LockSnapshot& seen);

    /// Removes the locks, guards or temporary files at `paths` that bear `nonce`, whose holder is gone (the
    /// caller has made sure), in its holder's place: all of one folder, several at once, under one guard.
    /// Returns those that are gone: none when somebody else is about to remove them.
    std::vector<std::string> RemoveDead(const std::vector<std::string>& paths, const std::string& nonce,
                                        const LockRecord& mine);

    /// The files that earlier operations have left or may have left, against their will: temporary files,
    /// guards, locks. To be removed by `RemoveRemains` when the volume has recovered.
    std::vector<LockRemains> TakeRemains();
    /// Removes a file if it stands there and bears the nonce.
    LockRelease RemoveRemains(const LockRemains& remains);
    /// Tries once to remove what earlier operations have left, and leaves the rest to sweeps: it counts as
    /// stray.
    void DropRemains();

private:
    struct Content;

    Content Read(const std::string& path);
    LockReport LookAtOwn(const std::string& lockPath, const std::string& nonce);
    LockReport FindOutAboutAbsence(const std::string& lockPath);
    bool IsDead(const LockTaking& taking) const;
    bool IsWorthAnother(const LockTaking& taking) const;
    LockTaking TakeForSure(const std::string& lockPath, const LockRecord& mine);
    bool RemoveOwnHollow(const std::string& lockPath, const LockRecord& mine);
    LockTaking TakeOnce(const std::string& lockPath, const LockRecord& mine);
    LockTaking Judge(const std::string& lockPath, const LockRecord& mine, int systemError);
    void Settle(const LockTaking& taking, int systemError, bool isWritten, LockRemains attempt);
    int WriteTemporary(const std::string& path, const std::string& bytes);
    LockTaking TakeGuard(const std::string& guardPath, const LockRecord& guard, int depth);
    std::vector<std::string> RemoveDead(const std::vector<std::string>& paths, const std::string& nonce,
                                        const LockRecord& mine, int depth);
    bool RemoveGuarded(const std::string& path, const std::string& nonce);
    bool IsGuarded(const std::string& lockPath, const std::string& nonce);
    int RemoveOwn(const std::string& path, const std::string& nonce);
    void RemoveOwnOrKeep(const std::string& path, const std::string& nonce);

    FileSystem& mFileSystem;
    const Desktop& mDesktop;
    std::vector<LockRemains> mRemains;
};

}  // namespace desk
