#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "desk/core/names/ProcessFacts.h"
#include "host/project/ProjectLockFile.h"
#include "tests/desk/files/FollowedFolder.h"

using desk::ItemKind;

namespace {

class FolderStoreTest : public FollowedFolder {
protected:
    FolderStoreTest() { UseInotify(); }
};

TEST_F(FolderStoreTest, ListsFoldersAndProjectsWithoutAskingPerFile) {
    for (const bool isHidden : {false, true}) {
        SCOPED_TRACE(isHidden ? "kinds are hidden" : "kinds are told");
        const std::string base = isHidden ? "hidden/" : "told/";
        for (const char* name : {"Reel 1.zuproj", "Locked.zuproj", ".Locked.zuproj.lock", "caf\xE9.ZUPROJ",
                                 "notes.txt", ".nfs000001", "Rushes/a", ".git/a"})
            mFolder.Write(base + name);
        std::filesystem::create_symlink("Rushes", mFolder.Path(base + "Link"));
        std::filesystem::create_symlink("notes.txt", mFolder.Path(base + "Link to file"));
        std::filesystem::create_symlink("loop", mFolder.Path(base + "loop"));
        std::filesystem::create_symlink("nowhere", mFolder.Path(base + "Dangling.zuproj"));
        mDisk.HideKinds(isHidden);
        mDisk.ResetCounts();
        Monitor();
        const std::string folder = base.substr(0, base.size() - 1);
        List(folder);

        EXPECT_EQ(Shown(folder), (Names{"Reel 1.zuproj", "Locked.zuproj", "caf\xE9.ZUPROJ", "Rushes", "Link",
                                        "Dangling.zuproj"}));
        EXPECT_EQ(Facts(base + "Rushes")->mKind, ItemKind::Folder);
        EXPECT_EQ(Facts(base + "Link")->mKind, ItemKind::Folder);
        EXPECT_NE(Facts(base + "Dangling.zuproj")->mKind, ItemKind::Folder);
        EXPECT_TRUE(Facts(base + "Locked.zuproj")->mHasLockFile);
        EXPECT_FALSE(Facts(base + "Reel 1.zuproj")->mHasLockFile);
        EXPECT_EQ(Facts(base + "notes.txt"), nullptr);
        // The four links, those that lead nowhere twice; never the projects.
        if (!isHidden) {
            EXPECT_LE(mDisk.Count(Operation::Status), 6);
        }
        EXPECT_EQ(mDisk.Count(Operation::ReadSmallFile), 1) << "of the lock, by the sweep that follows";
    }
}

TEST_F(FolderStoreTest, DeliversALongFirstListingInPartsEachInATurnOfItsOwn) {
    for (int i = 0; i < 5001; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj");
    Monitor();
    std::set<int> turns;
    int turn = 0;
    std::function<void()> countTurns = [&] {
        ++turn;
        if (mDeliveries.empty() || !mDeliveries.back().mDelivery.mIsLast) mMain.Post(countTurns);
    };
    mStore->RequestListing(
        Path(""),
        [&, take = Receiver("")](const desk::FolderStore::Delivery& delivery) {
            take(delivery);
            turns.insert(turn);
            EXPECT_TRUE(Facts("Reel 5000.zuproj"));
        },
        this);
    mPool.WaitUntilIdle(std::chrono::seconds(20));
    mMain.Post(countTurns);
    mMain.RunUntilIdle();
    ASSERT_GE(mDeliveries.size(), 3u);
    EXPECT_EQ(turns.size(), mDeliveries.size()) << "several parts in one turn";
    EXPECT_LE(mDeliveries[0].mContent->size(), 1000u) << "the first soon";
    for (const auto& delivery : mDeliveries) {
        EXPECT_EQ(delivery.mDelivery.mExtent, Extent::Part);
        EXPECT_LE(delivery.mContent->size(), 3000u);
        EXPECT_EQ(delivery.mDelivery.mCountOfAllParts, &delivery == &mDeliveries[0] ? 5001u : 0u);
    }
    EXPECT_EQ(Shown().size(), 5001u);
}

TEST_F(FolderStoreTest, ReadsFactsOnceAndDeliversThemTogether) {
    mFolder.Write("A.zuproj", "12345");
    mFolder.Write("B.zuproj");
    Lock("", "B.zuproj", u"Ada");
    Follow();
    ASSERT_FALSE(Facts("A.zuproj")->mStatus);
    mDeliveries.clear();
    mDisk.ResetCounts();
    for (int i = 0; i < 3; ++i) {
        mStore->FindAndRequest(Path("A.zuproj"));
        mStore->RequestFacts(Path(""), {u"A.zuproj", u"B.zuproj", u"absent.zuproj"});
    }
    mMain.RunUntilIdle();
    EXPECT_EQ(mDisk.Count(Operation::Status), 2);
    ASSERT_EQ(mDeliveries.size(), 1u);
    EXPECT_EQ(mDeliveries[0].mDelivery.mExtent, Extent::Change);
    EXPECT_EQ(mDeliveries[0].mContent->size(), 2u);
    EXPECT_TRUE(mDeliveries[0].mDelivery.mIsFactsOnly && mDeliveries[0].mDelivery.mAreFactsComplete);
    EXPECT_EQ(SizeOf("A.zuproj"), 5u);
    ASSERT_TRUE(Facts("B.zuproj")->mLock);
    EXPECT_EQ(Facts("B.zuproj")->mLock->mUser, u"Ada");
    ReadFacts("B.zuproj");
    EXPECT_EQ(mDisk.Count(Operation::Status), 2) << "what is known is not asked again";
    WriteWithoutNewTime("A.zuproj", "1234567");
    EXPECT_TRUE(WaitFor([&] { return SizeOf("A.zuproj") == 7; }));
}

TEST_F(FolderStoreTest, SpendsAHandfulOfListingsOnABurst) {
    mFolder.Write("A.zuproj");
    Follow();
    mDisk.ResetCounts();
    for (int i = 0; i < 1000; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj");
    ASSERT_TRUE(WaitFor([&] { return Shown().size() == 1001; }));
    EXPECT_LE(CountLists(), 8);
    EXPECT_LE(mDisk.Count(Operation::Status), 64 * 8);
}

TEST_F(FolderStoreTest, ListsAheadOfThoseWhoWillAsk) {
    mFolder.Write("A.zuproj");
    for (const bool isPolled : {false, true}) {
        SCOPED_TRACE(isPolled);
        mDisk.SetVolumeType(isPolled ? 0x65735546 : 0xEF53);
        StopMonitoring();
        mStore->Forget(Path(""));
        Monitor();
        mDeliveries.clear();
        mDisk.ResetCounts();
        int ahead = 0;
        mStore->RequestListingAhead(
            Path(""),
            [&](const desk::FolderStore::Delivery& delivery) {
                EXPECT_TRUE(delivery.mContent->empty() && delivery.mDelivery.mIsLast);
                ++ahead;
            },
            &ahead);
        // Asked for while it is being listed, or just after it.
        if (isPolled) mMain.RunUntilIdle();
        List();
        EXPECT_EQ(ahead, 1);
        ASSERT_EQ(mDeliveries.size(), 1u);
        EXPECT_EQ(mDeliveries[0].mDelivery.mExtent, Extent::Whole);
        EXPECT_TRUE(mDeliveries[0].mDelivery.mIsLast);
        EXPECT_EQ(mDeliveries[0].mContent->size(), 1u);
        EXPECT_EQ(CountLists(), 1);
        List();
        EXPECT_EQ(CountLists(), 2) << "who asks again wants it listed again";
        mStore->Forget(Path(""), &ahead);
    }
}

TEST_F(FolderStoreTest, DeliversAnItemAgainWhenTheProcessThatHeldItsLockHasEnded) {
    const pid_t holder = fork();
    if (holder == 0) {
        pause();
        _exit(0);
    }
    desk::LockRecord record = desk::MakeLockRecord(mDesktop, u"Ada", mDesktop.mMachineName);
    record.mPid = holder;
    record.mProcessStart = desk::ReadProcessFacts(holder)->mStart;
    mFolder.Write("A.zuproj");
    mFolder.Write(LockName("", "A.zuproj"), desk::WriteLockRecord(record));
    Follow();
    ReadFacts("A.zuproj");
    ReadFacts("A.zuproj");
    const auto isLocked = [this] {
        return host::ReadProjectLockFile(Path("A.zuproj"), u"me", u"here")->IsLocked();
    };
    EXPECT_TRUE(isLocked());
    mDeliveries.clear();
    mMain.Advance(std::chrono::seconds(10));
    EXPECT_EQ(mDeliveries.size(), 0u);
    kill(holder, SIGKILL);
    waitpid(holder, nullptr, 0);
    mMain.Advance(std::chrono::seconds(2));
    ASSERT_EQ(mDeliveries.size(), 1u);
    EXPECT_EQ(mDeliveries[0].mContent->size(), 1u);
    EXPECT_FALSE(isLocked());
    mMain.Advance(std::chrono::seconds(10));
    EXPECT_EQ(mDeliveries.size(), 1u);
}

TEST_F(FolderStoreTest, FindsItemsAmongManyAfterManyChanges) {
    for (int i = 0; i < 500; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj");
    Follow();
    for (int i = 0; i < 500; i += 2) mFolder.Remove("Reel " + std::to_string(i) + ".zuproj");
    for (int i = 500; i < 700; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj", "1");
    ASSERT_TRUE(WaitFor([&] { return Shown().size() == 450; }));
    for (int i = 0; i < 700; ++i) {
        const bool isThere = i >= 500 || i % 2 == 1;
        ASSERT_EQ(Facts("Reel " + std::to_string(i) + ".zuproj") != nullptr, isThere) << i;
    }
}

}  // namespace
