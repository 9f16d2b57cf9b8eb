#include "desk/project/LockKeeper.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "desk/core/Desktop.h"
#include "desk/core/Log.h"
#include "desk/core/MainThread.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/FolderPath.h"
#include "desk/project/Leftovers.h"

namespace desk {

namespace {

using std::chrono::milliseconds;

/// A reader, or somebody who breaks the lock, is given this long to be gone.
constexpr milliseconds kPatience(3000);
constexpr milliseconds kBetweenTries(200);

LockProtocol MakeProtocol() {
    return LockProtocol(*GetServices().mFileSystem, *GetServices().mDesktop);
}

}  // namespace

/// A file of ours that is to go and could not be removed at once.
struct LockKeeper::GivingUp {
    LockRemains mRemains;
    /// It may not be seen yet: that it is not there does not end it before its time.
    bool mIsDoubtful = false;
    std::chrono::steady_clock::time_point mEnd;
    /// Held while a worker tries, which begins only while the lock has not been taken back.
    std::mutex mMutex;
    bool mIsTakenBack = false;
};

HeldLock::~HeldLock() {
    LockKeeper::Instance().GiveUp(*this);
}

LockStanding HeldLock::Check() {
    if (mIsLost) return LockStanding::Lost;
    const LockStanding standing = MakeProtocol().Check(mPath, mRecord.mNonce);
    mIsLost = standing == LockStanding::Lost;
    if (mIsLost) Log(LogLevel::Info, "the lock is no longer ours: " + mPath);
    return standing;
}

LockKeeper& LockKeeper::Instance() {
    // Never destroyed: a lock that outlives main() still finds it.
    static LockKeeper& sKeeper = *new LockKeeper;
    return sKeeper;
}

LockKeeper::Taking LockKeeper::Take(const std::string& lockPath, const host::UTF16String& user,
                                    const host::UTF16String& machine) {
    const LockRecord mine = MakeLockRecord(*GetServices().mDesktop, user, machine);
    if (HeldLockPtr held = Find(lockPath); held && held->Check() != LockStanding::Lost) {
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
    LockTaking taking = protocol.Take(lockPath, mine);
    GiveUpLater(protocol.TakeRemains(), true);
    if (taking.mOutcome == LockTaking::Outcome::Ours) return {Keep(lockPath, mine), taking};
    HeldLockPtr lock =
        taking.mOutcome == LockTaking::Outcome::Held ? TakeBack(lockPath, taking.mRecord, mine) : nullptr;
    if (lock) taking.mOutcome = LockTaking::Outcome::Ours;
    return {lock, taking};
}

HeldLockPtr LockKeeper::Keep(const std::string& lockPath, const LockRecord& record) {
    const HeldLockPtr lock(new HeldLock(lockPath, record));
    mLocks[lockPath] = lock;
    return lock;
}

/// The lock that stands in the way is of this very process: it moved here, is just being given up, or was left
/// by a call of which the volume said that it had failed.
HeldLockPtr LockKeeper::TakeBack(const std::string& lockPath, const LockRecord& found,
                                 const LockRecord& wanted) {
    if (!AreOfOneProcess(found, wanted) || found.mUser != wanted.mUser || found.mMachine != wanted.mMachine)
        return {};
    if (const HeldLockPtr held = FindByNonce(found.mNonce)) {
        // A copy, if the lock still stands where it was taken.
        if (MakeProtocol().Check(held->mPath, found.mNonce) != LockStanding::Lost) return {};
        Forget(*held);
        held->mPath = lockPath;
        mLocks[lockPath] = held;
        return held;
    }
    for (const auto& task : mGivingUp) {
        if (task->mRemains.mNonce != found.mNonce) continue;
        const std::lock_guard lock(task->mMutex);
        task->mIsTakenBack = true;
    }
    if (!TakeBackStrayLock(found.mNonce)) return {};
    if (MakeProtocol().Check(lockPath, found.mNonce) != LockStanding::Ours) return {};
    return Keep(lockPath, found);
}

HeldLockPtr LockKeeper::Find(const std::string& lockPath) const {
    const auto entry = mLocks.find(lockPath);
    return entry == mLocks.end() ? nullptr : entry->second.lock();
}

HeldLockPtr LockKeeper::FindByNonce(const std::string& nonce) const {
    for (const auto& [path, weak] : mLocks)
        if (HeldLockPtr lock = weak.lock(); lock && lock->mRecord.mNonce == nonce) return lock;
    return {};
}

/// Another lock may have taken the path since.
void LockKeeper::Forget(const HeldLock& lock) {
    const auto entry = mLocks.find(lock.mPath);
    if (entry == mLocks.end()) return;
    const HeldLockPtr other = entry->second.lock();
    if (!other || other.get() == &lock) mLocks.erase(entry);
}

void LockKeeper::FollowMove(const std::string& oldFolder, const std::string& newFolder) {
    std::vector<HeldLockPtr> moved;
    for (const auto& [path, weak] : mLocks)
        if (HeldLockPtr lock = weak.lock(); lock && IsSameOrBelow(path, oldFolder)) moved.push_back(lock);
    for (const HeldLockPtr& lock : moved) {
        Forget(*lock);
        lock->mPath = newFolder + lock->mPath.substr(oldFolder.size());
        mLocks[lock->mPath] = lock;
    }
}

void LockKeeper::GiveUp(const HeldLock& lock) {
    Forget(lock);
    if (lock.mIsLost) NoteStrayLock(lock.mRecord.mNonce);
    if (lock.mIsLost || !GetServices().mFileSystem || !GetServices().mDesktop) return;
    const LockRelease release = MakeProtocol().Release(lock.mPath, lock.mRecord.mNonce);
    if (release == LockRelease::NotOurs) Log(LogLevel::Info, "the lock was no longer ours: " + lock.mPath);
    if (release == LockRelease::Retry) GiveUpLater({{lock.mPath, lock.mRecord.mNonce}}, false);
}

void LockKeeper::GiveUpLater(std::vector<LockRemains> remains, bool isDoubtful) {
    MainThread* mainThread = GetServices().mMainThread;
    for (LockRemains& one : remains) {
        auto task = std::make_shared<GivingUp>();
        task->mRemains = std::move(one);
        task->mIsDoubtful = isDoubtful;
        if (!mainThread || !GetServices().mWorkerPool) {
            Log(LogLevel::Warning, "could not remove the lock file " + task->mRemains.mPath);
            continue;
        }
        task->mEnd = mainThread->Now() + kPatience;
        mGivingUp.push_back(task);
        mainThread->PostDelayed([this, task] { TryAgain(task); }, kBetweenTries);
    }
}

void LockKeeper::TryAgain(const std::shared_ptr<GivingUp>& task) {
    GetServices().mWorkerPool->Submit([this, task, protocol = MakeProtocol()]() mutable {
        LockRelease release = LockRelease::NotOurs;
        {
            const std::lock_guard lock(task->mMutex);
            if (!task->mIsTakenBack) release = protocol.RemoveRemains(task->mRemains);
        }
        GetServices().mMainThread->Post([this, task, release] { Finish(task, release); });
    });
}

void LockKeeper::Finish(const std::shared_ptr<GivingUp>& task, LockRelease release) {
    MainThread& mainThread = *GetServices().mMainThread;
    const bool isInTime = mainThread.Now() < task->mEnd;
    const bool isOpen = release == LockRelease::Retry || task->mIsDoubtful;
    if (isOpen && isInTime && !task->mIsTakenBack)
        return mainThread.PostDelayed([this, task] { TryAgain(task); }, kBetweenTries);
    if (release == LockRelease::Retry) {
        NoteStrayLock(task->mRemains.mNonce);
        Log(LogLevel::Warning, "could not remove the lock file " + task->mRemains.mPath +
                                   ": a reader has it open, or somebody is about to break it");
    }
    std::erase(mGivingUp, task);
}

}  // namespace desk
