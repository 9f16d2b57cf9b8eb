#include "desk/project/production/MoveLocks.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/LockHolder.h"
#include "host/project/ProjectLockFile.h"

namespace desk {

void SharedLocks::Write(const LockRecord& owner) {
    for (auto& [path, folder] : mFolders) {
        if (folder.mCount < 2) continue;
        folder.mLock.mRecord = MakeLockRecord(*GetServices().mDesktop, owner.mUser, owner.mMachine);
        folder.mLock.mTemporary = mProtocol.WriteShared(path, folder.mLock.mRecord);
    }
}

void SharedLocks::NoteDead(const std::string& path, const std::string& nonce) {
    const std::lock_guard lock(mMutex);
    mDead[{FolderOf(path), nonce}].push_back(path);
}

bool SharedLocks::RemoveDead(const LockRecord& owner) {
    const auto noted = std::exchange(mDead, {});
    const std::vector dead(noted.begin(), noted.end());
    RunShared(dead.size(), [&](std::size_t index) {
        LockProtocol protocol(*GetServices().mFileSystem, *GetServices().mDesktop);
        protocol.RemoveDead(dead[index].second, dead[index].first.second, owner);
        const std::lock_guard lock(mMutex);
        std::ranges::move(protocol.TakeRemains(), std::back_inserter(mRemains));
    });
    return !dead.empty();
}

std::vector<LockRemains> SharedLocks::Remove() {
    for (const auto& [path, folder] : mFolders) mProtocol.RemoveShared(folder.mLock.mTemporary);
    std::ranges::move(mProtocol.TakeRemains(), std::back_inserter(mRemains));
    return std::exchange(mRemains, {});
}

MoveLocks::MoveLocks(const host::UTF16String& source, const host::UTF16String& destination)
    : mProtocol(*GetServices().mFileSystem, *GetServices().mDesktop) {
    host::UTF16String user, machine;
    host::GetProjectLockingPrefs(user, machine);
    mSource.mPath = GetLockPath(source);
    mDestination.mPath = GetLockPath(destination);
    mSource.mRecord = MakeLockRecord(*GetServices().mDesktop, user, machine);
    mDestination.mRecord = MakeLockRecord(*GetServices().mDesktop, user, machine);
    mSource.mHeld = FindHeldLock(source);
    mWasHeld = mSource.mHeld != nullptr;
    mIsOwnAtDestination = LockKeeper::Instance().Find(mDestination.mPath) != nullptr;
}

MoveLocks::Taking MoveLocks::Take(const SharedLock& source, const SharedLock& destination) {
    const Taking taking = mWasHeld ? CheckSource() : TakeAt(mSource, source, Taking::NoSourceLock);
    if (taking != Taking::Taken) return taking;
    if (mIsOwnAtDestination) return Taking::Own;
    return TakeAt(mDestination, mWasHeld ? SharedLock() : destination, Taking::NoDestinationLock);
}

MoveLocks::Taking MoveLocks::CheckSource() {
    if (mSource.mHeld) {
        const LockReport own = mProtocol.Check(mSource.mHeld->GetPath(), mSource.mHeld->GetRecord().mNonce);
        if (own.mStanding == LockStanding::Unknown)
            return Fail({LockTaking::Outcome::Failed, {}, own.mSystemError}, Taking::NoSourceLock);
        mIsLost = own.mStanding == LockStanding::Lost;
    }
    const std::optional<LockRecord> found = ReadLockRecord(*GetServices().mFileSystem, mSource.mPath);
    const std::string heldNonce = mSource.mHeld ? mSource.mHeld->GetRecord().mNonce : std::string();
    if (found && IsHeldElsewhere(*found, heldNonce))
        return Fail({LockTaking::Outcome::Held, *found, 0}, Taking::NoSourceLock);
    if (!mIsLost) return Taking::Taken;
    mWasHeld = false;
    return TakeAt(mSource, {}, Taking::NoSourceLock);
}

MoveLocks::Taking MoveLocks::TakeAt(Place& place, const SharedLock& shared, Taking failure) {
    if (place.mIsTaken) return Taking::Taken;
    if (!shared.mTemporary.empty()) place.mRecord = shared.mRecord;
    const LockTaking taking = mProtocol.TakeShared(shared.mTemporary, place.mPath, place.mRecord);
    place.mIsTaken = taking.mOutcome == LockTaking::Outcome::Ours;
    if (place.mIsTaken) return Taking::Taken;
    if (AreOfOneProcess(taking.mRecord, place.mRecord)) return Taking::Own;
    const bool isHeld = taking.mOutcome == LockTaking::Outcome::Held;
    if (shared.mTemporary.empty() || !isHeld || !IsLockStale(taking.mRecord, *GetServices().mDesktop))
        return Fail(taking, failure);
    mDeadLockPath = place.mPath;
    mObstacle.mHolder = taking.mRecord;
    return Taking::Dead;
}

MoveLocks::Taking MoveLocks::Fail(const LockTaking& taking, Taking failure) {
    const bool isHeld = taking.mOutcome == LockTaking::Outcome::Held;
    mObstacle.mObstacle = isHeld ? ProjectLocking::Obstacle::Held : ProjectLocking::Obstacle::Refused;
    mObstacle.mHolder = taking.mRecord;
    mObstacle.mSystemError = taking.mSystemError != 0 ? taking.mSystemError : EAGAIN;
    if (!isHeld || failure != Taking::NoSourceLock) return failure;
    mWasHeld = true;
    return Taking::Held;
}

MoveLocks::Taking MoveLocks::TakeByKeeper() {
    if (!mWasHeld) {
        const Taking source = TakeByKeeperAt(mSource, Taking::NoSourceLock);
        if (source != Taking::Taken) return source;
    }
    return TakeByKeeperAt(mDestination, Taking::NoDestinationLock);
}

MoveLocks::Taking MoveLocks::TakeByKeeperAt(Place& place, Taking failure) {
    LockKeeper::Taking taking =
        LockKeeper::Instance().Take(place.mPath, place.mRecord.mUser, place.mRecord.mMachine);
    place.mHeld = taking.mLock;
    return place.mHeld ? Taking::Taken : Fail(taking.mResult, failure);
}

void MoveLocks::GiveUp(bool isMoved) {
    if (!mWasHeld || !isMoved) GiveUpAt(mDestination);
    GiveUpAt(mSource);
}

void MoveLocks::GiveUpAt(Place& place) {
    if (!std::exchange(place.mIsTaken, false)) return;
    const LockRelease release = mProtocol.Release(place.mPath, place.mRecord.mNonce);
    if (release == LockRelease::Retry || release == LockRelease::Away)
        mLeft.push_back({place.mPath, place.mRecord.mNonce, {}});
}

host::ProjectLockFileRef MoveLocks::KeepDestination() {
    if (std::exchange(mDestination.mIsTaken, false))
        mDestination.mHeld = LockKeeper::Instance().Keep(mDestination.mPath, mDestination.mRecord);
    return mDestination.mHeld ? MakeLockReference(mDestination.mHeld) : nullptr;
}

void MoveLocks::Finish() {
    // A project that was held and was not open here: nobody goes on with its lock.
    if (mDestination.mIsTaken) KeepDestination();
    // It may be one that this machine has never written to its end.
    const bool isUnreadable =
        mObstacle.mObstacle == ProjectLocking::Obstacle::Held && !mObstacle.mHolder.mIsReadable;
    if (isUnreadable) SweepFolderInBackground(FolderOf(mSource.mPath));
    if (mIsLost) LockKeeper::Instance().NoteLoss(mSource.mHeld->GetPath(), mSource.mHeld->GetRecord().mNonce);
    LockKeeper::Instance().GiveUpInBackground(std::exchange(mLeft, {}), mProtocol.TakeRemains());
    mSource.mHeld.reset();
    mDestination.mHeld.reset();
}

}  // namespace desk
