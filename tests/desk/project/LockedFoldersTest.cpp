#include <gmock/gmock.h>

#include "host/project/ProductionItems.h"
#include "host/project/ProjectLockFile.h"
#include "tests/desk/files/FollowedFolder.h"

namespace {

class LockedFoldersTest : public FollowedFolder {
protected:
    LockedFoldersTest() {
        for (const char* name : {"Day 1/a.zuproj", "Day 1/Sub/b.zuproj", "Day 10/c.zuproj"})
            mFolder.Write(name);
        UseFakeSource();
        Monitor();
    }
    void ListAll() {
        for (const char* folder : {"", "Day 1", "Day 1/Sub", "Day 10"}) List(folder);
    }
    /// Tells of a change of a lock file.
    void Tell(const std::string& folder, std::uint32_t mask, const std::string& name) {
        mSource->Tell(mFolder.Path(folder), mask, name);
        mMain.Advance(std::chrono::seconds(1));
    }
    bool HasLocked(bool recursive = true, bool onlyOthers = true) {
        mDisk.ResetCounts();
        const bool result = host::DoesDirectoryContainLockedProjects(Path("Day 1"), recursive, onlyOthers);
        EXPECT_EQ(mDisk.CountOnUIThread(), 0) << "a command's status must not wait for the volume";
        return result;
    }
};

}  // namespace

TEST_F(LockedFoldersTest, AnswersFromWhatIsListedWithoutTheDisk) {
    Lock("Day 1/Sub", "b.zuproj", u"tomas");
    Lock("Day 10", "c.zuproj", u"tomas");
    EXPECT_FALSE(HasLocked()) << "nothing is known yet";
    ListAll();
    EXPECT_TRUE(HasLocked());
    EXPECT_FALSE(HasLocked(false)) << "only below";
    mFolder.Remove(LockName("Day 1/Sub", "b.zuproj"));
    Tell("Day 1/Sub", IN_DELETE, ".b.zuproj.lock");
    EXPECT_FALSE(HasLocked()) << "Day 10 is another folder";
}

TEST_F(LockedFoldersTest, UnreadLocksCountAndOwnOnesIfTheyAreMeant) {
    mFolder.Write("Day 1/Sub/.b.zuproj.lock", WriteLockRecord(MakeDeadRecord(mDesktop)));
    ListAll();
    EXPECT_TRUE(HasLocked());
    mMain.RunUntilIdle();
    EXPECT_FALSE(HasLocked()) << "its holder is gone";
    auto lock = host::CreateProjectLockFile(Path("Day 1/a.zuproj"), mDesktop.mUserName, mDesktop.mMachineName);
    Tell("Day 1", IN_CREATE, ".a.zuproj.lock");
    EXPECT_FALSE(HasLocked());
    EXPECT_TRUE(HasLocked(true, false));
    ReadFacts("Day 1/a.zuproj");
    lock.reset();
    EXPECT_FALSE(HasLocked(true, false)) << "given up since it was read";
    EXPECT_FALSE(host::ReadProjectLockFile(Path("Day 1/a.zuproj"), mDesktop.mUserName, mDesktop.mMachineName));
}

TEST_F(LockedFoldersTest, TellsWhoHoldsAProjectWhereAndSinceWhen) {
    Lock("Day 10", "c.zuproj", u"tomas");
    mFolder.Write("Day 1/.a.zuproj.lock", "nonsense");
    EXPECT_EQ(host::DescribeProjectLock(Path("Day 10/c.zuproj")), u"") << "nothing is known yet";
    ListAll();
    const auto describe = [this](const char* project) {
        host::DescribeProjectLock(Path(project));
        mMain.RunUntilIdle();
        return host::UTF16to8(host::DescribeProjectLock(Path(project)));
    };
    EXPECT_THAT(describe("Day 10/c.zuproj"), testing::MatchesRegex("Locked by tomas on .+ since .*[0-9].*"));
    EXPECT_THAT(describe("Day 1/a.zuproj"), testing::StartsWith("Locked by an unknown user"));
    EXPECT_EQ(describe("Day 1/Sub/b.zuproj"), "");
}
