#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/FileMoves.h"
#include "desk/project/LockKeeper.h"
#include "desk/project/LockRecord.h"
#include "host/files/File.h"
#include "host/files/FileException.h"
#include "host/files/FileSearch.h"
#include "host/files/FileUtils.h"
#include "host/project/ProjectLockFile.h"
#include "tests/desk/files/FollowedFolder.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TreeSnapshot.h"

namespace fs = std::filesystem;
using Operation = FaultyFileSystem::Operation;

namespace {

constexpr long kClusterVolume = 0x65735546;

/// Observers stay for good: one that fails when a test wants it to, and one that keeps what it hears.
struct Observers {
    static Observers& Instance() {
        static Observers sObservers;
        return sObservers;
    }
    Observers() {
        desk::AddMoveObserver([this](const desk::MovedItem&) {
            if (mFails) throw std::runtime_error("observer");
        });
        desk::AddMoveObserver([this](const desk::MovedItem& item) { mMoves.push_back(item); });
    }

    bool mFails = false;
    std::vector<desk::MovedItem> mMoves;
};

class FileMoveTest : public testing::Test {
protected:
    FileMoveTest() {
        desk::GetServices().mWorkerPool = &mPool;
        mMoves.clear();
        mFolder.Write("Reel 1.zuproj", "project");
        mFolder.Write("Day 1/a.zuproj", "a");
        mFolder.MakeFolder("Day 2");
    }
    ~FileMoveTest() override {
        mMain.RunUntilIdle();
        desk::GetServices().mWorkerPool = mPoolBefore;
    }

    int Move(const std::string& from, const std::string& to) {
        return host::File::Move(mFolder.PathUTF16(from), mFolder.PathUTF16(to));
    }
    int ErrorOfMove(const std::string& from, const std::string& to) {
        try {
            Move(from, to);
            return 0;
        } catch (const host::FileException& exception) {
            return exception.SystemError();
        }
    }
    void WriteLock(const std::string& project, const host::UTF16String& user, bool isOfOtherMachine) {
        desk::LockRecord record = desk::MakeLockRecord(mDesktop, user, u"edit-bay-2");
        record.mPid = isOfOtherMachine ? 1 : ::getppid();
        if (isOfOtherMachine) record.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
        if (!isOfOtherMachine) record.mBootID = "00000000-0000-0000-0000-000000000000";
        mFolder.Write('.' + project + ".lock", WriteLockRecord(record));
    }
    host::ProjectLockFileRef TakeLock(const std::string& project) {
        return host::CreateProjectLockFile(mFolder.PathUTF16(project), mDesktop.mUserName,
                                           mDesktop.mMachineName);
    }

    TemporaryFolder mFolder;
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    ScriptedDialogs mDialogs;
    ManualMainThread mMain;
    desk::WorkerPool* mPoolBefore = desk::GetServices().mWorkerPool;
    desk::WorkerPool mPool{4};
    std::vector<desk::MovedItem>& mMoves = Observers::Instance().mMoves;
};

}  // namespace

TEST_F(FileMoveTest, MovesAndTellsTheObservers) {
    EXPECT_EQ(Move("Reel 1.zuproj", "Day 2//Reel 2.zuproj"), 0);
    EXPECT_EQ(mFolder.Read("Day 2/Reel 2.zuproj"), "project");
    ExpectLogged log("observer");
    Observers::Instance().mFails = true;
    EXPECT_EQ(Move("Day 1", "Day 2/Day 1"), 0);
    Observers::Instance().mFails = false;
    ASSERT_EQ(mMoves.size(), 2u);
    EXPECT_EQ(mMoves[0].mFrom, mFolder.Path("Reel 1.zuproj"));
    EXPECT_EQ(mMoves[0].mTo, mFolder.Path("Day 2/Reel 2.zuproj"));
    EXPECT_FALSE(mMoves[0].mIsFolder);
    EXPECT_TRUE(mMoves[1].mIsFolder);
}

TEST_F(FileMoveTest, AProjectThatSomebodyElseHasOpenStays) {
    const TreeSnapshot before = TakeSnapshot(mFolder.Path("Reel 1.zuproj"));
    WriteLock("Reel 1.zuproj", u"tomas", true);
    {
        ExpectLogged told("\"Reel 1.zuproj\" was not moved. tomas has it open on edit-bay-2.");
        EXPECT_LT(Move("Reel 1.zuproj", "Day 2/Reel 1.zuproj"), 0);
    }
    mFolder.Write(".Reel 1.zuproj.lock", "");
    {
        ExpectLogged told("\"Reel 1.zuproj\" was not moved. Somebody has it open.");
        EXPECT_LT(Move("Reel 1.zuproj", "Day 2/Reel 1.zuproj"), 0);
    }
    EXPECT_EQ(TakeSnapshot(mFolder.Path("Reel 1.zuproj")), before);
    EXPECT_TRUE(mMoves.empty());

    // Its holder is gone.
    WriteLock("Reel 1.zuproj", u"tomas", false);
    EXPECT_EQ(Move("Reel 1.zuproj", "Day 2/Reel 1.zuproj"), 0);
}

TEST_F(FileMoveTest, OurOwnLockLetsMoveUnlessItWasLost) {
    const host::ProjectLockFileRef lock = TakeLock("Reel 1.zuproj");
    ASSERT_TRUE(lock);
    EXPECT_EQ(Move("Reel 1.zuproj", "Reel 2.zuproj"), 0);
    EXPECT_EQ(Move("Reel 2.zuproj", "Reel 1.zuproj"), 0);
    WriteLock("Reel 1.zuproj", u"tomas", true);
    ExpectLogged told("tomas has it open");
    EXPECT_LT(Move("Reel 1.zuproj", "Reel 2.zuproj"), 0);
}

TEST_F(FileMoveTest, LocksInAMovedFolderStayOursOnAnyVolume) {
    for (const bool isAcross : {false, true}) {
        mDisk.SetVolumes(isAcross);
        {
            const host::ProjectLockFileRef lock = TakeLock("Day 1/a.zuproj");
            ASSERT_TRUE(lock);
            EXPECT_EQ(Move("Day 1", "Day 2/Moved"), 0);
            EXPECT_TRUE(desk::LockKeeper::Instance().Find(mFolder.Path("Day 2/Moved/.a.zuproj.lock")));
            EXPECT_FALSE(lock->IsLost());
        }
        mMain.RunUntilIdle();
        EXPECT_FALSE(mFolder.Exists("Day 2/Moved/.a.zuproj.lock"));
        EXPECT_EQ(Move("Day 2/Moved", "Day 1"), 0);
    }
}

TEST_F(FileMoveTest, AFailureIsToldInWordsAndThrown) {
    mFolder.Write("Day 2/taken");
    const TreeSnapshot before = TakeSnapshot(mFolder.Path());
    {
        ExpectLogged told("\"Reel 1.zuproj\" was not moved. Something with that name is there already.");
        EXPECT_EQ(ErrorOfMove("Reel 1.zuproj", "Day 2/taken"), EEXIST);
    }
    {
        ExpectLogged told("\"Day 1\" was not moved. Permission denied (" + mFolder.Path("Day 1") + ")");
        mDisk.Fail(Operation::RenameNew, 1, EACCES);
        EXPECT_EQ(ErrorOfMove("Day 1", "Day 2/Day 1"), EACCES);
    }
    {
        ExpectLogged told("\"gone\" was not moved. It is not there any more.");
        EXPECT_LT(Move("gone", "Day 2/gone"), 0);
    }
    EXPECT_EQ(TakeSnapshot(mFolder.Path()), before);
    EXPECT_TRUE(mMoves.empty());
    EXPECT_EQ(Move("Day 1", "Day 3"), 0);
}

TEST_F(FileMoveTest, GoesFromOneRealVolumeToAnother) {
    struct stat here, there;
    if (stat("/dev/shm", &there) != 0 || stat(mFolder.Path().c_str(), &here) != 0 ||
        here.st_dev == there.st_dev || access("/dev/shm", W_OK) != 0)
        GTEST_SKIP() << "no second volume";
    std::string other = "/dev/shm/production-desk-test-XXXXXX";
    ASSERT_TRUE(mkdtemp(other.data()));
    mFolder.Write("Day 1/large", std::string(2'000'000, 'l'));
    ASSERT_EQ(truncate(mFolder.Write("Day 1/holes", "begin").c_str(), 5'000'000), 0);
    fs::create_symlink("a.zuproj", mFolder.Path("Day 1/link"));
    const TreeSnapshot before = TakeSnapshot(mFolder.Path("Day 1"));
    const auto elsewhere = [&](const char* name) { return host::UTF8to16(other + name); };
    EXPECT_EQ(host::File::Move(mFolder.PathUTF16("Day 1"), elsewhere("/Day 1")), 0);
    EXPECT_EQ(TakeSnapshot(other + "/Day 1"), before);
    struct stat holes;
    stat((other + "/Day 1/holes").c_str(), &holes);
    EXPECT_LT(holes.st_blocks * 512, 1'000'000);
    EXPECT_FALSE(mFolder.Exists("Day 1"));
    EXPECT_EQ(host::File::Move(elsewhere("/Day 1/large"), mFolder.PathUTF16("large")), 0);
    EXPECT_EQ(mFolder.Read("large").size(), 2'000'000u);
    fs::remove_all(other);
}

namespace {

class ShownMoveTest : public FollowedFolder {
protected:
    ScriptedDialogs mDialogs;
};

}  // namespace

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

TEST_F(ShownMoveTest, WhatWeMoveAndCopyShowsWhereTheVolumeReportsIt) {
    UseInotify();
    mFolder.Write("A.zuproj");
    mFolder.Write("Reels/B.zuproj");
    Monitor();
    List();
    mDisk.SetVolumes(true);
    EXPECT_EQ(host::File::Move(Path("Reels/B.zuproj"), Path("B.zuproj")), 0);
    host::FileUtils::Copy(host::Dir(Path("Reels")), host::Dir(Path("Copy")));
    EXPECT_TRUE(WaitFor([this] { return Shown() == Names{"A.zuproj", "B.zuproj", "Copy", "Reels"}; }));
}

namespace {

class FileUtilsTest : public FileMoveTest {
protected:
    template <class Operation>
    int ErrorOf(Operation operation) {
        try {
            operation();
            return 0;
        } catch (const host::FileException& exception) {
            return exception.SystemError();
        }
    }
};

}  // namespace

TEST_F(FileUtilsTest, CopiesFilesAndFoldersEachByItsKind) {
    host::FileUtils::Copy(mFolder.PathUTF16("Reel 1.zuproj"), mFolder.PathUTF16("Day 2/copy.zuproj"));
    EXPECT_EQ(mFolder.Read("Day 2/copy.zuproj"), "project");
    const host::Dir day(mFolder.PathUTF16("Day 1/"));
    host::FileUtils::Copy(day, host::Dir(mFolder.PathUTF16("Day 2/Day 1")));
    EXPECT_EQ(TakeSnapshot(mFolder.Path("Day 2/Day 1")), TakeSnapshot(mFolder.Path("Day 1")));

    fs::create_directory_symlink("Day 1", mFolder.Path("link"));
    host::FileUtils::Copy(host::Dir(mFolder.PathUTF16("link")), host::Dir(mFolder.PathUTF16("second link")));
    EXPECT_EQ(fs::read_symlink(mFolder.Path("second link")), "Day 1");

    const TreeSnapshot before = TakeSnapshot(mFolder.Path());
    ExpectLogged exists("\"Day 1\" was not copied. Something with that name is there already.");
    ExpectLogged wrongKind("\"Day 1\" was not copied. Is a directory");
    EXPECT_EQ(ErrorOf([&] { host::FileUtils::Copy(day, host::Dir(mFolder.PathUTF16("Day 2/Day 1"))); }),
              EEXIST);
    EXPECT_EQ(ErrorOf([&] { host::FileUtils::Copy(day.FullPath(), mFolder.PathUTF16("new")); }), EISDIR);
    EXPECT_EQ(ErrorOf([&] {
                  host::FileUtils::Copy(host::Dir(mFolder.PathUTF16("Reel 1.zuproj")),
                                        host::Dir(mFolder.PathUTF16("new")));
              }),
              ENOTDIR);
    EXPECT_EQ(TakeSnapshot(mFolder.Path()), before);
}

TEST_F(FileUtilsTest, MakesFoldersThatAreNotThere) {
    const host::UTF16String path = mFolder.PathUTF16("new");
    EXPECT_FALSE(host::Dir(path).Exists());
    host::FileUtils::CreateNewDirectory(path);
    EXPECT_TRUE(host::Dir(path).Exists());
    EXPECT_EQ(ErrorOf([&] { host::FileUtils::CreateNewDirectory(path); }), EEXIST);
    EXPECT_EQ(ErrorOf([&] { host::Dir(mFolder.PathUTF16("no/parent")).Create(); }), ENOENT);
    EXPECT_FALSE(host::Dir(mFolder.PathUTF16("Reel 1.zuproj")).Exists());
    fs::create_directory_symlink("new", mFolder.Path("link"));
    EXPECT_TRUE(host::Dir(mFolder.PathUTF16("link")).Exists());
}

TEST_F(FileUtilsTest, FindsFilesAtOnce) {
    for (const char* name :
         {"Day 1/b.ZUPROJ", "Day 1/deep/er/c.zuproj", "Day 1/.hidden/d.zuproj", "Day 1/e.txt",
          "Day 1/.e.zuproj.lock", "Day 1/folder.zuproj/f.txt", "shut/g.zuproj"})
        mFolder.Write(name);
    fs::create_directory_symlink("..", mFolder.Path("Day 1/loop"));
    mDisk.Deny(mFolder.Path("shut"));
    ExpectLogged shut("shut: Permission denied");
    const auto find = [&](const char* root) {
        std::vector<std::string> names;
        for (const auto& path : host::FileSearch::FindFiles(mFolder.PathUTF16(root), u".zuproj"))
            names.push_back(host::UTF16to8(path).substr(mFolder.Path().size() + 1));
        return names;
    };
    EXPECT_EQ(find("Day 1"),
              (std::vector<std::string>{"Day 1/a.zuproj", "Day 1/b.ZUPROJ", "Day 1/deep/er/c.zuproj"}));
    EXPECT_EQ(find("").size(), 4u);
    mDisk.HideKinds(true);
    EXPECT_EQ(find("Day 1").size(), 3u);
}
