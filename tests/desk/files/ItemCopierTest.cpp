#include <fcntl.h>

#include "desk/core/names/HostNames.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/project/lock/Leftovers.h"
#include "tests/support/HostFixture.h"
#include "tests/support/LockRecords.h"
#include "tests/support/TreeSnapshot.h"

namespace fs = std::filesystem;

namespace {

/// What is done with a folder.
struct Deed {
    const char* mName;
    bool mIsMove;
    bool mIsAcross;
};

constexpr Deed kCopy{"Copy", false, false};
constexpr Deed kMove{"Move", true, false};
constexpr Deed kMoveAcross{"MoveAcross", true, true};

class ItemCopierTest : public HostFixture {
protected:
    /// A folder that has more files than are flushed one by one.
    void MakeSource() {
        mFolder.Remove("from");
        mFolder.Remove("to");
        mFolder.MakeFolder("to");
        for (int file = 0; file < 9; ++file)
            mFolder.Write("from/item/sub/file " + std::to_string(file), std::string(file * 1000, 'x'));
        mFolder.Write("from/item/\xE9 raw.zuproj", "raw");
        mFolder.Write("from/item/.hidden/kept", "kept");
        mFolder.MakeFolder("from/item/empty");
        fs::create_symlink("sub/file 1", mFolder.Path("from/item/link"));
        fs::create_symlink("/nowhere", mFolder.Path("from/item/dangling"));
        chmod(mFolder.Path("from/item/sub/file 3").c_str(), 0440);
        chmod(mFolder.Path("from/item/empty").c_str(), 0555);
        const timespec times[2] = {{1'500'000'000, 1000}, {1'500'000'000, 2000}};
        for (const char* name : {"/sub/file 3", "/link", "/sub", "/empty", "/.hidden", ""})
            utimensat(AT_FDCWD, (mFrom + name).c_str(), times, AT_SYMLINK_NOFOLLOW);
    }
    /// The errno with which it failed, or 0.
    int Do(const Deed& deed) { return Do(deed, mFrom, mTo); }
    int Do(const Deed& deed, const std::string& from, const std::string& to) {
        mDisk.SetVolumes(deed.mIsAcross);
        mProgress.emplace();
        mMove = {};
        return ErrorOf([&] {
            if (deed.mIsMove)
                mMove = desk::MoveItem(from, to, *mProgress);
            else
                desk::CopyItem(from, to, *mProgress);
        });
    }
    int Copy(const std::string& from, const std::string& to) {
        return Do(kCopy, mFolder.Path(from), mFolder.Path(to));
    }
    /// The same, with something happening before its first use of `operation`.
    int DoWhile(const Deed& deed, Operation operation, const std::function<void()>& meanwhile) {
        return DoWhile(deed, operation, mFrom, meanwhile);
    }
    int DoWhile(const Deed& deed, Operation operation, const std::string& path,
                const std::function<void()>& meanwhile) {
        mDisk.CloseGate(operation, path);
        auto done = std::async(std::launch::async, [&] { return Do(deed); });
        EXPECT_TRUE(mDisk.WaitAtGate());
        meanwhile();
        mDisk.OpenGate();
        return done.get();
    }
    const std::string mFrom = mFolder.Path("from/item");
    const std::string mTo = mFolder.Path("to/copy");
    std::optional<desk::WorkProgress> mProgress;
    desk::ItemMove mMove;
};

}  // namespace

TEST_F(ItemCopierTest, AStepThatFailsLosesNothingAndLeavesNothingHalfDone) {
    const ExpectLogged faults("(faulty) use"), lostReplies("(lost reply) use");
    mDisk.SkipFlushes();
    mDisk.SetLies(FaultyFileSystem::Lies::Names);
    for (const Deed& deed : {kCopy, kMoveAcross})
        for (const bool isCarriedOut : {false, true}) {
            int step = 0;
            do {
                ++step;
                SCOPED_TRACE(deed.mName + std::string(isCarriedOut ? " after step " : " before step ") +
                             std::to_string(step));
                MakeSource();
                const TreeSnapshot before = TakeSnapshot(mFrom);
                mDisk.ResetCounts();
                mDisk.ForgetLies();
                isCarriedOut ? mDisk.FailAfter(Operation::Any, step, EIO)
                             : mDisk.Fail(Operation::Any, step, EIO);
                const int error = Do(deed);
                const bool isMade = error == 0 || mFolder.Exists("to/copy");
                EXPECT_EQ(NamesIn("to"), isMade ? Names{"copy"} : Names{});
                EXPECT_EQ(TakeSnapshot(mTo), isMade ? before : TreeSnapshot());
                if (error != 0 || !deed.mIsMove) {
                    EXPECT_EQ(TakeSnapshot(mFrom), before);
                }
            } while (mDisk.Count(Operation::Any) >= step);
        }
}

TEST_F(ItemCopierTest, CopiesTakePermissionsTimesLinksAndEveryNameAlong) {
    MakeSource();
    const std::string longest(255, 'n');
    mFolder.Write("from/item/" + longest, "long");
    mFolder.Write("from/item/sub/new\nline", std::string(5'000'000, 'y'));
    EXPECT_EQ(Copy("from/item", "to/" + longest), 0);
    EXPECT_EQ(TakeSnapshot(mFolder.Path("to/" + longest)), TakeSnapshot(mFrom));
    EXPECT_EQ(mProgress->Get().mBytesTotal, 36'000u + 3 + 4 + 4 + 5'000'000);
    EXPECT_EQ(mProgress->Get().mBytesDone, mProgress->Get().mBytesTotal);
    EXPECT_EQ(Copy("from/item/link", "to/link"), 0);
    EXPECT_EQ(TakeSnapshot(mFolder.Path("to/link")), TakeSnapshot(mFolder.Path("from/item/link")));
    EXPECT_EQ(Copy("from/item", "to/" + longest + "n"), ENAMETOOLONG);
    EXPECT_EQ(Copy("gone", "to/gone"), ENOENT);
    EXPECT_EQ(Copy("from/item", "from/item/sub/copy"), EINVAL) << "into itself";
    for (const Deed& deed : {kMove, kMoveAcross}) EXPECT_EQ(Do(deed, mFrom, mFrom + "/sub/copy"), EINVAL);
    EXPECT_EQ(NamesIn("to"), (Names{longest, "link"}));
}

TEST_F(ItemCopierTest, LeavesLocksOwnFilesAndPipesOutOfCopies) {
    for (const char* name : {"a.zuproj", ".a.zuproj.lock", ".nfs00012", ".fuse_hidden0001", ".config"})
        mFolder.Write(std::string("from/item/") + name);
    mFolder.Write("from/item/" + desk::MakeTemporaryName() + "/inside");
    mkfifo(mFolder.Path("from/item/pipe").c_str(), 0600);
    mFolder.MakeFolder("to");
    ExpectLogged log("not copied, for it is neither file nor folder nor link: " + mFrom + "/pipe");
    EXPECT_EQ(Copy("from/item", "to/copy"), 0);
    EXPECT_EQ(NamesIn("to/copy"), (Names{"a.zuproj", ".config"}));
    EXPECT_EQ(Copy("from/item/pipe", "to/pipe"), EINVAL);
}

TEST_F(ItemCopierTest, NothingThatStandsAtTheDestinationIsTouched) {
    for (const Deed& deed : {kCopy, kMoveAcross}) {
        SCOPED_TRACE(deed.mName);
        MakeSource();
        const TreeSnapshot before = TakeSnapshot(mFrom);
        fs::create_symlink("nowhere", mTo);
        EXPECT_EQ(Do(deed), EEXIST);
        EXPECT_EQ(fs::read_symlink(mTo), "nowhere");
        fs::remove(mTo);
        EXPECT_EQ(DoWhile(deed, Operation::CopyFile, [&] { mFolder.MakeFolder("to/copy"); }), EEXIST);
        EXPECT_EQ(TakeSnapshot(mFrom), before);
        EXPECT_EQ(NamesIn("to"), Names{"copy"}) << "no part is left";
        EXPECT_TRUE(NamesIn("to/copy").empty());
    }
}

TEST_F(ItemCopierTest, ACancelOrAChangeOfTheSourceLeavesNoCopyAndTheSourceAsItIs) {
    const struct {
        const char* mName;
        const Deed* mDeed;
        Operation mOperation;
        std::function<void()> mMeanwhile;
    } cases[] = {
        {"copy cancelled", &kCopy, Operation::CopyFile, [&] { mProgress->Cancel(); }},
        {"move cancelled", &kMoveAcross, Operation::CopyFile, [&] { mProgress->Cancel(); }},
        {"new content", &kMoveAcross, Operation::CopyFolderAttributes,
         [&] { mFolder.Write("from/item/sub/file 5", "changed"); }},
        {"new file", &kMoveAcross, Operation::CopyFolderAttributes,
         [&] { mFolder.Write("from/item/sub/new", "new"); }},
        {"gone file", &kMoveAcross, Operation::CopyFolderAttributes,
         [&] { mFolder.Remove("from/item/sub/file 5"); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.mName);
        MakeSource();
        TreeSnapshot changed;
        EXPECT_NE(DoWhile(*c.mDeed, c.mOperation, [&] { c.mMeanwhile(), changed = TakeSnapshot(mFrom); }), 0);
        EXPECT_EQ(TakeSnapshot(mFrom), changed);
        EXPECT_TRUE(NamesIn("to").empty());
    }
}

TEST_F(ItemCopierTest, WhatChangesWhileTheSourceIsRemovedIsLeftBehindWithItsLock) {
    MakeSource();
    for (const char* name : {"gone.zuproj", ".gone.zuproj.lock", "late.zuproj", ".late.zuproj.lock"})
        mFolder.Write(std::string("from/item/sub/") + name);
    const auto saveLate = [&] { mFolder.Write("from/item/sub/late.zuproj", "saved late"); };
    EXPECT_EQ(DoWhile(kMoveAcross, Operation::RemoveFromTree, saveLate), 0);
    EXPECT_EQ(mMove.mLeftBehind.mPath, mFrom + "/sub/late.zuproj");
    EXPECT_EQ(mMove.mLeftBehind.mSystemError, EBUSY);
    EXPECT_FALSE(mMove.mLeftBehind.mIsInDoubt);
    EXPECT_EQ(mFolder.Read("from/item/sub/late.zuproj"), "saved late");
    EXPECT_EQ(NamesIn("from/item/sub"), (Names{"late.zuproj", ".late.zuproj.lock"}));
    EXPECT_EQ(mFolder.Read("to/copy/sub/late.zuproj"), "");
    EXPECT_TRUE(mFolder.Exists("to/copy/sub/.late.zuproj.lock"));
}

TEST_F(ItemCopierTest, WhatMayHaveItsNameIsNotTakenForItsHiddenPart) {
    const ExpectLogged faults("(faulty) use"), lostReplies("(lost reply) use");
    const ExpectLogged stays("not removed, since it may be what was published");
    const auto hide = [&] {
        for (const int look : {1, 2}) mDisk.Fail(Operation::ListFolder, look, EIO);
    };
    for (const Deed& deed : {kCopy, kMoveAcross})
        for (const bool isCarriedOut : {false, true}) {
            SCOPED_TRACE(deed.mName);
            MakeSource();
            const TreeSnapshot before = TakeSnapshot(mFrom);
            mDisk.ResetCounts();
            // A move across volumes begins with one that the system refuses.
            const int nth = deed.mIsAcross ? 2 : 1;
            isCarriedOut ? mDisk.FailAfter(Operation::RenameNoReplace, nth, EIO)
                         : mDisk.Fail(Operation::RenameNoReplace, nth, EIO);
            EXPECT_EQ(DoWhile(deed, Operation::RenameNoReplace, mFolder.Path("to"), hide), EIO);
            EXPECT_EQ(TakeSnapshot(mFrom), before);
            const Names made = NamesIn("to");
            ASSERT_EQ(made.size(), 1u);
            EXPECT_EQ(*made.begin() == "copy", isCarriedOut);
            EXPECT_EQ(TakeSnapshot(mFolder.Path("to/" + *made.begin())), before);
        }
}

TEST_F(ItemCopierTest, OnlyTheWordOfTwoVolumesTurnsAMoveIntoACopy) {
    MakeSource();
    for (const int error : {EACCES, EIO, ENOSPC}) {
        mDisk.Fail(Operation::RenameNoReplace, 1, error);
        EXPECT_EQ(Do(kMove), error);
    }
    // A pipe cannot come along.
    mkfifo((mFrom + "/pipe").c_str(), 0600);
    EXPECT_EQ(Do(kMoveAcross), EINVAL);
    mFolder.Remove("from/item/pipe");
    // Nor is anything copied that could not be removed.
    mDisk.Fail(Operation::TryToChangeFolder, 1, EROFS);
    EXPECT_EQ(Do(kMoveAcross), EROFS);
    EXPECT_EQ(mDisk.Count(Operation::CopyFile), 0);
}

TEST_F(ItemCopierTest, TreesAndPartsOfDeadProcessesAreRemovedWithoutFollowingLinks) {
    mFolder.Write("outside/kept");
    mFolder.Write("tree/a/b/c");
    fs::create_directory_symlink(mFolder.Path("outside"), mFolder.Path("tree/a/link"));
    chmod(mFolder.Path("tree/a/b").c_str(), 0);
    mDisk.HideKinds(true);
    desk::RemoveTree(mFolder.Path("tree"));
    EXPECT_FALSE(mFolder.Exists("tree"));
    // A folder that somebody puts a link in place of leads nowhere.
    mFolder.MakeFolder("tree");
    fs::create_directory_symlink(mFolder.Path("outside"), mFolder.Path("tree/swapped"));
    EXPECT_NE(ErrorOf([&] { mDisk.RemoveFromTree(mFolder.Path("tree"), "swapped/kept", false); }), 0);
    EXPECT_NE(ErrorOf([&] { mDisk.RemoveFromTree(mFolder.Path("tree/swapped"), "kept", false); }), 0);

    const std::string living = desk::MakeTemporaryName();
    const std::string dead = desk::MakeTemporaryName(MakeDeadRecord(mDesktop));
    for (const std::string& part : {living, dead}) mFolder.Write("to/" + part + "/sub/file");
    fs::create_directory_symlink("../../../outside", mFolder.Path("to/" + dead + "/sub/link"));
    desk::SweepLeftovers(mDisk, mDesktop, mFolder.Path("to"));
    EXPECT_EQ(NamesIn("to"), Names{living});
    EXPECT_TRUE(mFolder.Exists("outside/kept"));
}
