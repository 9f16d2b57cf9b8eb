#include "desk/project/lock/LockKeeper.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>
#include <utility>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/StrayLocks.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

using std::chrono::milliseconds;

/// A reader, or somebody who breaks the lock, is given this long to be gone.
constexpr milliseconds kGivingUpTime(3000);
constexpr milliseconds kBetweenTries(200);
constexpr milliseconds kLongestDelay(5000);
/// How long the window stands still for locks that are given up.
constexpr milliseconds kStandstill(2000);

LockProtocol MakeProtocol() {
    return LockProtocol(*GetServices().mFileSystem, *GetServices().mDesktop);
}

/// The user knows no lock files.
host::UTF16String NameOfProject(const std::string& lockPath) {
    return GetProjectNameOfLockFile(host::UTF8to16(NameOf(lockPath)));
}

/// Throws with ECANCELED when the user does not want to wait.
LockReport CheckOnDisk(const std::string& lockPath, const std::string& nonce) {
    return AskVolume(host::ZString("$$$/Desk/Project/Checking=Checking Project"), "read lock of",
                     NameOfProject(lockPath),
                     [lockPath, nonce] { return MakeProtocol().Check(lockPath, nonce); });
}

/// A lock keeps its name when its folder moves. The nonce alone does not tell it: those of a batch share one.
bool IsSameLock(const std::string& path, const std::string& nonce, const std::string& otherPath,
                const std::string& otherNonce) {
    return nonce == otherNonce && NameOf(path) == NameOf(otherPath);
}

/// Where the folder store has seen the lock.
std::vector<std::string> FindKnownPlaces(const LockRemains& lock) {
    std::vector<std::string> places;
    if (const FolderStore* store = GetServices().mFolderStore)
        store->VisitLocks(u"/", true, [&](const host::UTF16String& project, const ItemFacts& facts) {
            const std::string path = GetLockPath(project);
            if (facts.mLock && IsSameLock(path, facts.mLock->mNonce, lock.mPath, lock.mNonce))
                places.push_back(path);
            return true;
        });
    return places;
}

}  // namespace

/// A file of ours that is to go and could not be removed at once.
struct LockKeeper::GivingUp {
    LockRemains mRemains;
    /// It may not be seen yet: that it is not there does not end it before its time.
    bool mIsDoubtful = false;
    std::chrono::steady_clock::time_point mEnd;
    /// Its end has come: it is stray now, and whoever comes upon it removes it too.
    bool mIsLate = false;
    /// Until the next attempt.
    milliseconds mDelay = kBetweenTries;
    /// Where the folder store has seen it elsewhere.
    std::vector<std::string> mPlaces;

    LockRelease Try(const std::vector<std::string>& places);
    LockRelease TryOnce(const std::vector<std::string>& places);
    bool IsInTime() const { return GetServices().mMainThread->Now() < mEnd; }

    /// Held while a worker tries, which begins only while the lock has not been taken back.
    std::mutex mMutex;
    std::atomic<bool> mIsTakenBack = false;
    /// The UI thread may not have heard of it yet, and at the program's end never does.
    bool mIsDone = false;
};

HeldLock::~HeldLock() {
    LockKeeper::Instance().GiveUp(*this);
}

LockReport HeldLock::Check() {
    if (mIsLost) return {LockStanding::Lost, {}, LockReport::Trouble::None, 0};
    const LockReport report = CheckOnDisk(mPath, mRecord.mNonce);
    if (report.mStanding == LockStanding::Lost) NoteLoss();
    return report;
}

void HeldLock::NoteLoss() {
    mIsLost = true;
    Log(LogLevel::Info, "the lock is no longer ours: " + mPath);
}

LockKeeper& LockKeeper::Instance() {
    // Never destroyed: a lock that outlives main() still finds it.
    static LockKeeper& sKeeper = *new LockKeeper;
    return sKeeper;
}

LockKeeper::Taking LockKeeper::Take(const std::string& lockPath, const host::UTF16String& user,
                                    const host::UTF16String& machine) {
    try {
        return TakeOrThrow(lockPath, MakeLockRecord(*GetServices().mDesktop, user, machine));
    } catch (const host::FileException& exception) {
        return {nullptr, {LockTaking::Outcome::Failed, {}, exception.SystemError()}};
    }
}

LockKeeper::Taking LockKeeper::TakeOrThrow(const std::string& lockPath, const LockRecord& mine) {
    if (HeldLockPtr held = Find(lockPath); held && held->Check().mStanding != LockStanding::Lost) {
        const bool isTheirs =
            held->GetRecord().mUser == mine.mUser && held->GetRecord().mMachine == mine.mMachine;
        const auto outcome = isTheirs ? LockTaking::Outcome::Ours : LockTaking::Outcome::Held;
        const LockRecord record = held->GetRecord();
        return {isTheirs ? held : nullptr, {outcome, record, 0}};
    }
    Taking taking = TakeOnce(lockPath, mine);
    // What stood in the way was our own and has gone while it was looked at.
    const bool isOwn = !taking.mLock && AreOfOneProcess(taking.mResult.mRecord, mine);
    return isOwn ? TakeOnce(lockPath, mine) : taking;
}

LockKeeper::Taking LockKeeper::TakeOnce(const std::string& lockPath, const LockRecord& mine) {
    LockProtocol protocol = MakeProtocol();
    LockTaking taking;
    RunLongWork(host::ZString("$$$/Desk/Project/Locking=Locking Project"), [&](WorkProgress& progress) {
        progress.SetItem(NameOfProject(lockPath));
        taking = protocol.Take(lockPath, mine);
    });
    GiveUpLater(protocol.TakeRemains());
    if (taking.mOutcome == LockTaking::Outcome::Ours) return {Keep(lockPath, mine), taking};
    const bool isHeld = taking.mOutcome == LockTaking::Outcome::Held;
    // It may be one that this machine has never written to its end.
    if (isHeld && !taking.mRecord.mIsReadable) SweepFolderInBackground(FolderOf(lockPath));
    HeldLockPtr lock = isHeld ? TakeBack(lockPath, taking.mRecord, mine) : nullptr;
    if (lock) taking.mOutcome = LockTaking::Outcome::Ours;
    return {lock, taking};
}

/// Another attempt may have come upon it first, while this one waited.
HeldLockPtr LockKeeper::Keep(const std::string& lockPath, const LockRecord& record) {
    HeldLockPtr lock = FindWherever(lockPath, record.mNonce);
    if (!lock) lock.reset(new HeldLock(lockPath, record));
    mLocks[lockPath] = lock;
    return lock;
}

/// The lock that stands in the way is of this very process: it moved here, is just being given up, was out of
/// sight for a while and taken for lost, or was left by a call of which the volume said that it had failed.
HeldLockPtr LockKeeper::TakeBack(const std::string& lockPath, const LockRecord& found,
                                 const LockRecord& wanted) {
    if (!AreOfOneProcess(found, wanted) || found.mUser != wanted.mUser || found.mMachine != wanted.mMachine)
        return {};
    if (const HeldLockPtr held = FindWherever(lockPath, found.mNonce)) {
        // A copy, if the lock still stands, or may stand, where it was taken.
        const LockReport before = CheckOnDisk(held->mPath, found.mNonce);
        if (before.mStanding != LockStanding::Lost && !before.IsAway()) return {};
        Forget(*held);
        held->mPath = lockPath;
        mLocks[lockPath] = held;
        return held;
    }
    const auto tasks = mGivingUp;
    for (const auto& task : tasks)
        if (IsSameLock(task->mRemains.mPath, task->mRemains.mNonce, lockPath, found.mNonce))
            AskVolume(host::ZString("$$$/Desk/Project/Locking=Locking Project"), "take back lock of",
                      NameOfProject(lockPath), [task] {
                          const std::lock_guard lock(task->mMutex);
                          task->mIsTakenBack = true;
                      });
    if (!ForgetStrayLock(lockPath, found.mNonce)) return {};
    if (CheckOnDisk(lockPath, found.mNonce).mStanding != LockStanding::Ours) return {};
    return Keep(lockPath, found);
}

HeldLockPtr LockKeeper::Find(const std::string& lockPath) const {
    const auto entry = mLocks.find(lockPath);
    return entry == mLocks.end() ? nullptr : entry->second.lock();
}

bool LockKeeper::NoteLoss(const std::string& lockPath, const std::string& nonce) {
    const HeldLockPtr held = Find(lockPath);
    if (!held || held->mIsLost || held->mRecord.mNonce != nonce) return false;
    held->NoteLoss();
    return true;
}

/// A lost lock is nobody's.
HeldLockPtr LockKeeper::FindWherever(const std::string& lockPath, const std::string& nonce) const {
    for (const auto& [path, weak] : mLocks)
        if (HeldLockPtr lock = weak.lock();
            lock && !lock->mIsLost && IsSameLock(path, lock->mRecord.mNonce, lockPath, nonce))
            return lock;
    return {};
}

bool LockKeeper::Holds(const std::string& nonce) const {
    return std::ranges::any_of(mLocks, [&nonce](const auto& entry) {
        const HeldLockPtr lock = entry.second.lock();
        return lock && !lock->mIsLost && lock->mRecord.mNonce == nonce;
    });
}

/// Another lock may have taken the path since.
void LockKeeper::Forget(const HeldLock& lock) {
    const auto entry = mLocks.find(lock.mPath);
    if (entry == mLocks.end()) return;
    const HeldLockPtr other = entry->second.lock();
    if (!other || other.get() == &lock) mLocks.erase(entry);
}

std::vector<LockRemains> LockKeeper::FollowMove(const std::string& oldFolder, const std::string& newFolder) {
    std::vector<HeldLockPtr> moved;
    for (const auto& [path, weak] : mLocks)
        if (HeldLockPtr lock = weak.lock(); lock && IsSameOrBelow(path, oldFolder)) moved.push_back(lock);
    std::vector<LockRemains> before;
    for (const HeldLockPtr& lock : moved) {
        Forget(*lock);
        before.push_back({lock->mPath, lock->mRecord.mNonce, {}});
        lock->mPath = newFolder + lock->mPath.substr(oldFolder.size());
        mLocks[lock->mPath] = lock;
    }
    return before;
}

void LockKeeper::GiveUp(const HeldLock& lock) {
    Forget(lock);
    // One that seemed to be lost may have been taken back.
    if (FindWherever(lock.mPath, lock.mRecord.mNonce)) return;
    if (lock.mIsLost) return NoteStrayLock(lock.mPath, lock.mRecord.mNonce);
    if (const auto task = AddGivingUp({lock.mPath, lock.mRecord.mNonce, {}}, false))
        mFirstAttempts.push_back(TryToGiveUp(task));
    if (mTogetherScopes == 0) AwaitFirstAttempts();
}

void LockKeeper::AwaitFirstAttempts() {
    const auto end = std::chrono::steady_clock::now() + kStandstill;
    for (const auto& attempt : std::exchange(mFirstAttempts, {})) attempt.wait_until(end);
}

ScGiveUpTogether::ScGiveUpTogether() {
    ++LockKeeper::Instance().mTogetherScopes;
}

void ScGiveUpTogether::Wait() {
    const auto begun = std::exchange(LockKeeper::Instance().mFirstAttempts, {});
    if (begun.empty()) return;
    RunLongWork(host::ZString("$$$/Desk/Project/Locking=Locking Project"), [&begun](WorkProgress&) {
        const auto end = std::chrono::steady_clock::now() + kStandstill;
        for (const auto& attempt : begun) attempt.wait_until(end);
    });
}

ScGiveUpTogether::~ScGiveUpTogether() {
    LockKeeper& keeper = LockKeeper::Instance();
    if (--keeper.mTogetherScopes == 0) keeper.AwaitFirstAttempts();
}

void LockKeeper::GiveUpLater(std::vector<LockRemains> remains) {
    for (LockRemains& one : remains)
        if (const auto task = AddGivingUp(std::move(one), true))
            GetServices().mMainThread->PostDelayed([this, task] { TryToGiveUp(task); }, kBetweenTries);
}

void LockKeeper::GiveUpInBackground(const std::vector<LockRemains>& locks, std::vector<LockRemains> doubtful) {
    for (const LockRemains& lock : locks)
        if (const auto task = AddGivingUp(lock, false)) TryLater(task);
    GiveUpLater(std::move(doubtful));
}

std::shared_ptr<LockKeeper::GivingUp> LockKeeper::AddGivingUp(LockRemains remains, bool isDoubtful) {
    const Services& services = GetServices();
    if (!services.mFileSystem || !services.mDesktop || !services.mMainThread || !services.mWorkerPool) {
        Log(LogLevel::Warning, "could not remove the lock file " + remains.mPath);
        return {};
    }
    auto task = std::make_shared<GivingUp>();
    task->mRemains = std::move(remains);
    task->mIsDoubtful = isDoubtful;
    task->mEnd = services.mMainThread->Now() + kGivingUpTime;
    mGivingUp.push_back(task);
    return task;
}

/// On a worker.
LockRelease LockKeeper::GivingUp::Try(const std::vector<std::string>& places) {
    const std::lock_guard lock(mMutex);
    if (mIsTakenBack) return LockRelease::NotOurs;
    if (mIsDone) return LockRelease::Done;
    const LockRelease release = TryOnce(places);
    mIsDone = release == LockRelease::Done && !mIsDoubtful;
    return release;
}

/// A lock that is away is looked for where the folder store knows it and, while it is worth that, beside its
/// folder.
LockRelease LockKeeper::GivingUp::TryOnce(const std::vector<std::string>& places) {
    LockProtocol protocol = MakeProtocol();
    const LockRelease release = protocol.RemoveRemains(mRemains);
    if (release != LockRelease::Away) return release;
    for (const std::string& place : places)
        if (protocol.Release(place, mRemains.mNonce) == LockRelease::Done) return LockRelease::Done;
    if (!IsInTime()) return release;
    const std::string place = FindMovedLock(*GetServices().mFileSystem, mRemains.mPath, mRemains.mNonce);
    return place.empty() ? release : protocol.Release(place, mRemains.mNonce);
}

std::future<LockRelease> LockKeeper::Try(const std::shared_ptr<GivingUp>& task,
                                         const std::function<void(LockRelease)>& then) {
    const auto attempt =
        std::make_shared<std::packaged_task<LockRelease()>>([task, then, places = task->mPlaces] {
            const LockRelease release = task->Try(places);
            if (then) GetServices().mMainThread->Post([then, release] { then(release); });
            return release;
        });
    std::future<LockRelease> tried = attempt->get_future();
    GetServices().mWorkerPool->Submit([attempt] { (*attempt)(); });
    return tried;
}

std::future<LockRelease> LockKeeper::TryToGiveUp(const std::shared_ptr<GivingUp>& task) {
    return Try(task, [this, task](LockRelease release) {
        if (std::ranges::find(mGivingUp, task) == mGivingUp.end()) return;
        Note(task, release);
        if (std::ranges::find(mGivingUp, task) != mGivingUp.end()) TryLater(task);
    });
}

void LockKeeper::TryLater(const std::shared_ptr<GivingUp>& task) {
    const milliseconds delay = task->mDelay;
    if (!task->mIsDoubtful) task->mDelay = std::min(2 * delay, kLongestDelay);
    GetServices().mMainThread->PostDelayed(
        [this, task] {
            if (std::ranges::find(mGivingUp, task) != mGivingUp.end()) TryToGiveUp(task);
        },
        delay);
}

void LockKeeper::Note(const std::shared_ptr<GivingUp>& task, LockRelease release) {
    const LockRemains& remains = task->mRemains;
    const bool isUndone = !IsStrayLockRemoved(remains.mPath, remains.mNonce) &&
                          (release == LockRelease::Retry || release == LockRelease::Away);
    const bool isOpen = task->mIsDoubtful ? task->IsInTime() : isUndone;
    if (task->mIsTakenBack || !isOpen) return End(task, release);
    if (release == LockRelease::Away) task->mPlaces = FindKnownPlaces(remains);
    if (task->IsInTime() || std::exchange(task->mIsLate, true)) return;
    NoteStrayLock(remains.mPath, remains.mNonce);
    Log(LogLevel::Warning, "could not remove the lock file " + remains.mPath +
                               (release == LockRelease::Away ? ", which is not there now" : "") +
                               "; it is tried again while the program runs");
}

void LockKeeper::End(const std::shared_ptr<GivingUp>& task, LockRelease release) {
    std::erase(mGivingUp, task);
    // One that is held again is no stray, whatever an attempt before that came to.
    if (task->mIsTakenBack) return;
    const LockRemains& remains = task->mRemains;
    if (release == LockRelease::Retry) Log(LogLevel::Warning, "could not remove " + remains.mPath);
    if (release == LockRelease::NotOurs && !task->mIsDoubtful)
        Log(LogLevel::Info, "the lock was no longer ours: " + remains.mPath);
    if (!remains.mTemporary.empty()) return SweepAttempt(remains);
    if (release != LockRelease::Done && !remains.mNonce.empty()) NoteStrayLock(remains.mPath, remains.mNonce);
}

void LockKeeper::FinishGivingUp(milliseconds patience) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + patience;
    for (bool isFirst = true; Clock::now() < end; isFirst = false) {
        if (!isFirst && std::ranges::none_of(mGivingUp, [](const auto& task) { return task->IsInTime(); }))
            return;
        std::vector<std::pair<std::shared_ptr<GivingUp>, std::future<LockRelease>>> attempts;
        for (const auto& task : mGivingUp) attempts.emplace_back(task, Try(task));
        for (auto& [task, tried] : attempts)
            if (tried.wait_until(end) == std::future_status::ready) Note(task, tried.get());
        if (!mGivingUp.empty()) std::this_thread::sleep_until(std::min(end, Clock::now() + kBetweenTries));
    }
}

}  // namespace desk
