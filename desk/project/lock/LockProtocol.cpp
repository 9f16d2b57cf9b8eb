#include "desk/project/lock/LockProtocol.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <thread>
#include <utility>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/Presence.h"
#include "desk/core/durable/VolumeProperties.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/ProcessFacts.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/StrayLocks.h"

namespace desk {

namespace {

using std::chrono::milliseconds;

constexpr mode_t kLockMode = 0644;
/// How often a call is repeated that a volume has failed.
constexpr int kTries = 4;
/// How often and at what distance what contradicts an earlier answer is looked at.
constexpr int kLooks = 3;
constexpr milliseconds kBetweenLooks(100);
/// How long somebody else on this machine may take to remove a dead lock.
constexpr int kMostRounds = 40;
constexpr milliseconds kBetweenRounds(25);
/// Guards of guards: each stands for a process that was killed while it removed the one before.
constexpr int kDeepestGuard = 8;
constexpr std::size_t kLongestName = 255;

/// Where the guard stands that gives the right to remove, in its owner's place, a lock with this nonce: beside
/// the lock. Since a nonce never comes back, such a right never extends to a later lock.
std::string GetGuardPath(const std::string& lockPath, const std::string& nonce) {
    return FolderOf(lockPath) + '/' + GetGuardName(nonce);
}

/// True for errors that tell what stands there (no regular file, too large, not ours to read), as against those
/// of a volume that does not answer.
bool IsAnswer(int error) {
    return error == EFBIG || error == ELOOP || error == EINVAL || error == EISDIR || error == EACCES ||
           error == EPERM;
}

bool HasName(const std::vector<FolderEntry>& entries, const std::string& name) {
    return std::ranges::find(entries, name, &FolderEntry::mName) != entries.end();
}

/// What is no record, which never comes back, is told by its time too.
bool IsSame(const LockSnapshot& found, const LockSnapshot& seen) {
    return found.mSystemError == 0 && found.mBytes == seen.mBytes &&
           found.mStatus.mKind == seen.mStatus.mKind &&
           (ParseLockRecord(seen.mBytes.value_or("")).mIsReadable ||
            found.mStatus.mModified == seen.mStatus.mModified);
}

}  // namespace

/// What stands at a path.
struct LockProtocol::Content {
    bool mIsThere = true;
    /// Absent when it cannot be read.
    std::optional<std::string> mBytes;
    LockRecord mRecord;
    /// Why it cannot be read: the volume does not answer. 0 otherwise.
    int mSystemError = 0;
    /// The same, and for what the volume refuses to give.
    int mRefusal = 0;

    bool Bears(const std::string& nonce) const { return mRecord.mIsReadable && mRecord.mNonce == nonce; }
    bool IsForeign(const std::string& nonce) const { return mRecord.mIsReadable && mRecord.mNonce != nonce; }
};

std::chrono::seconds FindTimeToBreak(const std::string& path) noexcept {
    constexpr std::chrono::seconds kShortest(3);
    // Of a volume that cannot be told: the longest that network file systems keep names by themselves.
    constexpr std::chrono::seconds kLongestUsualCacheTime(60);
    return std::max(kShortest, 2 * FindCacheTime(FolderOf(path)).value_or(kLongestUsualCacheTime));
}

LockProtocol::LockProtocol(FileSystem& fileSystem, const Desktop& desktop)
    : mFileSystem(fileSystem), mDesktop(desktop) {}

LockTaking LockProtocol::Take(const std::string& lockPath, const LockRecord& mine) {
    const bool isGoodRecord = ParseLockRecord(WriteLockRecord(mine)).mIsReadable;
    if (!isGoodRecord) return {LockTaking::Outcome::Failed, {}, EINVAL};
    if (NameOf(lockPath).size() > kLongestName) return {LockTaking::Outcome::Failed, {}, ENAMETOOLONG};
    LockTaking taking = TakeForSure(lockPath, mine);
    for (int round = 0; round < kMostRounds && IsWorthAnother(taking); ++round) {
        const bool isStale = taking.mOutcome == LockTaking::Outcome::Held;
        if (isStale && RemoveDead({lockPath}, taking.mRecord.mNonce, mine).empty())
            std::this_thread::sleep_for(kBetweenRounds);
        taking = TakeForSure(lockPath, mine);
    }
    if (taking.mOutcome == LockTaking::Outcome::Ours)
        std::erase_if(mRemains, [&](const LockRemains& remains) { return remains.mPath == lockPath; });
    return taking;
}

LockTaking LockProtocol::TakeShared(const std::string& temporary, const std::string& lockPath,
                                    const LockRecord& mine) {
    if (temporary.empty()) return Take(lockPath, mine);
    const int error = ErrorOf([&] { mFileSystem.Link(temporary, lockPath); });
    const LockTaking taking = Judge(lockPath, mine, error);
    if (taking.mOutcome == LockTaking::Outcome::Ours) return taking;
    // The locks of a batch have one guard: their takers would only wait for each other.
    if (error == EEXIST && IsDead(taking)) return taking;
    // It may come to light yet.
    if (error != EEXIST && !HasNoLinks(error)) mRemains.push_back({lockPath, mine.mNonce, {}});
    return Take(lockPath, mine);
}

std::string LockProtocol::WriteShared(const std::string& folder, const LockRecord& mine) {
    std::string path = folder + '/' + MakeTemporaryName(mine);
    return WriteTemporary(path, WriteLockRecord(mine)) == 0 ? path : std::string();
}

void LockProtocol::RemoveShared(const std::string& temporary) {
    if (!temporary.empty()) RemoveOwnOrKeep(temporary, {});
}

bool LockProtocol::IsDead(const LockTaking& taking) const {
    return taking.mOutcome == LockTaking::Outcome::Held && IsLockStale(taking.mRecord, mDesktop);
}

/// The holder is gone, or has given the lock up between our attempt and our look.
bool LockProtocol::IsWorthAnother(const LockTaking& taking) const {
    if (taking.mOutcome == LockTaking::Outcome::Failed) return taking.mSystemError == EEXIST;
    return IsDead(taking);
}

/// After a lost reply the lock may be ours although nothing, or an empty file, seems to stand there: that is
/// found out when the caches have run out.
LockTaking LockProtocol::TakeForSure(const std::string& lockPath, const LockRecord& mine) {
    LockTaking taking = TakeOnce(lockPath, mine);
    const auto doubt = std::ranges::find_if(mRemains, [&](const LockRemains& remains) {
        return remains.mPath == lockPath && remains.mNonce == mine.mNonce;
    });
    if (doubt == mRemains.end()) return taking;
    const std::string temporary = doubt->mTemporary;
    const bool isFresh = mFileSystem.WaitForCaches(FolderOf(lockPath));
    const Content found = Read(lockPath);
    if (found.Bears(mine.mNonce)) {
        if (!temporary.empty()) RemoveOwnOrKeep(temporary, {});
        return {LockTaking::Outcome::Ours, mine, 0};
    }
    if (found.mRecord.mIsReadable) return {LockTaking::Outcome::Held, found.mRecord, 0};
    return isFresh && !temporary.empty() && RemoveOwnHollow(lockPath, mine) ? TakeOnce(lockPath, mine) : taking;
}

/// Removes a lock that only this attempt can have made, and that was not written to its end. Whoever makes a
/// lock has a temporary beside it until it is written: where only ours stands, nobody else is making one.
bool LockProtocol::RemoveOwnHollow(const std::string& lockPath, const LockRecord& mine) {
    const std::string name = NameOf(lockPath);
    const std::string own = MakeTemporaryNameFor(TemporaryPurpose::Lock, name, mine);
    const auto isOurAttemptAlone = [&] {
        std::vector<FolderEntry> entries;
        if (ErrorOf([&] { entries = mFileSystem.ListFolder(FolderOf(lockPath)); }) != 0) return false;
        return HasName(entries, own) && std::ranges::none_of(entries, [&](const FolderEntry& entry) {
                   const auto temporary = ParseTargetedTemporary(entry.mName);
                   return entry.mName != own && temporary && temporary->IsFor(name);
               });
    };
    const std::optional<LockSnapshot> seen = Look(lockPath);
    return seen && seen->mBytes && WriteLockRecord(mine).starts_with(*seen->mBytes) &&
           Break(lockPath, *seen, mine, isOurAttemptAlone).mOutcome == LockBreaking::Outcome::Broken;
}

LockTaking LockProtocol::TakeOnce(const std::string& lockPath, const LockRecord& mine) {
    const std::string name = MakeTemporaryNameFor(TemporaryPurpose::Lock, NameOf(lockPath), mine);
    const std::string temporary = FolderOf(lockPath) + '/' + name;
    const std::string bytes = WriteLockRecord(mine);
    if (const int error = WriteTemporary(temporary, bytes)) return {LockTaking::Outcome::Failed, {}, error};
    int error = ErrorOf([&] { mFileSystem.Link(temporary, lockPath); });
    LockTaking taking = Judge(lockPath, mine, error);
    const bool isWritten = taking.mOutcome == LockTaking::Outcome::Failed && HasNoLinks(error);
    if (isWritten) {
        error = ErrorOf([&] { mFileSystem.CreateNewFile(lockPath, bytes, kLockMode); });
        taking = Judge(lockPath, mine, error);
    }
    Settle(taking, error, isWritten, {lockPath, mine.mNonce, temporary});
    return taking;
}

/// Whatever was read: after an error, ours may yet come to light. What was to be written in its place may stand
/// there empty; then the temporary stays, which alone tells that it is ours.
void LockProtocol::Settle(const LockTaking& taking, int systemError, bool isWritten, LockRemains attempt) {
    const bool isOurs = taking.mOutcome == LockTaking::Outcome::Ours;
    const bool isDoubtful = !isOurs && systemError != EEXIST && !HasNoLinks(systemError);
    const bool mayBeEmpty = isDoubtful && isWritten && systemError != 0 && !taking.mRecord.mIsReadable;
    // The nonce is the lock's, which may be held: a temporary that stays is no stray of that.
    if (!mayBeEmpty) RemoveOwnOrKeep(std::exchange(attempt.mTemporary, {}), {});
    if (isDoubtful) mRemains.push_back(std::move(attempt));
}

/// What an attempt came to, by what stands at the lock's place now: errors lie, and so do successes.
LockTaking LockProtocol::Judge(const std::string& lockPath, const LockRecord& mine, int systemError) {
    Content found = Read(lockPath);
    // After a success, somebody else's record may be old content that the volume still shows.
    for (int look = 1; look < kLooks && systemError == 0 && found.IsForeign(mine.mNonce); ++look) {
        std::this_thread::sleep_for(kBetweenLooks);
        found = Read(lockPath);
    }
    if (found.Bears(mine.mNonce)) return {LockTaking::Outcome::Ours, mine, 0};
    if (systemError == 0 && !found.mRecord.mIsReadable) return {LockTaking::Outcome::Ours, mine, 0};
    if (found.mIsThere && found.mSystemError == 0) return {LockTaking::Outcome::Held, found.mRecord, 0};
    return {LockTaking::Outcome::Failed, {}, systemError};
}

LockProtocol::Content LockProtocol::Read(const std::string& path) {
    Content content;
    for (int tries = 0; tries < kTries; ++tries) {
        std::string bytes;
        const int error = ErrorOf([&] { bytes = mFileSystem.ReadSmallFile(path, kLockFileLimit); });
        content.mSystemError = error;
        if (error == 0) {
            content.mRecord = ParseLockRecord(bytes);
            content.mBytes = std::move(bytes);
        } else if (IsAbsence(error)) {
            content.mIsThere = false;
        }
        content.mRefusal = error == EFBIG || error == ELOOP || error == EINVAL || error == EISDIR ? 0 : error;
        if (error == 0 || !content.mIsThere || IsAnswer(error)) {
            content.mSystemError = 0;
            return content;
        }
    }
    return content;
}

/// Writes the record to a name that nobody else can have chosen. Returns 0 or an errno.
int LockProtocol::WriteTemporary(const std::string& path, const std::string& bytes) {
    int error = 0;
    for (int tries = 0; tries < 2; ++tries) {
        error = ErrorOf([&] { mFileSystem.CreateNewFile(path, bytes, kLockMode); });
        if (error == 0 || Read(path).mBytes == bytes) return 0;
        RemoveOwnOrKeep(path, {});
        // A name's length, a missing folder, a want of rights do not change.
        if (error != EEXIST && error != EIO && error != EINTR && error != EAGAIN) break;
    }
    return error;
}

LockRelease LockProtocol::Release(const std::string& lockPath, const std::string& nonce) {
    const Content found = Read(lockPath);
    if (found.IsForeign(nonce)) {
        NoteStrayLock(lockPath, nonce);
        return LockRelease::NotOurs;
    }
    int error = ENOENT;
    if (found.mIsThere) {
        if (!found.Bears(nonce) || IsGuarded(lockPath, nonce)) return LockRelease::Retry;
        error = RemoveOwn(lockPath, nonce);
    }
    if (error == 0) return LockRelease::Done;
    if (error != ENOENT) return LockRelease::Retry;
    // On its own, that nothing stands there says nothing about where the lock is now.
    NoteStrayLock(lockPath, nonce);
    const LockReport report = FindOutAboutAbsence(lockPath);
    // A repeated call after a lost reply says so too: what was there just now, in a folder that is still there.
    const bool isRemoved = found.mIsThere && report.mTrouble == LockReport::Trouble::ProjectAway;
    if (isRemoved || report.mStanding == LockStanding::Lost) return LockRelease::Done;
    return report.IsAway() ? LockRelease::Away : LockRelease::Retry;
}

void LockProtocol::RemoveLeftBehind(const std::string& lockPath, const std::string& nonce) {
    if (const Content found = Read(lockPath); found.mIsThere && found.Bears(nonce)) RemoveOwn(lockPath, nonce);
}

/// Removes a file that bears `nonce`, or a temporary file, whatever the volume answers. Returns 0 once it is
/// gone or no longer bears it, or an errno; ENOENT when nothing stood there, whoever has removed or moved it.
int LockProtocol::RemoveOwn(const std::string& path, const std::string& nonce) {
    const bool isTemporary = IsTemporaryName(NameOf(path));
    int error = 0;
    for (int tries = 0; tries < kTries; ++tries) {
        error = ErrorOf([&] { mFileSystem.RemoveFile(path); });
        if (error == 0 || error == ENOENT) return error;
        if (isTemporary) continue;
        const Content found = Read(path);
        if (!found.mIsThere) return ENOENT;
        if (found.IsForeign(nonce)) return 0;
        if (!found.Bears(nonce)) return error;
    }
    return error;
}

void LockProtocol::RemoveOwnOrKeep(const std::string& path, const std::string& nonce) {
    const int error = RemoveOwn(path, nonce);
    if (error != 0 && error != ENOENT) mRemains.push_back({path, nonce, {}});
}

/// A guard that cannot be read counts.
bool LockProtocol::IsGuarded(const std::string& lockPath, const std::string& nonce) {
    const Content guard = Read(GetGuardPath(lockPath, nonce));
    return guard.mIsThere && !IsLockStale(guard.mRecord, mDesktop);
}

LockTaking LockProtocol::TakeGuard(const std::string& guardPath, const LockRecord& guard, int depth) {
    LockTaking taking = TakeOnce(guardPath, guard);
    if (IsDead(taking) && depth < kDeepestGuard &&
        !RemoveDead({guardPath}, taking.mRecord.mNonce, guard, depth + 1).empty())
        taking = TakeOnce(guardPath, guard);
    return taking;
}

std::vector<std::string> LockProtocol::RemoveDead(const std::vector<std::string>& paths,
                                                  const std::string& nonce, const LockRecord& mine) {
    return RemoveDead(paths, nonce, mine, 0);
}

/// While we hold the guard, nobody else may remove what bears the nonce.
std::vector<std::string> LockProtocol::RemoveDead(const std::vector<std::string>& paths,
                                                  const std::string& nonce, const LockRecord& mine, int depth) {
    LockRecord guard = mine;
    guard.mNonce = MakeNonce();
    const std::string guardPath = GetGuardPath(paths.front(), nonce);
    if (TakeGuard(guardPath, guard, depth).mOutcome != LockTaking::Outcome::Ours) return {};
    std::vector<std::string> removed;
    std::mutex mutex;
    RunShared(paths.size(), [&](std::size_t index) {
        if (!RemoveGuarded(paths[index], nonce)) return;
        const std::lock_guard lock(mutex);
        removed.push_back(paths[index]);
    });
    RemoveOwnOrKeep(guardPath, guard.mNonce);
    return removed;
}

/// On several threads at once. True when the file is gone.
bool LockProtocol::RemoveGuarded(const std::string& path, const std::string& nonce) {
    const Content found = Read(path);
    if (!found.Bears(nonce)) return !found.mIsThere || found.IsForeign(nonce);
    const int error = RemoveOwn(path, nonce);
    return error == 0 || error == ENOENT;
}

std::optional<LockSnapshot> LockProtocol::Look(const std::string& lockPath) {
    LockSnapshot snapshot;
    snapshot.mSystemError = ErrorOf([&] { snapshot.mStatus = mFileSystem.Status(lockPath, false); });
    if (IsAbsence(snapshot.mSystemError)) return std::nullopt;
    if (snapshot.mSystemError != 0) return snapshot;
    const Content content = Read(lockPath);
    if (!content.mIsThere) return std::nullopt;
    snapshot.mBytes = content.mBytes;
    snapshot.mSystemError = content.mSystemError;
    return snapshot;
}

std::string LockProtocol::FindGuardPath(const std::string& lockPath, const LockSnapshot& seen) {
    return FolderOf(lockPath) + '/' + GetGuardName(NameOf(lockPath), seen.mBytes.value_or(""));
}

LockBreaking LockProtocol::Break(const std::string& lockPath, const LockSnapshot& seen, const LockRecord& mine,
                                 const std::function<bool()>& wait) {
    LockRecord guard = mine;
    guard.mNonce = MakeNonce();
    const std::string guardPath = FindGuardPath(lockPath, seen);
    const LockTaking guarding = TakeGuard(guardPath, guard, 0);
    if (guarding.mOutcome == LockTaking::Outcome::Held)
        return {LockBreaking::Outcome::Guarded, guarding.mRecord, 0};
    if (guarding.mOutcome == LockTaking::Outcome::Failed)
        return {LockBreaking::Outcome::Failed, {}, guarding.mSystemError};
    if (!wait()) {
        RemoveOwnOrKeep(guardPath, guard.mNonce);
        return {LockBreaking::Outcome::Cancelled, {}, 0};
    }
    LockBreaking breaking{LockBreaking::Outcome::Changed, {}, 0};
    const std::optional<LockSnapshot> found = Look(lockPath);
    if (found && found->mSystemError != 0) breaking = {LockBreaking::Outcome::Failed, {}, found->mSystemError};
    // A guard that was itself broken meanwhile gives no right.
    if (found && IsSame(*found, seen) && Check(guardPath, guard.mNonce).mStanding == LockStanding::Ours) {
        const int error = ErrorOf([&] { mFileSystem.RemoveFile(lockPath); });
        const bool isGone = error == 0 || error == ENOENT || !Look(lockPath);
        breaking.mOutcome = isGone ? LockBreaking::Outcome::Broken : LockBreaking::Outcome::Failed;
        breaking.mSystemError = isGone ? 0 : error;
    }
    RemoveOwnOrKeep(guardPath, guard.mNonce);
    return breaking;
}

LockReport LockProtocol::Check(const std::string& lockPath, const std::string& nonce) {
    LockReport report = LookAtOwn(lockPath, nonce);
    for (int look = 1; look < kLooks && report.mStanding != LockStanding::Ours; ++look) {
        std::this_thread::sleep_for(kBetweenLooks);
        report = LookAtOwn(lockPath, nonce);
    }
    if (report.mStanding != LockStanding::Lost) return report;
    mFileSystem.WaitForCaches(FolderOf(lockPath));
    return LookAtOwn(lockPath, nonce);
}

LockReport LockProtocol::LookAtOwn(const std::string& lockPath, const std::string& nonce) {
    using Trouble = LockReport::Trouble;
    const Content found = Read(lockPath);
    if (found.Bears(nonce)) return {LockStanding::Ours, found.mRecord, Trouble::None, 0};
    if (found.IsForeign(nonce)) return {LockStanding::Lost, found.mRecord, Trouble::None, 0};
    if (!found.mIsThere) return FindOutAboutAbsence(lockPath);
    return {LockStanding::Unknown,
            {},
            found.mRefusal != 0 ? Trouble::Refused : Trouble::Unreadable,
            found.mRefusal};
}

/// Names are kept by the system, and their absence too: only the listing tells.
LockReport LockProtocol::FindOutAboutAbsence(const std::string& lockPath) {
    using Trouble = LockReport::Trouble;
    std::vector<FolderEntry> entries;
    const int error = ErrorOf([&] { entries = mFileSystem.ListFolder(FolderOf(lockPath)); });
    if (IsAbsence(error)) return {LockStanding::Unknown, {}, Trouble::FolderAway, error};
    if (error != 0) return {LockStanding::Unknown, {}, Trouble::Refused, error};
    const std::string name = NameOf(lockPath);
    if (HasName(entries, name)) return {LockStanding::Unknown, {}, Trouble::Refused, EAGAIN};
    // A guard needs no project beside it.
    const bool isExpected =
        IsGuardName(name) || HasName(entries, host::UTF16to8(GetProjectNameOfLockFile(host::UTF8to16(name))));
    return isExpected ? LockReport{LockStanding::Lost, {}, Trouble::None, 0}
                      : LockReport{LockStanding::Unknown, {}, Trouble::ProjectAway, ENOENT};
}

void LockProtocol::DropRemains() {
    for (const LockRemains& remains : TakeRemains()) {
        const bool isGone = RemoveRemains(remains) == LockRelease::Done && remains.mTemporary.empty();
        if (!isGone && !remains.mNonce.empty()) NoteStrayLock(remains.mPath, remains.mNonce);
    }
}

std::vector<LockRemains> LockProtocol::TakeRemains() {
    return std::exchange(mRemains, {});
}

LockRelease LockProtocol::RemoveRemains(const LockRemains& remains) {
    if (!IsTemporaryName(NameOf(remains.mPath))) return Release(remains.mPath, remains.mNonce);
    const int error = RemoveOwn(remains.mPath, remains.mNonce);
    return error == 0 || error == ENOENT ? LockRelease::Done : LockRelease::Retry;
}

}  // namespace desk
