#include <gtest/gtest.h>

#include <filesystem>

#include "desk/files/ChangeSource.h"
#include "desk/files/FolderStore.h"
#include "desk/project/Leftovers.h"
#include "desk/project/LockKeeper.h"
#include "host/project/ProjectLockFile.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

using namespace std::chrono_literals;

namespace {

constexpr char kProject[] = "Day 1/Reel 1.zuproj";
constexpr char kLock[] = "Day 1/.Reel 1.zuproj.lock";

class LockKeeperTest : public HostFixture {
protected:
    LockKeeperTest() { mFolder.Write(kProject); }

    host::ProjectLockFileRef Create(std::string_view project = kProject) {
        return host::CreateProjectLockFile(mFolder.PathUTF16(project), mDesktop.mUserName,
                                           mDesktop.mMachineName);
    }
    host::ProjectLockFileRef Read(std::string_view project = kProject) {
        return host::ReadProjectLockFile(mFolder.PathUTF16(project), mDesktop.mUserName, mDesktop.mMachineName);
    }
    std::string NonceAt(std::string_view lock) const {
        return desk::ParseLockRecord(mFolder.Read(lock)).mNonce;
    }
};

}  // namespace

TEST_F(LockKeeperTest, TheLastCreatedReferenceRemovesTheFile) {
    host::ProjectLockFileRef first = Create();
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->IsLocked() && first->IsHeldByReader());
    EXPECT_EQ(first->GetLockOwner(), mDesktop.mUserName);
    const std::string nonce = NonceAt(kLock);
    host::ProjectLockFileRef second = Create("./Day 1//Reel 1.zuproj");
    ASSERT_TRUE(second);
    EXPECT_EQ(NonceAt(kLock), nonce) << "the same lock";
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), u"tomas", mDesktop.mMachineName));
    EXPECT_TRUE(Read()->IsHeldByReader());
    EXPECT_TRUE(mFolder.Exists(kLock)) << "a read reference has gone";
    first.reset();
    EXPECT_TRUE(mFolder.Exists(kLock));
    second.reset();
    EXPECT_FALSE(mFolder.Exists(kLock));
    EXPECT_FALSE(Read());
}

TEST_F(LockKeeperTest, RefusesBeforeTheDiskIsTouched) {
    const ExpectLogged why("take lock of");
    mDisk.ResetCounts();
    // The longest name that has room for what the lock's name adds, and one more.
    const std::string longest = std::string(249 - 7, 'x') + ".zuproj";
    EXPECT_FALSE(Create("x" + longest));
    EXPECT_FALSE(Create("notes.txt"));
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), {}, mDesktop.mMachineName));
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), mDesktop.mUserName, {}));
    EXPECT_EQ(mDisk.Count(Operation::Any), 0);
    EXPECT_TRUE(Create(longest));
}

TEST_F(LockKeeperTest, TellsTheUserWhyALockWasNotTaken) {
    {
        const ExpectLogged log("take lock of"), told("“Reel 1” cannot be locked: Permission denied.");
        mDisk.Deny(mFolder.Path("Day 1"));
        EXPECT_FALSE(Create());
        mDisk.Allow(mFolder.Path("Day 1"));
    }
    const ExpectLogged told("“Reel 1” is locked by tomas on edit-bay-2");
    mFolder.Write(kLock, WriteLockRecord(MakeForeignRecord(mDesktop)));
    EXPECT_FALSE(Create());
}

TEST_F(LockKeeperTest, WhatCannotBeRemovedIsTriedAgainForThreeSecondsAndCanBeTakenBack) {
    host::ProjectLockFileRef lock = Create();
    const std::string nonce = NonceAt(kLock);
    const auto giveUp = [&] {
        mDisk.Deny(mFolder.Path("Day 1"), EBUSY);
        lock.reset();
        EXPECT_TRUE(mFolder.Exists(kLock));
    };
    giveUp();
    mDisk.Allow(mFolder.Path("Day 1"));
    lock = Create();
    ASSERT_TRUE(lock);
    mMain.Advance(4s);
    EXPECT_EQ(NonceAt(kLock), nonce) << "it has been taken back";
    EXPECT_FALSE(lock->IsLost());

    giveUp();
    mMain.Advance(1s);
    mDisk.Allow(mFolder.Path("Day 1"));
    mMain.Advance(1s);
    EXPECT_FALSE(mFolder.Exists(kLock));

    lock = Create();
    giveUp();
    const ExpectLogged told("could not remove the lock file");
    mMain.Advance(4s);
    EXPECT_EQ(mMain.CountDelayed(), 0u);
    mDisk.Allow(mFolder.Path("Day 1"));
    lock = Create();
    EXPECT_TRUE(lock) << "still this process's";
    lock.reset();
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockKeeperTest, ALockFollowsAFolderThatSomebodyElseHasMoved) {
    host::ProjectLockFileRef lock = Create();
    const std::string nonce = NonceAt(kLock);
    mFolder.Rename("Day 1", "Day 2");
    const host::ProjectLockFileRef moved = Create("Day 2/Reel 1.zuproj");
    ASSERT_TRUE(moved);
    EXPECT_EQ(NonceAt("Day 2/.Reel 1.zuproj.lock"), nonce);
    EXPECT_FALSE(lock->IsLost());
    lock.reset();
    EXPECT_TRUE(mFolder.Exists("Day 2/.Reel 1.zuproj.lock"));
}

TEST_F(LockKeeperTest, AnOrphanOfThisProcessIsTakenBack) {
    desk::LockRecord orphan = desk::MakeLockRecord(mDesktop, mDesktop.mUserName, mDesktop.mMachineName);
    mFolder.Write(kLock, WriteLockRecord(orphan));
    EXPECT_TRUE(Create());
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockKeeperTest, ALockThatWasBrokenIsLostAndNothingIsRemoved) {
    host::ProjectLockFileRef lock = Create();
    EXPECT_FALSE(lock->IsLost());
    mDisk.SetGone(true);
    EXPECT_THROW(lock->IsLost(), host::FileException);
    mDisk.SetGone(false);
    mFolder.Write(kLock, WriteLockRecord(MakeForeignRecord(mDesktop)));
    EXPECT_TRUE(lock->IsLost());
    EXPECT_FALSE(lock->IsLocked());
    EXPECT_EQ(Read()->GetLockOwner(), u"tomas");
    EXPECT_FALSE(Create());
    mFolder.Remove(kLock);
    host::ProjectLockFileRef next = Create();
    ASSERT_TRUE(next);
    EXPECT_TRUE(lock->IsLost()) << "a lost lock stays lost";
    lock.reset();
    EXPECT_TRUE(mFolder.Exists(kLock));
    EXPECT_FALSE(next->IsLost());
}

TEST_F(LockKeeperTest, ALockThatSomebodyElseHasMovedGoesWhenItsNewFolderIsListed) {
    const auto list = [this] { desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path("Day 2")); };
    for (const bool isFoundLost : {false, true}) {
        host::ProjectLockFileRef lock = Create();
        mFolder.Rename("Day 1", "Day 2");
        list();
        EXPECT_TRUE(mFolder.Exists("Day 2/.Reel 1.zuproj.lock")) << "it is still held";
        EXPECT_EQ(isFoundLost && lock->IsLost(), isFoundLost);
        lock.reset();
        host::ProjectLockFileRef again = Create("Day 2/Reel 1.zuproj");
        list();
        EXPECT_TRUE(mFolder.Exists("Day 2/.Reel 1.zuproj.lock")) << "it has been taken back";
        mFolder.Rename("Day 2", "Day 1");
        again.reset();
        mFolder.Rename("Day 1", "Day 2");
        list();
        EXPECT_FALSE(mFolder.Exists("Day 2/.Reel 1.zuproj.lock"));
        mFolder.Rename("Day 2", "Day 1");
    }
}

TEST_F(LockKeeperTest, WhatDeadProcessesHaveLeftGoesWhenAFolderIsFirstListed) {
    const std::string temporary = "Day 1/" + desk::MakeTemporaryName(MakeDeadRecord(mDesktop));
    mFolder.Write(temporary);
    const auto store = desk::CreateFolderStore();
    store->RequestListing(mFolder.PathUTF16("Day 1"), [](const desk::FolderStore::Delivery&) {});
    mMain.RunUntilIdle();
    EXPECT_FALSE(mFolder.Exists(temporary));
    EXPECT_TRUE(mFolder.Exists(kProject));
}

TEST_F(LockKeeperTest, ACopyOfALockIsNotTheLock) {
    const host::ProjectLockFileRef lock = Create();
    std::filesystem::copy(mFolder.Path("Day 1"), mFolder.Path("Day 2"));
    EXPECT_FALSE(Create("Day 2/Reel 1.zuproj"));
    EXPECT_FALSE(lock->IsLost());
}
