#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <future>
#include <set>

#include "desk/core/Services.h"
#include "desk/core/WorkProgress.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/HostNames.h"
#include "desk/files/ItemCopier.h"
#include "desk/project/Leftovers.h"
#include "desk/project/LockProtocol.h"
#include "host/files/FileException.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TreeSnapshot.h"

namespace fs = std::filesystem;
using Operation = FaultyFileSystem::Operation;

namespace {

constexpr long kLocalVolume = 0xEF53;
constexpr long kClusterVolume = 0x65735546;

/// What is done, and on what.
struct Deed {
    const char* mName;
    bool mIsMove;
    bool mIsFolder;
    bool mIsAcross;
    long mVolume = kLocalVolume;
};

class ItemCopierTest : public testing::Test {
protected:
    ItemCopierTest() { desk::GetServices().mWorkerPool = &mPool; }
    ~ItemCopierTest() override { desk::GetServices().mWorkerPool = mPoolBefore; }

    /// A file, or a folder that has by default more files than are flushed one by one.
    void MakeSource(bool isFolder, int files = 9) {
        mFolder.Remove("from");
        mFolder.Remove("to");
        mFolder.MakeFolder("to");
        if (!isFolder) {
            mFolder.Write("from/item", std::string(100'000, 'f'));
            return SetTime("from/item", 1'600'000'000);
        }
        for (int file = 0; file < files; ++file)
            mFolder.Write("from/item/sub/file " + std::to_string(file), std::string(file * 1000, 'x'));
        mFolder.Write("from/item/\xE9 raw.zuproj", "raw");
        mFolder.Write("from/item/.hidden/kept", "kept");
        mFolder.MakeFolder("from/item/empty");
        fs::create_symlink("sub/file 1", mFolder.Path("from/item/link"));
        fs::create_symlink("/nowhere", mFolder.Path("from/item/dangling"));
        chmod(mFolder.Path("from/item/sub/file 3").c_str(), 0440);
        chmod(mFolder.Path("from/item/empty").c_str(), 0555);
        for (const char* name : {"/sub/file 3", "/link", "/sub", "/empty", "/.hidden", ""})
            SetTime(std::string("from/item") + name, 1'500'000'000);
    }
    void SetTime(const std::string& name, time_t seconds) {
        const timespec times[2] = {{seconds, 1000}, {seconds, 2000}};
        ASSERT_EQ(utimensat(AT_FDCWD, mFolder.Path(name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
    }

    /// The errno with which it failed, or 0.
    int Do(const Deed& deed) {
        desk::WorkProgress progress;
        mDisk.SetVolumes(deed.mIsAcross);
        mDisk.SetVolumeType(deed.mVolume);
        mMove = {};
        try {
            if (deed.mIsMove)
                mMove = desk::MoveItem(mFrom, mTo, progress);
            else
                desk::CopyItem(mFrom, mTo, progress);
            return 0;
        } catch (const host::FileException& exception) {
            return exception.SystemError();
        }
    }
    int Copy(const std::string& from, const std::string& to) {
        try {
            desk::WorkProgress progress;
            desk::CopyItem(mFolder.Path(from), mFolder.Path(to), progress);
            mProgress = progress.Get();
            return 0;
        } catch (const host::FileException& exception) {
            return exception.SystemError();
        }
    }
    std::set<std::string> Names(const char* folder) const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(mFolder.Path(folder)))
            names.insert(entry.path().filename());
        return names;
    }
    void ExpectAllOrNothing(const Deed& deed, const TreeSnapshot& before, int error);

    TemporaryFolder mFolder;
    FaultyFileSystem mDisk;
    RecordingDesktop mDesktop;
    desk::WorkerPool* mPoolBefore = desk::GetServices().mWorkerPool;
    desk::WorkerPool mPool{4};
    const std::string mFrom = mFolder.Path("from/item");
    const std::string mTo = mFolder.Path("to/copy");
    desk::ItemMove mMove;
    desk::WorkProgress::State mProgress;
};

class ItemCopierFaultTest : public ItemCopierTest, public testing::WithParamInterface<Deed> {};

constexpr Deed kDeeds[] = {
    {"CopyOfFile", false, false, false},
    {"CopyOfFolder", false, true, false},
    {"CopyOfFolderOnCluster", false, true, false, kClusterVolume},
    {"MoveOfFile", true, false, false},
    {"MoveOfFolder", true, true, false},
    {"MoveOfFileAcross", true, false, true},
    {"MoveOfFolderAcross", true, true, true},
    {"MoveOfFolderAcrossToCluster", true, true, true, kClusterVolume},
};

INSTANTIATE_TEST_SUITE_P(Steps, ItemCopierFaultTest, testing::ValuesIn(kDeeds),
                         [](const auto& deed) { return deed.param.mName; });

void ItemCopierTest::ExpectAllOrNothing(const Deed& deed, const TreeSnapshot& before, int error) {
    const TreeSnapshot source = TakeSnapshot(mFrom);
    const TreeSnapshot copy = TakeSnapshot(mTo);
    // Nothing but the two names: no part is left.
    EXPECT_EQ(Names("to"), copy.empty() ? std::set<std::string>{} : std::set<std::string>{"copy"});
    if (error != 0) {
        EXPECT_EQ(source, before);
        EXPECT_TRUE(copy.empty());
        return;
    }
    EXPECT_EQ(copy, before);
    if (!deed.mIsMove)
        EXPECT_EQ(source, before);
    else if (mMove.mLeftBehind.empty())
        EXPECT_TRUE(source.empty());
    else
        EXPECT_TRUE(deed.mIsAcross && !source.empty());
}

}  // namespace

TEST_P(ItemCopierFaultTest, LosesNothingAndLeavesNothingHalfDoneWhateverStepFails) {
    const Deed& deed = GetParam();
    mDisk.SkipFlushes();
    ExpectLogged faults("(faulty) use");
    ExpectLogged lostReplies("(lost reply) use");
    int failures = 0;
    for (const bool isCarriedOut : {false, true})
        for (int step = 1;; ++step) {
            MakeSource(deed.mIsFolder, deed.mVolume == kLocalVolume ? 9 : 4);
            const TreeSnapshot before = TakeSnapshot(mFrom);
            mDisk.ResetCounts();
            if (isCarriedOut)
                mDisk.FailAfter(Operation::Any, step, EIO);
            else
                mDisk.Fail(Operation::Any, step, EIO);
            const int error = Do(deed);
            SCOPED_TRACE(std::string(isCarriedOut ? "after" : "before") + " step " + std::to_string(step));
            ExpectAllOrNothing(deed, before, error);
            failures += error != 0;
            if (mDisk.Count(Operation::Any) < step) {
                EXPECT_EQ(error, 0);
                break;
            }
        }
    EXPECT_GE(failures, 2);
}

TEST_F(ItemCopierTest, CopiesTakePermissionsTimesLinksAndEveryNameAlong) {
    MakeSource(true);
    const std::string longest(255, 'n');
    mFolder.Write("from/item/" + longest, "long");
    mFolder.Write("from/item/sub/new\nline", std::string(5'000'000, 'y'));
    const std::uint64_t bytes = 36'000 + 3 + 4 + 4 + 5'000'000;
    EXPECT_EQ(Copy("from/item", "to/" + longest), 0);
    EXPECT_EQ(TakeSnapshot(mFolder.Path("to/" + longest)), TakeSnapshot(mFrom));
    EXPECT_EQ(mProgress.mBytesTotal, bytes);
    EXPECT_EQ(mProgress.mBytesDone, bytes);

    EXPECT_EQ(Copy("from/item/link", "to/link"), 0);
    EXPECT_EQ(TakeSnapshot(mFolder.Path("to/link")), TakeSnapshot(mFolder.Path("from/item/link")));
    EXPECT_EQ(Copy("from/item", "to/" + longest + "n"), ENAMETOOLONG);
    EXPECT_EQ(Copy("gone", "to/gone"), ENOENT);
    EXPECT_EQ(Names("to"), (std::set<std::string>{longest, "link"}));
}

TEST_F(ItemCopierTest, LeavesLocksOwnFilesAndPipesOutOfCopies) {
    for (const char* name : {"a.zuproj", ".a.zuproj.lock", ".nfs00012", ".fuse_hidden0001", ".config"})
        mFolder.Write(std::string("from/item/") + name);
    mFolder.Write("from/item/" + desk::MakeTemporaryName() + "/inside");
    mkfifo(mFolder.Path("from/item/pipe").c_str(), 0600);
    mFolder.MakeFolder("to");
    ExpectLogged log("not copied, for it is neither file nor folder nor link: " + mFrom + "/pipe");
    EXPECT_EQ(Copy("from/item", "to/copy"), 0);
    EXPECT_EQ(Names("to/copy"), (std::set<std::string>{"a.zuproj", ".config"}));
    EXPECT_EQ(Copy("from/item/pipe", "to/pipe"), EINVAL);
}

TEST_F(ItemCopierTest, NothingThatStandsAtTheDestinationIsTouched) {
    for (const char* kind : {"file", "folder", "link", "dangling"})
        for (const Deed& deed : kDeeds) {
            SCOPED_TRACE(std::string(deed.mName) + " onto a " + kind);
            MakeSource(deed.mIsFolder);
            if (kind == std::string("file")) mFolder.Write("to/copy", "old");
            if (kind == std::string("folder")) mFolder.MakeFolder("to/copy");
            if (kind == std::string("link")) fs::create_symlink("..", mTo);
            if (kind == std::string("dangling")) fs::create_symlink("nowhere", mTo);
            const TreeSnapshot before = TakeSnapshot(mFolder.Path());
            EXPECT_EQ(Do(deed), EEXIST);
            EXPECT_EQ(TakeSnapshot(mFolder.Path()), before);
        }
}

TEST_F(ItemCopierTest, WhatComesToStandAtTheDestinationMeanwhileStays) {
    for (const Deed& deed : {kDeeds[1], kDeeds[6]}) {
        MakeSource(true);
        const TreeSnapshot before = TakeSnapshot(mFrom);
        mDisk.CloseGate(Operation::CopyFile, mFrom);
        auto done = std::async(std::launch::async, [&] { return Do(deed); });
        ASSERT_TRUE(mDisk.WaitAtGate());
        mFolder.MakeFolder("to/copy");
        mDisk.OpenGate();
        EXPECT_EQ(done.get(), EEXIST);
        EXPECT_EQ(TakeSnapshot(mFrom), before);
        EXPECT_EQ(Names("to"), std::set<std::string>{"copy"});
        EXPECT_TRUE(Names("to/copy").empty());
    }
}

TEST_F(ItemCopierTest, ACancelLeavesNothing) {
    for (const Deed& deed : {kDeeds[1], kDeeds[6]}) {
        MakeSource(true);
        const TreeSnapshot before = TakeSnapshot(mFrom);
        desk::WorkProgress progress;
        mDisk.SetVolumes(deed.mIsAcross);
        mDisk.CloseGate(Operation::CopyFile, mFrom);
        auto done = std::async(std::launch::async, [&] {
            if (deed.mIsMove)
                desk::MoveItem(mFrom, mTo, progress);
            else
                desk::CopyItem(mFrom, mTo, progress);
        });
        ASSERT_TRUE(mDisk.WaitAtGate());
        progress.Cancel();
        mDisk.OpenGate();
        try {
            done.get();
            ADD_FAILURE();
        } catch (const host::FileException& exception) {
            EXPECT_EQ(exception.SystemError(), ECANCELED);
        }
        EXPECT_EQ(TakeSnapshot(mFrom), before);
        EXPECT_TRUE(Names("to").empty());
    }
}

TEST_F(ItemCopierTest, ASourceThatChangesDuringAMoveAcrossStaysAndTheCopyGoes) {
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"content", [&] { mFolder.Write("from/item/sub/file 5", "changed"); }},
        {"new file", [&] { mFolder.Write("from/item/sub/new", "new"); }},
        {"gone file", [&] { mFolder.Remove("from/item/sub/file 5"); }},
    };
    for (const auto& [name, change] : changes) {
        SCOPED_TRACE(name);
        MakeSource(true);
        mDisk.CloseGate(Operation::CopyFolderAttributes, mFrom);
        auto done = std::async(std::launch::async, [&] { return Do(kDeeds[6]); });
        ASSERT_TRUE(mDisk.WaitAtGate());
        change();
        const TreeSnapshot changed = TakeSnapshot(mFrom);
        mDisk.OpenGate();
        EXPECT_NE(done.get(), 0);
        EXPECT_EQ(TakeSnapshot(mFrom), changed);
        EXPECT_TRUE(Names("to").empty());
    }
}

TEST_F(ItemCopierTest, WhatChangesWhileTheSourceIsRemovedIsLeftBehind) {
    MakeSource(true);
    mDisk.CloseGate(Operation::RemoveFromTree, mFrom);
    auto done = std::async(std::launch::async, [&] { return Do(kDeeds[6]); });
    ASSERT_TRUE(mDisk.WaitAtGate());
    mFolder.Write("from/item/sub/file 8", "saved late");
    mDisk.OpenGate();
    EXPECT_EQ(done.get(), 0);
    EXPECT_EQ(mMove.mLeftBehind, mFrom + "/sub/file 8");
    EXPECT_EQ(mMove.mSystemError, EBUSY);
    EXPECT_EQ(mFolder.Read("from/item/sub/file 8"), "saved late");
    EXPECT_EQ(mFolder.Read("to/copy/sub/file 8"), std::string(8'000, 'x'));
}

TEST_F(ItemCopierTest, OnlyTheWordOfTwoVolumesTurnsAMoveIntoACopy) {
    for (const int error : {EACCES, EPERM, EIO, ENOSPC, EROFS}) {
        MakeSource(true);
        mDisk.Fail(Operation::RenameNew, 1, error);
        EXPECT_EQ(Do(kDeeds[4]), error);
    }
    EXPECT_EQ(mDisk.Count(Operation::CopyFile), 0);
    // A pipe cannot come along.
    mkfifo((mFrom + "/pipe").c_str(), 0600);
    EXPECT_EQ(Do(kDeeds[6]), EINVAL);
    EXPECT_EQ(mDisk.Count(Operation::CopyFile), 0);
    mFolder.Remove("from/item/pipe");
    // Nor is anything copied that could not be removed.
    mDisk.Fail(Operation::TryToChangeFolder, 1, EROFS);
    EXPECT_EQ(Do(kDeeds[6]), EROFS);
    EXPECT_EQ(mDisk.Count(Operation::CopyFile), 0);
}

TEST_F(ItemCopierTest, AFolderDoesNotGoIntoItself) {
    MakeSource(true);
    const TreeSnapshot before = TakeSnapshot(mFrom);
    EXPECT_EQ(Copy("from/item", "from/item/sub/copy"), EINVAL);
    desk::WorkProgress progress;
    EXPECT_THROW(desk::MoveItem(mFrom, mFrom + "/sub/copy", progress), host::FileException);
    EXPECT_EQ(TakeSnapshot(mFrom), before);
}

TEST_F(ItemCopierTest, ATreeIsRemovedWithoutFollowingLinks) {
    mFolder.Write("outside/kept");
    mFolder.Write("tree/a/b/c");
    fs::create_directory_symlink(mFolder.Path("outside"), mFolder.Path("tree/a/link"));
    chmod(mFolder.Path("tree/a/b").c_str(), 0);
    mDisk.HideKinds(true);
    desk::RemoveTree(mFolder.Path("tree"));
    EXPECT_FALSE(mFolder.Exists("tree"));
    EXPECT_TRUE(mFolder.Exists("outside/kept"));

    // A folder that somebody puts a link in place of leads nowhere.
    mFolder.MakeFolder("tree");
    fs::create_directory_symlink(mFolder.Path("outside"), mFolder.Path("tree/swapped"));
    EXPECT_THROW(mDisk.RemoveFromTree(mFolder.Path("tree"), "swapped/kept", false), host::FileException);
    EXPECT_THROW(mDisk.RemoveFromTree(mFolder.Path("tree/swapped"), "kept", false), host::FileException);
    EXPECT_TRUE(mFolder.Exists("outside/kept"));
}

TEST_F(ItemCopierTest, PartsOfDeadProcessesAreSweptWithAllThatIsInThem) {
    desk::LockRecord owner = desk::MakeLockRecord(mDesktop, {}, {});
    const std::string living = desk::MakeTemporaryName(owner);
    owner.mBootID = "00000000-0000-0000-0000-000000000000";
    const std::string dead = desk::MakeTemporaryName(owner);
    for (const std::string& part : {living, dead}) mFolder.Write("to/" + part + "/sub/file");
    fs::create_directory_symlink("..", mFolder.Path("to/" + dead + "/sub/link"));
    desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path("to"));
    EXPECT_EQ(Names("to"), std::set<std::string>{living});
}

TEST_F(ItemCopierTest, AFullVolumeKeepsNothingOfACopyAndTheSourceOfAMove) {
    const std::string volume = mFolder.MakeFolder("to");
    MakeSource(true);
    mFolder.Write("from/item/large", std::string(6 << 20, 'l'));
    if (mount("tmpfs", volume.c_str(), "tmpfs", 0, "size=4m") != 0) GTEST_SKIP() << "cannot mount here";
    const TreeSnapshot before = TakeSnapshot(mFrom);
    EXPECT_EQ(Do({"", false, true, false, kLocalVolume}), ENOSPC);
    EXPECT_EQ(Do({"", true, true, false, kLocalVolume}), ENOSPC);
    EXPECT_EQ(TakeSnapshot(mFrom), before);
    EXPECT_TRUE(Names("to").empty());
    // With room it goes, really from one volume to the other.
    mFolder.Remove("from/item/large");
    const TreeSnapshot smaller = TakeSnapshot(mFrom);
    EXPECT_EQ(Do({"", true, true, false, kLocalVolume}), 0);
    EXPECT_EQ(TakeSnapshot(mTo), smaller);
    EXPECT_FALSE(mFolder.Exists("from/item"));
    umount(volume.c_str());
}
