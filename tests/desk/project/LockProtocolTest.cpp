#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <set>

#include "desk/project/Leftovers.h"
#include "desk/project/LockProtocol.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/TemporaryFolder.h"

using desk::LockBreaking;
using desk::LockProtocol;
using desk::LockRecord;
using desk::LockRelease;
using desk::LockStanding;
using desk::LockTaking;
using Operation = FaultyFileSystem::Operation;

namespace {

/// Numbers of a process that has ended; nobody can have got its number since.
LockRecord OfDeadProcess(const desk::Desktop& desktop) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    LockRecord record = desk::MakeLockRecord(desktop, u"tomas", u"edit-bay-2");
    record.mPid = child;
    record.mProcessStart += 1'000'000'000;
    ::waitpid(child, nullptr, 0);
    return record;
}

class LockProtocolTest : public testing::TestWithParam<bool> {
protected:
    LockProtocolTest() { mDisk.SetHasLinks(GetParam()); }

    LockRecord Mine() const { return desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1"); }
    LockRecord OfAnotherMachine() const {
        LockRecord record = Mine();
        record.mUser = u"tomas";
        record.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
        return record;
    }
    void Stand(const LockRecord& record) { mFolder.Write(kLock, WriteLockRecord(record)); }
    std::string NonceOfLock() const { return desk::ParseLockRecord(mFolder.Read(kLock)).mNonce; }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mFolder.Path()))
            names.push_back(entry.path().filename());
        return names;
    }
    /// What a volume that has recovered lets us do, as the keeper of the locks does it.
    void RemoveRemains() {
        for (const desk::LockRemains& remains : mProtocol.TakeRemains()) mProtocol.RemoveRemains(remains);
    }
    LockBreaking::Outcome Break(std::function<void()> meanwhile = [] {}) {
        return mProtocol.Break(mPath, *mSeen, Mine(), [&] { return meanwhile(), true; }).mOutcome;
    }

    static constexpr char kLock[] = ".Reel 1.zuproj.lock";
    TemporaryFolder mFolder;
    const std::string mPath = mFolder.Path(kLock);
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    LockProtocol mProtocol{mDisk, mDesktop};
    std::optional<desk::LockSnapshot> mSeen;
};

INSTANTIATE_TEST_SUITE_P(Volumes, LockProtocolTest, testing::Bool(),
                         [](const auto& volume) { return volume.param ? "WithLinks" : "WithoutLinks"; });

const std::vector<std::string> kOnlyLock{".Reel 1.zuproj.lock"};

}  // namespace

TEST_P(LockProtocolTest, IsTakenOnceAndGivenUpByItsOwner) {
    const LockRecord mine = Mine();
    EXPECT_EQ(mProtocol.Take(mPath, mine).mOutcome, LockTaking::Outcome::Ours);
    EXPECT_EQ(Names(), kOnlyLock);
    EXPECT_EQ(mProtocol.Check(mPath, mine.mNonce), LockStanding::Ours);

    const LockTaking second = mProtocol.Take(mPath, OfAnotherMachine());
    EXPECT_EQ(second.mOutcome, LockTaking::Outcome::Held);
    EXPECT_EQ(second.mRecord.mNonce, mine.mNonce);
    EXPECT_EQ(mProtocol.Release(mPath, OfAnotherMachine().mNonce), LockRelease::NotOurs);
    EXPECT_EQ(Names(), kOnlyLock);

    EXPECT_EQ(mProtocol.Release(mPath, mine.mNonce), LockRelease::Done);
    EXPECT_TRUE(Names().empty());
    EXPECT_EQ(mProtocol.Check(mPath, mine.mNonce), LockStanding::Lost);
}

TEST_P(LockProtocolTest, WhatCannotBeReadIsHeldAndNeverStale) {
    for (const char* content : {"", "{", "\0\1\2"}) {
        mFolder.Write(kLock, content);
        const LockTaking taking = mProtocol.Take(mPath, Mine());
        EXPECT_EQ(taking.mOutcome, LockTaking::Outcome::Held);
        EXPECT_FALSE(taking.mRecord.mIsReadable);
        EXPECT_EQ(mFolder.Read(kLock), content);
    }
    mFolder.Remove(kLock);
    ::mkfifo(mPath.c_str(), 0600);
    EXPECT_EQ(mProtocol.Take(mPath, Mine()).mOutcome, LockTaking::Outcome::Held);
    EXPECT_EQ(mProtocol.Release(mPath, Mine().mNonce), LockRelease::Retry);
    EXPECT_EQ(Names(), kOnlyLock);
}

TEST_P(LockProtocolTest, IsTakenOverFromAProcessThatIsGone) {
    Stand(OfDeadProcess(mDesktop));
    const LockRecord mine = Mine();
    EXPECT_EQ(mProtocol.Take(mPath, mine).mOutcome, LockTaking::Outcome::Ours);
    EXPECT_EQ(NonceOfLock(), mine.mNonce);
    EXPECT_EQ(Names(), kOnlyLock);
}

TEST_P(LockProtocolTest, IsTakenOverThoughSeveralHaveDiedDoingSo) {
    LockRecord dead = OfDeadProcess(mDesktop);
    Stand(dead);
    for (int i = 0; i < 3; ++i) {
        const std::string guard = desk::GetGuardName(dead.mNonce);
        dead = OfDeadProcess(mDesktop);
        mFolder.Write(guard, WriteLockRecord(dead));
    }
    EXPECT_EQ(mProtocol.Take(mPath, Mine()).mOutcome, LockTaking::Outcome::Ours);
    EXPECT_EQ(Names(), kOnlyLock);
}

TEST_P(LockProtocolTest, IsNotTakenOverWhileSomebodyLivingIsAboutTo) {
    const LockRecord dead = OfDeadProcess(mDesktop);
    Stand(dead);
    mFolder.Write(desk::GetGuardName(dead.mNonce), WriteLockRecord(OfAnotherMachine()));
    EXPECT_EQ(mProtocol.Take(mPath, Mine()).mOutcome, LockTaking::Outcome::Held);
    EXPECT_EQ(NonceOfLock(), dead.mNonce);
}

TEST_P(LockProtocolTest, EveryStepOfTakingMayFail) {
    for (const bool isDone : {false, true}) {
        for (int n = 1;; ++n) {
            mDisk.ResetCounts();
            isDone ? mDisk.FailAfter(Operation::Any, n, EIO) : mDisk.Fail(Operation::Any, n, EIO);
            const LockRecord mine = Mine();
            const LockTaking taking = mProtocol.Take(mPath, mine);
            const bool hasFailed = mDisk.Count(Operation::Any) >= n;
            RemoveRemains();
            SCOPED_TRACE("step " + std::to_string(n) + (isDone ? ", reply lost" : ""));
            ASSERT_NE(taking.mOutcome, LockTaking::Outcome::Held);
            const bool isOurs = taking.mOutcome == LockTaking::Outcome::Ours;
            ASSERT_TRUE(isOurs || taking.mSystemError == EIO);
            ASSERT_EQ(Names(), isOurs ? kOnlyLock : std::vector<std::string>{});
            ASSERT_TRUE(!isOurs || mProtocol.Release(mPath, mine.mNonce) == LockRelease::Done);
            if (!hasFailed) break;
        }
    }
}

TEST_P(LockProtocolTest, EveryStepOfTakingOverMayFail) {
    for (const bool isDone : {false, true}) {
        for (int n = 1;; ++n) {
            Stand(OfDeadProcess(mDesktop));
            mDisk.ResetCounts();
            isDone ? mDisk.FailAfter(Operation::Any, n, EIO) : mDisk.Fail(Operation::Any, n, EIO);
            const LockRecord mine = Mine();
            const LockTaking taking = mProtocol.Take(mPath, mine);
            const bool hasFailed = mDisk.Count(Operation::Any) >= n;
            RemoveRemains();
            SCOPED_TRACE("step " + std::to_string(n) + (isDone ? ", reply lost" : ""));
            ASSERT_NE(taking.mOutcome, LockTaking::Outcome::Held);
            const bool isOurs = taking.mOutcome == LockTaking::Outcome::Ours;
            for (const std::string& name : Names()) ASSERT_EQ(name, kLock);
            ASSERT_TRUE(!isOurs || NonceOfLock() == mine.mNonce);
            // Whatever came of it, the next one succeeds.
            ASSERT_TRUE(!isOurs || mProtocol.Release(mPath, mine.mNonce) == LockRelease::Done);
            const LockRecord next = Mine();
            ASSERT_EQ(mProtocol.Take(mPath, next).mOutcome, LockTaking::Outcome::Ours);
            mProtocol.Release(mPath, next.mNonce);
            if (!hasFailed) break;
        }
    }
}

TEST_P(LockProtocolTest, EveryStepOfGivingUpMayFail) {
    for (const bool isDone : {false, true}) {
        for (int n = 1;; ++n) {
            const LockRecord mine = Mine();
            ASSERT_EQ(mProtocol.Take(mPath, mine).mOutcome, LockTaking::Outcome::Ours);
            mDisk.ResetCounts();
            isDone ? mDisk.FailAfter(Operation::Any, n, EIO) : mDisk.Fail(Operation::Any, n, EIO);
            const LockRelease release = mProtocol.Release(mPath, mine.mNonce);
            const bool hasFailed = mDisk.Count(Operation::Any) >= n;
            SCOPED_TRACE("step " + std::to_string(n) + (isDone ? ", reply lost" : ""));
            ASSERT_EQ(release, LockRelease::Done);
            ASSERT_TRUE(Names().empty());
            if (!hasFailed) break;
        }
    }
}

TEST_P(LockProtocolTest, AVolumeThatIsGoneLeavesTheLockToBeGivenUpLater) {
    const LockRecord mine = Mine();
    mProtocol.Take(mPath, mine);
    mDisk.SetGone(true);
    EXPECT_EQ(mProtocol.Release(mPath, mine.mNonce), LockRelease::Retry);
    EXPECT_EQ(mProtocol.Check(mPath, mine.mNonce), LockStanding::Unknown);
    EXPECT_EQ(mProtocol.Take(mPath, Mine()).mOutcome, LockTaking::Outcome::Failed);
    mDisk.SetGone(false);
    RemoveRemains();
    EXPECT_EQ(mProtocol.Release(mPath, mine.mNonce), LockRelease::Done);
    EXPECT_TRUE(Names().empty());
}

TEST_P(LockProtocolTest, ARefusalOrAFullVolumeIsTold) {
    for (const int error : {ENOSPC, EROFS, EDQUOT, EACCES}) {
        mDisk.Fail(Operation::CreateNewFile, 1, error);
        const LockTaking taking = mProtocol.Take(mPath, Mine());
        EXPECT_EQ(taking.mOutcome, LockTaking::Outcome::Failed);
        EXPECT_EQ(taking.mSystemError, error);
    }
    EXPECT_TRUE(Names().empty());
    mDisk.ResetCounts();
    const std::string longName = "." + std::string(250, 'x') + ".lock";
    EXPECT_EQ(mProtocol.Take(mFolder.Path(longName), Mine()).mSystemError, ENAMETOOLONG);
    EXPECT_EQ(mDisk.Count(Operation::Any), 0);
}

TEST_P(LockProtocolTest, AnotherMachinesLockIsBrokenAsItWasSeen) {
    Stand(OfAnotherMachine());
    mSeen = mProtocol.Look(mPath);
    bool hasWaited = false;
    EXPECT_EQ(Break([&] {
                  hasWaited = true;
                  EXPECT_TRUE(mFolder.Exists(kLock));
                  EXPECT_EQ(Names().size(), 2u) << "the lock and its guard";
              }),
              LockBreaking::Outcome::Broken);
    EXPECT_TRUE(hasWaited);
    EXPECT_TRUE(Names().empty());
}

TEST_P(LockProtocolTest, WhatCannotBeReadIsBrokenToo) {
    for (const char* content : {"", "half a reco"}) {
        mFolder.Write(kLock, content);
        mSeen = mProtocol.Look(mPath);
        EXPECT_EQ(Break([&] { mFolder.Write(kLock, "grown meanwhile"); }), LockBreaking::Outcome::Changed);
        EXPECT_EQ(Names(), kOnlyLock);
        mFolder.Write(kLock, content);
        EXPECT_EQ(Break(), LockBreaking::Outcome::Broken);
    }
    ::mkfifo(mPath.c_str(), 0600);
    mSeen = mProtocol.Look(mPath);
    EXPECT_EQ(Break(), LockBreaking::Outcome::Broken);
    std::filesystem::create_directory(mPath);
    mSeen = mProtocol.Look(mPath);
    EXPECT_EQ(Break(), LockBreaking::Outcome::Failed);
    EXPECT_EQ(Names(), kOnlyLock);
}

TEST_P(LockProtocolTest, ALockThatChangedIsNotBroken) {
    Stand(OfAnotherMachine());
    mSeen = mProtocol.Look(mPath);
    const LockRecord next = OfAnotherMachine();
    EXPECT_EQ(Break([&] { Stand(next); }), LockBreaking::Outcome::Changed);
    EXPECT_EQ(NonceOfLock(), next.mNonce);
    EXPECT_EQ(Names(), kOnlyLock);
    mSeen = mProtocol.Look(mPath);
    EXPECT_EQ(Break([&] { mFolder.Remove(kLock); }), LockBreaking::Outcome::Changed);
    EXPECT_TRUE(Names().empty());
}

TEST_P(LockProtocolTest, BreakingThatIsGivenUpLeavesTheLockAlone) {
    Stand(OfAnotherMachine());
    mSeen = mProtocol.Look(mPath);
    EXPECT_EQ(mProtocol.Break(mPath, *mSeen, Mine(), [] { return false; }).mOutcome,
              LockBreaking::Outcome::Cancelled);
    EXPECT_EQ(Names(), kOnlyLock);
}

TEST_P(LockProtocolTest, ALivingOwnerWaitsForTheOneWhoBreaks) {
    const LockRecord owner = Mine();
    mProtocol.Take(mPath, owner);
    mSeen = mProtocol.Look(mPath);
    EXPECT_EQ(Break([&] { EXPECT_EQ(mProtocol.Release(mPath, owner.mNonce), LockRelease::Retry); }),
              LockBreaking::Outcome::Broken);
    EXPECT_EQ(mProtocol.Release(mPath, owner.mNonce), LockRelease::Done);

    const LockRecord next = OfAnotherMachine();
    mProtocol.Take(mPath, next);
    EXPECT_EQ(mProtocol.Check(mPath, owner.mNonce), LockStanding::Lost);
    EXPECT_EQ(mProtocol.Release(mPath, owner.mNonce), LockRelease::NotOurs);
    EXPECT_EQ(NonceOfLock(), next.mNonce);
}

TEST_P(LockProtocolTest, OneAtATimeBreaksALock) {
    Stand(OfAnotherMachine());
    mSeen = mProtocol.Look(mPath);
    EXPECT_EQ(Break([&] { EXPECT_EQ(Break(), LockBreaking::Outcome::Guarded); }),
              LockBreaking::Outcome::Broken);

    // A guard of a machine that does not come back is broken like a lock; one of ours that died is in nobody's
    // way.
    const LockRecord held = OfAnotherMachine();
    const std::string guard = desk::GetGuardName(held.mNonce);
    Stand(held);
    mSeen = mProtocol.Look(mPath);
    mFolder.Write(guard, WriteLockRecord(OfAnotherMachine()));
    EXPECT_EQ(Break(), LockBreaking::Outcome::Guarded);
    const auto seenGuard = mProtocol.Look(mFolder.Path(guard));
    EXPECT_EQ(mProtocol.Break(mFolder.Path(guard), *seenGuard, Mine(), [] { return true; }).mOutcome,
              LockBreaking::Outcome::Broken);
    mFolder.Write(guard, WriteLockRecord(OfDeadProcess(mDesktop)));
    EXPECT_EQ(Break(), LockBreaking::Outcome::Broken);
    EXPECT_TRUE(Names().empty());
}

TEST_P(LockProtocolTest, WithoutItsGuardNobodyBreaks) {
    const LockRecord held = OfAnotherMachine();
    Stand(held);
    mSeen = mProtocol.Look(mPath);
    EXPECT_EQ(Break([&] { mFolder.Remove(desk::GetGuardName(held.mNonce)); }), LockBreaking::Outcome::Changed);
    EXPECT_EQ(Names(), kOnlyLock);
}

TEST_P(LockProtocolTest, EveryStepOfBreakingMayFail) {
    for (const bool isDone : {false, true}) {
        for (int n = 1;; ++n) {
            Stand(OfAnotherMachine());
            mSeen = mProtocol.Look(mPath);
            mDisk.ResetCounts();
            isDone ? mDisk.FailAfter(Operation::Any, n, EIO) : mDisk.Fail(Operation::Any, n, EIO);
            const LockBreaking::Outcome outcome = Break();
            const bool hasFailed = mDisk.Count(Operation::Any) >= n;
            RemoveRemains();
            SCOPED_TRACE("step " + std::to_string(n) + (isDone ? ", reply lost" : ""));
            const bool isBroken = outcome == LockBreaking::Outcome::Broken;
            ASSERT_EQ(Names(), isBroken ? std::vector<std::string>{} : kOnlyLock);
            if (!hasFailed) break;
        }
    }
}

TEST_P(LockProtocolTest, SweepsOnlyWhatOurDeadHaveLeft) {
    const LockRecord dead = OfDeadProcess(mDesktop);
    const LockRecord elsewhere = OfAnotherMachine();
    LockRecord earlier = Mine();
    earlier.mBootID = "99999999-2222-3333-4444-555555555555";
    for (const LockRecord& gone : {dead, earlier}) mFolder.Write(desk::MakeTemporaryName(gone));
    mFolder.Write(desk::GetGuardName(earlier.mNonce), WriteLockRecord(dead));
    const std::set<std::string> kept{desk::MakeTemporaryName(Mine()),
                                     desk::MakeTemporaryName(elsewhere),
                                     desk::GetGuardName(elsewhere.mNonce),
                                     desk::GetGuardName(Mine().mNonce),
                                     desk::GetGuardName("half-a-guard-of-nobody-knows-wh"),
                                     ".zutmp-" + dead.mNonce,
                                     desk::MakeTemporaryName(dead) + ".x",
                                     kLock,
                                     ".Reel 2.zuproj.lock",
                                     "Reel 1.zuproj"};
    for (const std::string& name : kept) mFolder.Write(name);
    mFolder.Write(kLock, WriteLockRecord(elsewhere));
    mFolder.Write(".Reel 3.zuproj.lock", WriteLockRecord(dead));
    mFolder.Write(desk::GetGuardName(elsewhere.mNonce), WriteLockRecord(elsewhere));
    desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path());
    const std::vector<std::string> names = Names();
    EXPECT_EQ(std::set(names.begin(), names.end()), kept);
}
