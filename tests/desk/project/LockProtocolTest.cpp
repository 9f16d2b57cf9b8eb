

#include "desk/core/names/HostNames.h"
#include "desk/project/lock/Leftovers.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

using desk::LockBreaking;
using desk::LockProtocol;
using desk::LockRecord;
using desk::LockRelease;
using desk::LockReport;
using desk::LockStanding;
using desk::LockTaking;

namespace {

class LockProtocolTest : public HostFixture, public testing::WithParamInterface<bool> {
protected:
    LockProtocolTest() { mDisk.SetHasLinks(GetParam()); }

    LockRecord Mine() const { return desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1"); }
    LockRecord Foreign() const { return MakeForeignRecord(mDesktop); }
    LockTaking::Outcome Take(const LockRecord& record) { return mProtocol.Take(mPath, record).mOutcome; }
    void Stand(const LockRecord& record) { mFolder.Write(kLock, WriteLockRecord(record)); }
    void StandGuard(const LockRecord& of, const LockRecord& record) {
        mFolder.Write(desk::GetGuardName(of.mNonce), WriteLockRecord(record));
    }
    std::string NonceOfLock() const { return desk::ParseLockRecord(mFolder.Read(kLock)).mNonce; }
    /// Breaks the lock as it has been seen, or as it is now.
    LockBreaking::Outcome Break(const std::function<bool()>& meanwhile = [] { return true; }) {
        return mProtocol.Break(mPath, *mSeen, Mine(), meanwhile).mOutcome;
    }
    LockBreaking::Outcome LookAndBreak(const std::function<bool()>& meanwhile = [] { return true; }) {
        mSeen = mProtocol.Look(mPath);
        return Break(meanwhile);
    }
    /// Has each step of `work` fail once, before and after it is carried out, and then lets the volume recover.
    void FailEachStep(const std::function<void()>& prepare, const std::function<void()>& work,
                      const std::function<void()>& check) {
        for (const bool isDone : {false, true}) {
            bool hasFailed = true;
            for (int step = 1; hasFailed && !HasFailure(); ++step) {
                SCOPED_TRACE("step " + std::to_string(step) + (isDone ? ", reply lost" : ""));
                prepare();
                mDisk.ResetCounts();
                isDone ? mDisk.FailAfter(Operation::Any, step, EIO) : mDisk.Fail(Operation::Any, step, EIO);
                work();
                hasFailed = mDisk.Count(Operation::Any) >= step;
                // A fault that was not reached must not come later.
                while (mDisk.Count(Operation::Any) < step) ErrorOf([&] { mDisk.TryFolder(mFolder.Path()); });
                mProtocol.DropRemains();
                for (const auto& hollow : desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path()))
                    desk::SweepHollowLock(mDisk, mDesktop, hollow);
                check();
            }
        }
    }

    static constexpr char kLock[] = ".Reel 1.zuproj.lock";
    const std::string mPath = mFolder.Path(kLock);
    LockProtocol mProtocol{mDisk, mDesktop};
    std::optional<desk::LockSnapshot> mSeen;
};

INSTANTIATE_TEST_SUITE_P(Volumes, LockProtocolTest, testing::Bool(),
                         [](const auto& volume) { return volume.param ? "WithLinks" : "WithoutLinks"; });

const Names kOnlyLock{".Reel 1.zuproj.lock"};

}  // namespace

TEST_P(LockProtocolTest, IsTakenOnceAndGivenUpByItsOwner) {
    const LockRecord mine = Mine();
    EXPECT_EQ(Take(mine), LockTaking::Outcome::Ours);
    EXPECT_EQ(NamesIn(), kOnlyLock);
    EXPECT_EQ(mProtocol.Check(mPath, mine.mNonce).mStanding, LockStanding::Ours);
    const LockTaking second = mProtocol.Take(mPath, Foreign());
    EXPECT_EQ(second.mOutcome, LockTaking::Outcome::Held);
    EXPECT_EQ(second.mRecord.mNonce, mine.mNonce);
    EXPECT_EQ(mProtocol.Release(mPath, Foreign().mNonce), LockRelease::NotOurs);
    EXPECT_EQ(NamesIn(), kOnlyLock);

    struct : desk::PosixFileSystem {
        void Link(const std::string&, const std::string&) override {}
    } lyingDisk;
    EXPECT_EQ(LockProtocol(lyingDisk, mDesktop).Take(mPath, Foreign()).mOutcome, LockTaking::Outcome::Held)
        << "a link that says that it was made";

    mDisk.SetGone(true);
    EXPECT_EQ(mProtocol.Release(mPath, mine.mNonce), LockRelease::Retry);
    EXPECT_EQ(Take(Mine()), LockTaking::Outcome::Failed);
    mDisk.SetGone(false);
    for (const desk::LockRemains& remains : mProtocol.TakeRemains()) mProtocol.RemoveRemains(remains);
    // The call was repeated on the way, and found nothing any more.
    mDisk.FailAfter(Operation::RemoveFile, 1, ENOENT);
    EXPECT_EQ(mProtocol.Release(mPath, mine.mNonce), LockRelease::Done);
    EXPECT_TRUE(NamesIn().empty());
}

TEST_P(LockProtocolTest, IsLostOnlyWhenAnotherStandsThereOrTheListingHasItsProjectAlone) {
    const LockRecord mine = Mine();
    const std::string whole = WriteLockRecord(mine);
    const auto holds = [&](const std::string& content) { mFolder.Write(kLock, content); };
    using Trouble = LockReport::Trouble;
    const struct {
        const char* mName;
        std::function<void()> mBegin;
        LockStanding mStanding;
        Trouble mTrouble = Trouble::None;
        int mSystemError = 0;
    } cases[] = {
        {"nothing happens", [] {}, LockStanding::Ours},
        {"another's", [&] { Stand(Foreign()); }, LockStanding::Lost},
        {"removed", [&] { mFolder.Remove(kLock); }, LockStanding::Lost},
        {"removed, and the folder cannot be listed",
         [&] { mFolder.Remove(kLock), mDisk.Fail(Operation::ListFolder, 3, EACCES); }, LockStanding::Unknown,
         Trouble::Refused, EACCES},
        {"an empty mount point", [&] { mFolder.Remove(kLock), mFolder.Remove("Reel 1.zuproj"); },
         LockStanding::Unknown, Trouble::ProjectAway, ENOENT},
        {"empty", [&] { holds(""); }, LockStanding::Unknown, Trouble::Unreadable},
        {"cut", [&] { holds(whole.substr(0, whole.size() / 2)); }, LockStanding::Unknown, Trouble::Unreadable},
        {"a folder", [&] { mFolder.Remove(kLock), mFolder.MakeFolder(kLock); }, LockStanding::Unknown,
         Trouble::Unreadable},
        {"refused", [&] { mDisk.Deny(mFolder.Path(), EACCES); }, LockStanding::Unknown, Trouble::Refused,
         EACCES},
        {"not allowed", [&] { mDisk.Deny(mPath, EPERM); }, LockStanding::Unknown, Trouble::Refused, EPERM},
        {"not connected", [&] { mDisk.Deny(mFolder.Path(), ENOTCONN); }, LockStanding::Unknown,
         Trouble::Refused, ENOTCONN},
        {"no folder", [&] { mDisk.Deny(mFolder.Path(), ENOENT); }, LockStanding::Unknown, Trouble::FolderAway,
         ENOENT},
        // Its absence is what this machine still remembers.
        {"in the listing only", [&] { mDisk.Deny(mPath, ENOENT); }, LockStanding::Unknown, Trouble::Refused,
         EAGAIN},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mName);
        mFolder.Write("Reel 1.zuproj");
        std::filesystem::remove(mPath);
        Stand(mine);
        c.mBegin();
        const LockReport report = mProtocol.Check(mPath, mine.mNonce);
        EXPECT_EQ(report.mStanding, c.mStanding);
        EXPECT_EQ(report.mTrouble, c.mTrouble);
        EXPECT_EQ(report.mSystemError, c.mSystemError);
        EXPECT_EQ(report.mStanding == LockStanding::Lost && report.mHolder.mIsReadable,
                  std::string_view(c.mName) == "another's");
        mDisk.Allow(mFolder.Path());
        mDisk.Allow(mPath);
    }
}

TEST_P(LockProtocolTest, WhatCannotBeReadIsHeldAndNeverStaleButCanBeBroken) {
    for (const char* content : {"", "half a reco", "\0\1\2"}) {
        mFolder.Write(kLock, content);
        const LockTaking taking = mProtocol.Take(mPath, Mine());
        EXPECT_EQ(taking.mOutcome, LockTaking::Outcome::Held);
        EXPECT_FALSE(taking.mRecord.mIsReadable);
        EXPECT_EQ(mFolder.Read(kLock), content);
        EXPECT_EQ(LookAndBreak([&] { return mFolder.Write(kLock, "grown meanwhile"), true; }),
                  LockBreaking::Outcome::Changed);
        EXPECT_EQ(NamesIn(), kOnlyLock);
        EXPECT_EQ(LookAndBreak(), LockBreaking::Outcome::Broken);
    }
    ::mkfifo(mPath.c_str(), 0600);
    EXPECT_EQ(Take(Mine()), LockTaking::Outcome::Held);
    EXPECT_EQ(mProtocol.Release(mPath, Mine().mNonce), LockRelease::Retry);
    EXPECT_EQ(LookAndBreak(), LockBreaking::Outcome::Broken);
    std::filesystem::create_directory(mPath);
    EXPECT_EQ(LookAndBreak(), LockBreaking::Outcome::Failed);
    EXPECT_EQ(NamesIn(), kOnlyLock);
}

TEST_P(LockProtocolTest, IsTakenOverFromTheDeadUnlessSomebodyLivingIsAboutTo) {
    LockRecord dead = MakeDeadRecord(mDesktop);
    Stand(dead);
    StandGuard(dead, Foreign());
    EXPECT_EQ(Take(Mine()), LockTaking::Outcome::Held);
    EXPECT_EQ(NonceOfLock(), dead.mNonce);
    // Several have died doing so.
    for (int i = 0; i < 3; ++i) {
        const LockRecord next = MakeDeadRecord(mDesktop);
        StandGuard(dead, next);
        dead = next;
    }
    const LockRecord mine = Mine();
    EXPECT_EQ(Take(mine), LockTaking::Outcome::Ours);
    EXPECT_EQ(NonceOfLock(), mine.mNonce);
    EXPECT_EQ(NamesIn(), kOnlyLock);
}

TEST_P(LockProtocolTest, EveryStepOfTakingOverAndBreakingMayFail) {
    LockRecord mine;
    LockTaking taking;
    FailEachStep([&] { Stand(MakeDeadRecord(mDesktop)); },
                 [&] { taking = mProtocol.Take(mPath, mine = Mine()); },
                 [&] {
                     const bool isOurs = taking.mOutcome == LockTaking::Outcome::Ours;
                     EXPECT_NE(taking.mOutcome, LockTaking::Outcome::Held);
                     EXPECT_EQ(NamesIn(), mFolder.Exists(kLock) ? kOnlyLock : Names{});
                     EXPECT_TRUE(!isOurs || NonceOfLock() == mine.mNonce);
                     EXPECT_TRUE(!isOurs || mProtocol.Release(mPath, mine.mNonce) == LockRelease::Done);
                     // Whatever came of it, the next one succeeds.
                     EXPECT_EQ(Take(mine = Mine()), LockTaking::Outcome::Ours);
                     EXPECT_EQ(mProtocol.Release(mPath, mine.mNonce), LockRelease::Done);
                 });
    LockBreaking::Outcome outcome;
    FailEachStep(
        [&] {
            Stand(Foreign());
            mSeen = mProtocol.Look(mPath);
        },
        [&] { outcome = Break(); },
        [&] { EXPECT_EQ(NamesIn(), outcome == LockBreaking::Outcome::Broken ? Names{} : kOnlyLock); });
}

TEST_P(LockProtocolTest, IsBrokenOnlyAsItWasSeenUnderTheGuard) {
    LockRecord held;
    const struct {
        const char* mName;
        std::function<bool()> mMeanwhile;
        LockBreaking::Outcome mOutcome;
        Names mLeft;
    } cases[] = {
        {"nothing happens",
         [&] {
             return NamesIn() == Names{kLock, desk::GetGuardName(held.mNonce)};
         },
         LockBreaking::Outcome::Broken,
         {}},
        {"given up", [] { return false; }, LockBreaking::Outcome::Cancelled, kOnlyLock},
        {"taken by another", [&] { return Stand(Foreign()), true; }, LockBreaking::Outcome::Changed, kOnlyLock},
        {"removed", [&] { return mFolder.Remove(kLock), true; }, LockBreaking::Outcome::Changed, {}},
        {"removal and look fail",
         [&] {
             mDisk.Fail(Operation::RemoveFile, 1, EROFS);
             mDisk.Fail(Operation::Status, 2, ESTALE);
             return true;
         },
         LockBreaking::Outcome::Failed, kOnlyLock},
        {"look fails", [&] { return mDisk.Fail(Operation::Status, 1, ESTALE), true; },
         LockBreaking::Outcome::Failed, kOnlyLock},
        {"guard removed", [&] { return mFolder.Remove(desk::GetGuardName(held.mNonce)), true; },
         LockBreaking::Outcome::Changed, kOnlyLock},
        {"broken by another too",
         [&] { return Break() == LockBreaking::Outcome::Guarded; },
         LockBreaking::Outcome::Broken,
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mName);
        Stand(held = Foreign());
        EXPECT_EQ(LookAndBreak(c.mMeanwhile), c.mOutcome);
        EXPECT_EQ(NamesIn(), c.mLeft);
    }
}

TEST_P(LockProtocolTest, ALivingOwnerWaitsForTheOneWhoBreaks) {
    const LockRecord owner = Mine();
    Take(owner);
    EXPECT_EQ(LookAndBreak([&] { return mProtocol.Release(mPath, owner.mNonce) == LockRelease::Retry; }),
              LockBreaking::Outcome::Broken);
    EXPECT_EQ(mProtocol.Release(mPath, owner.mNonce), LockRelease::Away) << "like its project";
    mFolder.Write("Reel 1.zuproj");
    EXPECT_EQ(mProtocol.Release(mPath, owner.mNonce), LockRelease::Done);
    const LockRecord next = Foreign();
    Take(next);
    EXPECT_EQ(mProtocol.Check(mPath, owner.mNonce).mStanding, LockStanding::Lost);
    EXPECT_EQ(mProtocol.Release(mPath, owner.mNonce), LockRelease::NotOurs);
    EXPECT_EQ(NonceOfLock(), next.mNonce);
}

TEST_P(LockProtocolTest, SweepsOnlyWhatOurDeadHaveLeft) {
    const LockRecord dead = MakeDeadRecord(mDesktop);
    const LockRecord elsewhere = Foreign();
    // Of a machine that was cloned with this one's id.
    LockRecord clone = MakeDeadRecord(mDesktop);
    clone.mMachine = u"edit-bay-2";
    mFolder.Write(desk::MakeTemporaryName(dead));
    StandGuard(MakeDeadRecord(mDesktop), dead);
    mFolder.Write(".Reel 3.zuproj.lock", WriteLockRecord(dead));
    const Names kept{desk::MakeTemporaryName(Mine()),
                     desk::MakeTemporaryName(elsewhere),
                     desk::GetGuardName(elsewhere.mNonce),
                     desk::GetGuardName("half-a-guard-of-nobody-knows-wh"),
                     ".zutmp-" + dead.mNonce,
                     ".zutmp-" + dead.mNonce + '.' + mDesktop.mMachineID + '.' + dead.mBootID + ".1.4194304.1",
                     desk::MakeTemporaryName(clone),
                     desk::MakeTemporaryName(dead) + ".x",
                     kLock,
                     ".Reel 2.zuproj.lock",
                     "Reel 1.zuproj"};
    for (const std::string& name : kept) mFolder.Write(name);
    Stand(elsewhere);
    mFolder.Write(".Reel 2.zuproj.lock", WriteLockRecord(clone));
    StandGuard(elsewhere, elsewhere);
    desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path());
    EXPECT_EQ(NamesIn(), kept);
}

TEST_P(LockProtocolTest, SweepsAHollowLockThatStaysAsItIsAndThatATemporaryOfOurDeadNames) {
    const LockRecord dead = MakeDeadRecord(mDesktop);
    const std::string record = WriteLockRecord(dead);
    const struct {
        const char* mName;
        std::string mLock;
        bool mIsLockLeft;
        bool mIsTemporaryLeft = false;
        std::function<void()> mMeanwhile = nullptr;
        LockRecord mOwner = {};
        std::size_t mWritten = std::string::npos;
    } cases[] = {
        {"empty", "", false},
        {"cut", record.substr(0, 50), false},
        {"whole", record, false},
        {"not of that record", "{\"bootId\":\"another", true},
        {"of a living process", "", true, true, nullptr, Mine()},
        {"of another machine", "", true, true, nullptr, Foreign()},
        {"died before", "", true, false, nullptr, {}, 50},
        {"written meanwhile", "", true, false, [&] { Stand(Foreign()); }},
        {"made anew meanwhile", "", true, true,
         [&] { mFolder.Remove(kLock), usleep(20'000), mFolder.Write(kLock); }},
        {"given up meanwhile", "", false, false, [&] { mFolder.Remove(kLock); }},
        {"not told meanwhile", "", true, true, [&] { mDisk.Deny(mPath, EIO); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mName);
        for (const std::string& name : NamesIn()) mFolder.Remove(name);
        mFolder.Write(kLock, c.mLock);
        const std::string temporary = desk::MakeTemporaryNameFor(desk::TemporaryPurpose::Lock, kLock,
                                                                 c.mOwner.mIsReadable ? c.mOwner : dead);
        mFolder.Write(temporary, record.substr(0, c.mWritten));
        const auto hollow = desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path());
        if (c.mMeanwhile) c.mMeanwhile();
        for (const desk::HollowLock& lock : hollow) desk::SweepHollowLock(mDisk, mDesktop, lock);
        mDisk.Allow(mPath);
        EXPECT_EQ(mFolder.Exists(kLock), c.mIsLockLeft);
        EXPECT_EQ(mFolder.Exists(temporary), c.mIsTemporaryLeft);
        EXPECT_EQ(NamesIn().size(), std::size_t(c.mIsLockLeft) + c.mIsTemporaryLeft) << "no guard stays";
    }
}
