#include <gtest/gtest.h>
#include <sys/stat.h>

#include "desk/project/LockRecord.h"
#include "host/project/ProjectLockFile.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class ProjectLockFileTest : public testing::Test {
protected:
    ProjectLockFileTest() {
        mFolder.Write("Reel 1.zuproj");
        mRecord.mNonce = "00112233445566778899aabbccddeeff";
        mRecord.mUser = u"tomas";
        mRecord.mMachine = u"edit-bay-2";
        mRecord.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
        mRecord.mBootID = "7c1a52de-0f3b-4f0e-9a66-3d2f8f1b6e10";
        mRecord.mPid = 2210;
    }
    void WriteLock() { mFolder.Write(".Reel 1.zuproj.lock", WriteLockRecord(mRecord)); }
    host::ProjectLockFileRef Read(const char* project = "Reel 1.zuproj") {
        return host::ReadProjectLockFile(mFolder.PathUTF16(project), mDesktop.mUserName, mDesktop.mMachineName);
    }

    TemporaryFolder mFolder;
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    desk::LockRecord mRecord;
};

}  // namespace

TEST_F(ProjectLockFileTest, NamesTheHolderThatTheDiskTells) {
    EXPECT_FALSE(Read());
    WriteLock();
    const host::ProjectLockFileRef lock = Read(".//Reel 1.zuproj");
    ASSERT_TRUE(lock);
    EXPECT_TRUE(lock->IsLocked());
    EXPECT_EQ(lock->GetLockOwner(), u"tomas");
    EXPECT_FALSE(lock->IsHeldByReader());
}

TEST_F(ProjectLockFileTest, TheReadersOwnLockNeedsUserAndMachine) {
    mRecord.mUser = mDesktop.mUserName;
    WriteLock();
    EXPECT_FALSE(Read()->IsHeldByReader());
    mRecord.mMachine = mDesktop.mMachineName;
    WriteLock();
    EXPECT_TRUE(Read()->IsHeldByReader());
}

TEST_F(ProjectLockFileTest, AnUnreadableLockIsHeldByAnUnknownUser) {
    mkfifo(mFolder.Path(".Reel 1.zuproj.lock").c_str(), 0600);
    const host::ProjectLockFileRef lock = Read();
    ASSERT_TRUE(lock);
    EXPECT_TRUE(lock->IsLocked());
    EXPECT_FALSE(lock->GetLockOwner().empty());
    EXPECT_FALSE(lock->IsHeldByReader());
}

TEST_F(ProjectLockFileTest, TheIdentityIsWholeOrNone) {
    host::UTF16String user;
    host::UTF16String machine;
    EXPECT_TRUE(host::GetProjectLockingPrefs(user, machine));
    EXPECT_EQ(user, mDesktop.mUserName);
    EXPECT_EQ(machine, mDesktop.mMachineName);
    mDesktop.mMachineName.clear();
    EXPECT_FALSE(host::GetProjectLockingPrefs(user, machine));
    EXPECT_TRUE(user.empty() && machine.empty());
}
