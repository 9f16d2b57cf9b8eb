#include <gtest/gtest.h>

#include <filesystem>

#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/ChangeSource.h"
#include "desk/files/FolderStore.h"
#include "desk/project/Leftovers.h"
#include "desk/project/LockKeeper.h"
#include "host/files/FileException.h"
#include "host/project/ProjectLockFile.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/TemporaryFolder.h"

using namespace std::chrono_literals;
using Operation = FaultyFileSystem::Operation;

namespace {

constexpr char kProject[] = "Day 1/Reel 1.zuproj";
constexpr char kLock[] = "Day 1/.Reel 1.zuproj.lock";

class LockKeeperTest : public testing::Test {
protected:
    LockKeeperTest() {
        mFolder.Write(kProject);
        desk::GetServices().mWorkerPool = &mPool;
    }
    ~LockKeeperTest() override { desk::GetServices().mWorkerPool = nullptr; }

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
    void WriteForeign() {
        desk::LockRecord record = desk::MakeLockRecord(mDesktop, u"tomas", u"edit-bay-2");
        record.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
        mFolder.Write(kLock, WriteLockRecord(record));
    }

    TemporaryFolder mFolder;
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    ManualMainThread mMainThread;
    desk::WorkerPool mPool{2};
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

TEST_F(LockKeeperTest, SomebodyElsesLockGivesNoReference) {
    WriteForeign();
    const std::string nonce = NonceAt(kLock);
    {
        const ExpectLogged why("held by tomas on edit-bay-2 since 2026-03-02T09:30:00Z");
        EXPECT_FALSE(Create());
    }
    EXPECT_EQ(NonceAt(kLock), nonce);
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

TEST_F(LockKeeperTest, AFailureNamesOperationPathAndReason) {
    const ExpectLogged why("take lock of");
    const ExpectLogged path("Reel 1.zuproj");
    const ExpectLogged reason("No space left on device");
    mDisk.Fail(Operation::CreateNewFile, 1, ENOSPC);
    EXPECT_FALSE(Create());
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockKeeperTest, WhatAReaderHasOpenIsRemovedInTheBackground) {
    host::ProjectLockFileRef lock = Create();
    mDisk.Deny(mFolder.Path("Day 1"), EBUSY);
    lock.reset();
    EXPECT_TRUE(mFolder.Exists(kLock));
    mMainThread.Advance(1s);
    EXPECT_TRUE(mFolder.Exists(kLock));
    mDisk.Allow(mFolder.Path("Day 1"));
    mMainThread.Advance(1s);
    EXPECT_FALSE(mFolder.Exists(kLock));
    EXPECT_EQ(mMainThread.CountDelayed(), 0u);
}

TEST_F(LockKeeperTest, AfterThreeSecondsThatIsGivenUp) {
    host::ProjectLockFileRef lock = Create();
    const std::string guard = "Day 1/" + desk::GetGuardName(NonceAt(kLock));
    desk::LockRecord breaker = desk::MakeLockRecord(mDesktop, u"tomas", u"edit-bay-2");
    mFolder.Write(guard, WriteLockRecord(breaker));
    lock.reset();
    const ExpectLogged told("could not remove the lock file");
    mMainThread.Advance(4s);
    EXPECT_TRUE(mFolder.Exists(kLock));
    EXPECT_EQ(mMainThread.CountDelayed(), 0u);
    // Still this process's: it can be taken back.
    mFolder.Remove(guard);
    lock = Create();
    EXPECT_TRUE(lock);
    lock.reset();
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockKeeperTest, WhatIsBeingGivenUpCanBeTakenBack) {
    host::ProjectLockFileRef lock = Create();
    const std::string nonce = NonceAt(kLock);
    mDisk.Deny(mFolder.Path("Day 1"), EBUSY);
    lock.reset();
    mDisk.Allow(mFolder.Path("Day 1"));
    lock = Create();
    ASSERT_TRUE(lock);
    EXPECT_EQ(NonceAt(kLock), nonce);
    mMainThread.Advance(4s);
    EXPECT_TRUE(mFolder.Exists(kLock));
    EXPECT_FALSE(lock->IsLost());
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
    WriteForeign();
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

TEST_F(LockKeeperTest, ALockFollowsAMovedFolder) {
    for (const bool isTold : {true, false}) {
        host::ProjectLockFileRef lock = Create();
        const std::string nonce = NonceAt(kLock);
        mFolder.Rename("Day 1", "Day 2");
        if (isTold) desk::LockKeeper::Instance().FollowMove(mFolder.Path("Day 1"), mFolder.Path("Day 2"));
        host::ProjectLockFileRef moved = Create("Day 2/Reel 1.zuproj");
        ASSERT_TRUE(moved);
        EXPECT_EQ(NonceAt("Day 2/.Reel 1.zuproj.lock"), nonce);
        EXPECT_FALSE(lock->IsLost());
        lock.reset();
        EXPECT_TRUE(mFolder.Exists("Day 2/.Reel 1.zuproj.lock"));
        moved.reset();
        EXPECT_FALSE(mFolder.Exists("Day 2/.Reel 1.zuproj.lock"));
        mFolder.Rename("Day 2", "Day 1");
    }
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
    desk::LockRecord earlier = desk::MakeLockRecord(mDesktop, u"ines", u"edit-bay-1");
    earlier.mBootID = "99999999-2222-3333-4444-555555555555";
    const std::string temporary = "Day 1/" + desk::MakeTemporaryName(earlier);
    mFolder.Write(temporary);
    const auto store = desk::CreateFolderStore();
    store->RequestListing(mFolder.PathUTF16("Day 1"), [](const desk::FolderStore::Delivery&) {});
    mMainThread.RunUntilIdle();
    EXPECT_FALSE(mFolder.Exists(temporary));
    EXPECT_TRUE(mFolder.Exists(kProject));
}

TEST_F(LockKeeperTest, ACopyOfALockIsNotTheLock) {
    const host::ProjectLockFileRef lock = Create();
    std::filesystem::copy(mFolder.Path("Day 1"), mFolder.Path("Day 2"));
    EXPECT_FALSE(Create("Day 2/Reel 1.zuproj"));
    EXPECT_FALSE(lock->IsLost());
}
