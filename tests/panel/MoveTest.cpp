#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

using Utils::MoveProjectAndLockFiles;

class MoveTest : public CommandsFixture {
protected:
    MoveTest() {
        MakeProject("A");
        MakeFolder("To");
    }
    bool Move(const std::string& from, const std::string& to) {
        return MoveProjectAndLockFiles(PathOf(from), PathOf(to));
    }
    std::string NoLockTrace(const std::string& name) {
        return "Could not obtain lock file for project. Path: " + UTF16to8(PathOf(name));
    }
};

TEST_F(MoveTest, AnOpenProjectGoesOnWithTheLockAtItsNewPlace) {
    OpenProduction();
    std::filesystem::create_symlink(OnDisk("A.zuproj"), mFolder.Path("link.zuproj"));
    std::filesystem::create_directory_symlink(mFolder.Path(mProduction), mFolder.Path("link"));
    for (const std::string& name :
         {OnDisk("A.zuproj"), std::string("link.zuproj"), std::string("link/A.zuproj")}) {
        SCOPED_TRACE(name);
        mDocuments.OpenProject(mFolder.PathUTF16(name));
        const auto open = FindDocument("A");
        ASSERT_TRUE(open && Move("A.zuproj", "To/B.zuproj"));
        EXPECT_EQ(OnDiskNow(), (DiskTree{"To/", "To/.B.zuproj.lock", "To/B.zuproj"}));
        EXPECT_EQ(open->GetProjectPath(), ProjectPath("To/B"));
        EXPECT_FALSE(open->IsReadOnly() || open->GetLock()->IsLost());
        Edit("To/B", u"changed there");
        EXPECT_TRUE(mDocuments.SaveProject(open));
        EXPECT_EQ(Bytes("To/B"), "changed there");
        EXPECT_TRUE(mDocuments.CloseProject(open, true) && Move("To/B.zuproj", "A.zuproj"));
        EXPECT_EQ(OnDiskNow(), (DiskTree{"A.zuproj", "To/"}));
        EXPECT_FALSE(mFolder.Exists(".link.zuproj.lock"));
    }
}

TEST_F(MoveTest, ADestinationThatSomebodyHasLockedStopsBothKinds) {
    OpenProduction();
    OtherUserLocks("To/B");
    const DiskTree before = OnDiskNow();
    {
        ExpectLogged trace(NoLockTrace("To/B.zuproj"));
        mDialogs.ExpectMessage("Nothing Was Moved");
        EXPECT_FALSE(Move("A.zuproj", "To/B.zuproj"));
        EXPECT_EQ(trace.Count(), 1);
    }
    EXPECT_EQ(OnDiskNow(), before) << "the source's lock is given up again";
    const auto open = OpenDocument("A");
    ExpectLogged trace(NoLockTrace("To/B.zuproj"));
    mDialogs.ExpectMessage("Nothing Was Moved");
    EXPECT_FALSE(Move("A.zuproj", "To/B.zuproj"));
    EXPECT_EQ(open->GetProjectPath(), ProjectPath("A"));
    EXPECT_FALSE(open->IsReadOnly() || open->GetLock()->IsLost());
}

TEST_F(MoveTest, OpenProjectsFollowTheirFolder) {
    // Every occurrence of the folder's text is replaced, and only what is there then is followed.
    OpenProductionWith({"P/x", "Q/x", "Q/kept"});
    const auto writable = OpenProject("P/x");
    const auto readOnly = OpenProject("P/read-only", true);
    const auto missing = OpenProject("P/missing");
    const auto outside = OpenProject("A");
    Utils::UpdatePathsOfOpenProjectsAndLockFiles(PathOf("P"), PathOf("Q"));
    EXPECT_EQ(writable->GetProjectPath(), ProjectPath("Q/x"));
    const auto lock = dynamic_cast<TestProject&>(*writable).mLockFile;
    EXPECT_TRUE(lock && lock->IsHeldByReader() && mFolder.Exists(OnDisk("Q/.x.zuproj.lock")));
    EXPECT_EQ(readOnly->GetProjectPath(), ProjectPath("P/read-only"));
    EXPECT_EQ(missing->GetProjectPath(), ProjectPath("P/missing"));
    EXPECT_EQ(outside->GetProjectPath(), ProjectPath("A"));
    const std::string inside = "R" + mFolder.Path(mProduction) + "/R/y";
    const std::string moved = "S" + mFolder.Path(mProduction) + "/S/y";
    MakeProject(moved);
    const auto twice = OpenProject(inside);
    Utils::UpdatePathsOfOpenProjectsAndLockFiles(PathOf("R"), PathOf("S"));
    EXPECT_EQ(twice->GetProjectPath(), ProjectPath(moved));
}

}  // namespace HandlerSharedProjects
