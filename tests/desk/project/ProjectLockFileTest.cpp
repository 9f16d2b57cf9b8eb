#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/project/ProjectLockFile.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"

namespace {

class ProjectLockFileTest : public HostFixture {
protected:
    ProjectLockFileTest() { mFolder.Write("Reel 1.zuproj"); }
    bool IsHeldByReader(const host::UTF16String& user, const host::UTF16String& machine) {
        mFolder.Write(".Reel 1.zuproj.lock", WriteLockRecord(MakeForeignRecord(mDesktop, user, machine)));
        return Read()->IsHeldByReader();
    }
    host::ProjectLockFileRef Read(const char* project = "Reel 1.zuproj") {
        return host::ReadProjectLockFile(mFolder.PathUTF16(project), mDesktop.mUserName, mDesktop.mMachineName);
    }
};

}  // namespace

TEST_F(ProjectLockFileTest, TheReadersOwnLockNeedsUserAndMachine) {
    EXPECT_FALSE(IsHeldByReader(u"tomas", mDesktop.mMachineName));
    EXPECT_FALSE(IsHeldByReader(mDesktop.mUserName, u"edit-bay-2"));
    EXPECT_TRUE(IsHeldByReader(mDesktop.mUserName, mDesktop.mMachineName));
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
