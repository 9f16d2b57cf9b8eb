#include <gtest/gtest.h>
#include <sys/stat.h>

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
constexpr char kMovedLock[] = "Day 2/.Reel 1.zuproj.lock";

class LockKeeperTest : public HostFixture {
protected:
    LockKeeperTest() { mFolder.Write(kProject); }

    host::ProjectLockFileRef Create(std::string_view project = kProject) {
        return host::CreateProjectLockFile(mFolder.PathUTF16(project), mDesktop.mUserName,
                                           mDesktop.mMachineName);
    }
    host::ProjectLockFileRef Read() {
        return host::ReadProjectLockFile(mFolder.PathUTF16(kProject), mDesktop.mUserName,
                                         mDesktop.mMachineName);
    }
    std::string NonceAt(std::string_view lock) const {
        return desk::ParseLockRecord(mFolder.Read(lock)).mNonce;
    }
    void WriteForeignLock(const host::UTF16String& user = u"tomas",
                          const host::UTF16String& machine = u"edit-bay-2") {
        mFolder.Write(kLock, WriteLockRecord(MakeForeignRecord(mDesktop, user, machine)));
    }
    /// As a folder is swept when it is first listed.
    void List(const char* folder) { desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path(folder)); }
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

TEST_F(LockKeeperTest, ReadsWhoHoldsTheLock) {
    const auto isHeldByReader = [this](const host::UTF16String& user, const host::UTF16String& machine) {
        WriteForeignLock(user, machine);
        return Read()->IsHeldByReader();
    };
    EXPECT_FALSE(isHeldByReader(u"tomas", mDesktop.mMachineName));
    EXPECT_FALSE(isHeldByReader(mDesktop.mUserName, u"edit-bay-2"));
    EXPECT_TRUE(isHeldByReader(mDesktop.mUserName, mDesktop.mMachineName));
    mFolder.Remove(kLock);
    mkfifo(mFolder.Path(kLock).c_str(), 0600);
    EXPECT_TRUE(Read()->IsLocked() && !Read()->IsHeldByReader());
    EXPECT_FALSE(Read()->GetLockOwner().empty());
}

TEST_F(LockKeeperTest, RefusesBeforeTheDiskIsTouched) {
    const ExpectLogged why("take lock of"), told("“notes” cannot be locked: Invalid argument.");
    mDisk.ResetCounts();
    // The longest name that has room for what the lock's name adds, and one more.
    const std::string longest = std::string(249 - 7, 'x') + ".zuproj";
    EXPECT_FALSE(Create("x" + longest));
    EXPECT_FALSE(Create("notes.txt"));
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), {}, mDesktop.mMachineName));
    EXPECT_FALSE(host::CreateProjectLockFile(mFolder.PathUTF16(kProject), mDesktop.mUserName, {}));
    EXPECT_EQ(mDisk.Count(Operation::Any), 0);
    EXPECT_TRUE(Create(longest));

    mDesktop.mMachineName.clear();
    host::UTF16String user = u"before", machine = u"before";
    EXPECT_FALSE(host::GetProjectLockingPrefs(user, machine));
    EXPECT_TRUE(user.empty() && machine.empty()) << "an identity is whole or none";
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
    List("Day 1");
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

TEST_F(LockKeeperTest, AVolumeThatHangsDoesNotKeepWhoGivesALockUp) {
    host::ProjectLockFileRef lock = Create();
    mDisk.CloseGate(Operation::RemoveFile, mFolder.Path(kLock));
    lock.reset();
    EXPECT_TRUE(mFolder.Exists(kLock));
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_FALSE(mFolder.Exists(kLock));
}

TEST_F(LockKeeperTest, ALockFollowsAFolderThatSomebodyElseHasMoved) {
    host::ProjectLockFileRef lock = Create();
    const std::string nonce = NonceAt(kLock);
    mFolder.Rename("Day 1", "Day 2");
    const host::ProjectLockFileRef moved = Create("Day 2/Reel 1.zuproj");
    ASSERT_TRUE(moved);
    EXPECT_EQ(NonceAt(kMovedLock), nonce);
    EXPECT_FALSE(lock->IsLost());
    lock.reset();
    EXPECT_TRUE(mFolder.Exists(kMovedLock));

    std::filesystem::copy(mFolder.Path("Day 2"), mFolder.Path("Day 3"));
    EXPECT_FALSE(Create("Day 3/Reel 1.zuproj")) << "a copy of a lock is not the lock";
    EXPECT_FALSE(moved->IsLost());
}

TEST_F(LockKeeperTest, ALockThatWasBrokenIsLostAndNothingIsRemoved) {
    host::ProjectLockFileRef lock = Create();
    EXPECT_FALSE(lock->IsLost());
    mDisk.SetGone(true);
    EXPECT_THROW(lock->IsLost(), host::FileException);
    mDisk.SetGone(false);
    WriteForeignLock();
    EXPECT_TRUE(lock->IsLost());
    EXPECT_FALSE(lock->IsLocked());
    EXPECT_EQ(Read()->GetLockOwner(), u"tomas");
    const ExpectLogged told("“Reel 1” is locked by tomas on edit-bay-2");
    EXPECT_FALSE(Create());
    mFolder.Remove(kLock);
    const host::ProjectLockFileRef next = Create();
    ASSERT_TRUE(next);
    EXPECT_TRUE(lock->IsLost()) << "a lost lock stays lost";
    lock.reset();
    EXPECT_TRUE(mFolder.Exists(kLock));
    EXPECT_FALSE(next->IsLost());
}

TEST_F(LockKeeperTest, ALockThatWasLostAndComesToLightAgainIsTakenBack) {
    host::ProjectLockFileRef lock = Create();
    mFolder.Rename(kLock, "lock");
    EXPECT_TRUE(lock->IsLost());
    mFolder.Rename("lock", kLock);
    EXPECT_TRUE(lock->IsLost());
    const host::ProjectLockFileRef again = Create();
    ASSERT_TRUE(again);
    lock.reset();
    List("Day 1");
    EXPECT_TRUE(mFolder.Exists(kLock)) << "the lost one has not taken it along";
    EXPECT_FALSE(again->IsLost());
}

TEST_F(LockKeeperTest, ALockThatSomebodyElseHasMovedGoesWhenItsNewFolderIsListed) {
    for (const bool isLookedFor : {false, true}) {
        host::ProjectLockFileRef lock = Create();
        mFolder.Rename("Day 1", "Day 2");
        List("Day 2");
        EXPECT_TRUE(mFolder.Exists(kMovedLock)) << "it is still held";
        if (isLookedFor) {
            EXPECT_THROW(lock->IsLost(), host::FileException);
        }
        lock.reset();
        host::ProjectLockFileRef again = Create("Day 2/Reel 1.zuproj");
        List("Day 2");
        EXPECT_TRUE(mFolder.Exists(kMovedLock)) << "it has been taken back";
        mFolder.Rename("Day 2", "Day 1");
        again.reset();
        mFolder.Rename("Day 1", "Day 2");
        List("Day 2");
        EXPECT_FALSE(mFolder.Exists(kMovedLock));
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
