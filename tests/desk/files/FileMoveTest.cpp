#include <unistd.h>

#include "host/files/File.h"
#include "host/files/FileSearch.h"
#include "host/files/FileUtils.h"
#include "host/project/ProjectLockFile.h"
#include "tests/desk/files/FollowedFolder.h"
#include "tests/support/TreeSnapshot.h"

namespace fs = std::filesystem;

namespace {

constexpr long kClusterVolume = 0x65735546;

class FileMoveTest : public HostFixture {
protected:
    FileMoveTest() {
        mFolder.Write("Reel 1.zuproj", "project");
        mFolder.Write("Day 1/a.zuproj", "a");
        mFolder.MakeFolder("Day 2");
    }

    int Move(const std::string& from, const std::string& to) {
        return host::File::Move(mFolder.PathUTF16(from), mFolder.PathUTF16(to));
    }
    host::Dir DirAt(const std::string& name) const { return host::Dir(mFolder.PathUTF16(name)); }
};

}  // namespace

TEST_F(FileMoveTest, AFailureIsToldInWordsAndThrown) {
    // Of the same size and time.
    mFolder.Write("Day 2/taken", "project");
    fs::last_write_time(mFolder.Path("Day 2/taken"), fs::last_write_time(mFolder.Path("Reel 1.zuproj")));
    mFolder.MakeFolder("Day 1/sub");
    const TreeSnapshot before = TakeSnapshot(mFolder.Path());
    const auto expectTold = [this](const std::string& name, const std::string& reason, const char* to,
                                   int error) {
        ExpectLogged told("“" + name + "” was not moved. " + reason);
        EXPECT_EQ(ErrorOf([&] { EXPECT_LT(Move(name, to), 0); }), error);
    };
    expectTold("Reel 1.zuproj", "Something with that name is there already.", "Day 2/taken", EEXIST);
    mDisk.Fail(Operation::RenameNoReplace, 1, EACCES);
    expectTold("Day 1", "Permission denied (" + mFolder.Path("Day 1") + ")", "Day 2/Day 1", EACCES);
    expectTold("gone", "It is not there any more.", "Day 2/gone", 0);
    EXPECT_EQ(TakeSnapshot(mFolder.Path()), before);
    mDisk.SetVolumes(true);
    // Below the hidden part.
    mDisk.Fail(Operation::CreateFolder, 2, EACCES);
    expectTold("Day 1", "Permission denied (" + mFolder.Path("Day 2") + ")", "Day 2/Day 1", EACCES);
    EXPECT_EQ(NamesIn("Day 2"), Names{"taken"});
}

TEST_F(FileMoveTest, WhatIsLeftBehindOrMayBeIsToldWithBothPlaces) {
    const ExpectLogged doubt("perhaps done");
    const auto place = [this](const char* name) { return "“" + mFolder.Path(name) + "”"; };
    const auto failRemovalsAndListings = [this](int listings) {
        for (const int tries : {1, 2}) mDisk.Fail(Operation::RemoveFile, tries, EIO);
        for (int look = 1; look <= listings; ++look) mDisk.Fail(Operation::ListFolder, look, EIO);
    };
    const auto expectTold = [this](const std::string& text, const char* from, const char* to, int error = 0) {
        const ExpectLogged told(text);
        EXPECT_EQ(ErrorOf([&] { EXPECT_EQ(Move(from, to), 0); }), error);
    };
    const std::string reel = "“Reel 1.zuproj” was moved to ";
    mDisk.SetHasRenameFlags(false);
    failRemovalsAndListings(0);
    expectTold(reel + place("a.zuproj") + ", but " + place("Reel 1.zuproj") +
                   " is also still there. Input/output error",
               "Reel 1.zuproj", "a.zuproj");
    failRemovalsAndListings(2);
    expectTold(reel + place("b.zuproj") + ", but " + place("Reel 1.zuproj") +
                   " may also still be there. Input/output error",
               "Reel 1.zuproj", "b.zuproj");
    mDisk.ForgetFaults();
    mDisk.SetHasRenameFlags(true);
    mDisk.FailAfter(Operation::RenameNoReplace, 1, EIO);
    for (int look = 1; look <= 4; ++look) mDisk.Fail(Operation::ListFolder, look, EIO);
    expectTold("“Day 1” may or may not have been moved: it stands at " + place("Day 1") + ", at " +
                   place("Day 2/Day 1") + ", or at both. Input/output error",
               "Day 1", "Day 2/Day 1", EIO);
    mDisk.SetVolumes(true);
    mFolder.Write("Day 3/held.zuproj");
    const auto lock = host::CreateProjectLockFile(mFolder.PathUTF16("Day 3/held.zuproj"), u"anna", u"machine");
    mDisk.Fail(Operation::RemoveFromTree, 3, EACCES);
    expectTold("“Day 3” was moved to " + place("Day 2/Day 3") + ", but " + place("Day 3") +
                   " is also still there. Permission denied (",
               "Day 3", "Day 2/Day 3");
    desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path("Day 2/Day 3"));
    EXPECT_TRUE(mFolder.Exists("Day 2/Day 3/.held.zuproj.lock")) << "it is held on there";
}

TEST_F(FileMoveTest, GoesFromOneRealVolumeToAnother) {
    struct stat here, there;
    if (stat("/dev/shm", &there) != 0 || stat(mFolder.Path().c_str(), &here) != 0 ||
        here.st_dev == there.st_dev || access("/dev/shm", W_OK) != 0)
        GTEST_SKIP() << "no second volume";
    std::string other = "/dev/shm/production-desk-test-XXXXXX";
    ASSERT_TRUE(mkdtemp(other.data()));
    mFolder.Write("Day 1/large", std::string(2'000'000, 'l'));
    fs::create_symlink("a.zuproj", mFolder.Path("Day 1/link"));
    const TreeSnapshot before = TakeSnapshot(mFolder.Path("Day 1"));
    EXPECT_EQ(host::File::Move(mFolder.PathUTF16("Day 1"), host::UTF8to16(other + "/Day 1")), 0);
    EXPECT_EQ(TakeSnapshot(other + "/Day 1"), before);
    EXPECT_FALSE(mFolder.Exists("Day 1"));
    EXPECT_EQ(host::File::Move(host::UTF8to16(other + "/Day 1"), mFolder.PathUTF16("Day 1")), 0);
    EXPECT_EQ(TakeSnapshot(mFolder.Path("Day 1")), before);
    fs::remove_all(other);
}

using ShownMoveTest = FollowedFolder;

TEST_F(ShownMoveTest, WhatWeMoveAndCopyShowsAtOnceOnAVolumeThatDoesNotReportIt) {
    UseFakeSource();
    mDisk.SetVolumeType(kClusterVolume);
    mFolder.Write("A.zuproj");
    mFolder.MakeFolder("Reels");
    Monitor();
    List();
    List("Reels");
    EXPECT_EQ(host::File::Move(Path("A.zuproj"), Path("Reels/A.zuproj")), 0);
    mMain.RunUntilIdle();
    EXPECT_EQ(Shown(), Names{"Reels"});
    EXPECT_EQ(Shown("Reels"), Names{"A.zuproj"});
    host::FileUtils::Copy(Path("Reels/A.zuproj"), Path("B.zuproj"));
    host::FileUtils::CreateNewDirectory(Path("New"));
    mMain.RunUntilIdle();
    EXPECT_EQ(Shown(), (Names{"B.zuproj", "New", "Reels"}));
}

TEST_F(FileMoveTest, CopiesEachByItsKindAndReplacesNothing) {
    using host::FileUtils::Copy;
    mFolder.MakeFolder("Day 2/Day 1");
    fs::create_directory_symlink("Day 1", mFolder.Path("link"));
    Copy(DirAt("link"), DirAt("second link"));
    EXPECT_EQ(fs::read_symlink(mFolder.Path("second link")), "Day 1");
    EXPECT_TRUE(DirAt("Day 1").Exists() && DirAt("link").Exists());
    EXPECT_FALSE(DirAt("new").Exists() || DirAt("Reel 1.zuproj").Exists());

    const TreeSnapshot before = TakeSnapshot(mFolder.Path());
    ExpectLogged exists("“Day 1” was not copied. Something with that name is there already.");
    EXPECT_EQ(ErrorOf([&] { Copy(DirAt("Day 1"), DirAt("Day 2/Day 1")); }), EEXIST);
    EXPECT_EQ(ErrorOf([&] { host::FileUtils::CreateNewDirectory(mFolder.PathUTF16("Day 1")); }), EEXIST);
    const ExpectLogged notMade("The folder “Reel 1.zuproj” could not be made. Something with that name");
    EXPECT_EQ(ErrorOf([&] { host::FileUtils::CreateNewDirectory(mFolder.PathUTF16("Reel 1.zuproj")); }),
              EEXIST);
    EXPECT_EQ(ErrorOf([&] { DirAt("no/parent").Create(); }), ENOENT);
    EXPECT_EQ(TakeSnapshot(mFolder.Path()), before);
}

TEST_F(FileMoveTest, FindsProjectsAtOnce) {
    for (const char* name :
         {"Day 1/deep/er/c.ZUPROJ", "Day 1/e.txt", "Day 1/folder.zuproj/f.txt", "shut/g.zuproj"})
        mFolder.Write(name);
    fs::create_directory_symlink("..", mFolder.Path("Day 1/loop"));
    mDisk.Deny(mFolder.Path("shut"));
    ExpectLogged shut("shut: Permission denied");
    EXPECT_EQ(
        host::FileSearch::FindFiles(mFolder.PathUTF16(), u".zuproj"),
        (host::UTF16StringVec{mFolder.PathUTF16("Day 1/a.zuproj"), mFolder.PathUTF16("Day 1/deep/er/c.ZUPROJ"),
                              mFolder.PathUTF16("Reel 1.zuproj")}));
}
