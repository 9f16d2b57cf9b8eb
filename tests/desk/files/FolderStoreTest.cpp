#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>

#include "desk/project/LockProtocol.h"
#include "desk/project/ProcessFacts.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"
#include "host/project/ProjectLockFile.h"
#include "tests/desk/files/FollowedFolder.h"

using desk::ItemKind;

namespace {

class FolderStoreTest : public FollowedFolder {
protected:
    FolderStoreTest() { UseInotify(); }

    std::uint64_t SizeOf(const std::string& name) {
        const desk::ItemFacts* facts = Facts(name);
        return facts && facts->mStatus ? facts->mStatus->mSize : 999'999;
    }
    int CountLists() const { return mDisk.Count(Operation::ListFolder); }
};

TEST_F(FolderStoreTest, ListsFoldersAndProjectsWithoutAskingPerFile) {
    for (const bool isHidden : {false, true}) {
        SCOPED_TRACE(isHidden ? "kinds are hidden" : "kinds are told");
        const std::string base = isHidden ? "hidden/" : "told/";
        mFolder.Write(base + "Reel 1.zuproj");
        mFolder.Write(base + "Locked.zuproj");
        mFolder.Write(base + LockName("", "Locked.zuproj"), "whatever");
        mFolder.Write(base + "caf\xE9.ZUPROJ");
        mFolder.Write(base + "notes.txt");
        mFolder.Write(base + ".nfs000001");
        mFolder.MakeFolder(base + "Rushes");
        mFolder.MakeFolder(base + ".git");
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
        EXPECT_EQ(Facts(folder)->mKind, ItemKind::Folder);
        // Three links that are no projects, one of which is asked for twice; never the projects.
        if (!isHidden) {
            EXPECT_LE(mDisk.Count(Operation::Status), 4);
        }
        EXPECT_EQ(mDisk.Count(Operation::ReadSmallFile), 1) << "of the lock, by the sweep that follows";
    }
}

TEST_F(FolderStoreTest, DeliversALongFirstListingInPartsInDisplayOrder) {
    constexpr int kCount = 5001;
    for (int i = 0; i < kCount; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj");
    Monitor();
    std::vector<bool> wereFactsKnown;
    std::vector<int> turns;
    int turn = 0;
    bool isDone = false;
    std::function<void()> countTurns = [&] {
        ++turn;
        if (!isDone) mMain.Post(countTurns);
    };
    auto receiver = [&, take = Receiver("")](const desk::FolderStore::Delivery& delivery) {
        take(delivery);
        turns.push_back(turn);
        wereFactsKnown.push_back(Facts("Reel 5000.zuproj") != nullptr);
        if (delivery.mIsLast) isDone = true;
    };
    mStore->RequestListing(Path(""), receiver, this);
    mWorkers.WaitUntilIdle(std::chrono::seconds(20));
    mMain.Post(countTurns);
    mMain.RunUntilIdle();

    ASSERT_GE(mDeliveries.size(), 3u);
    EXPECT_EQ(Shown().size(), kCount);
    std::vector<host::UTF16String> order;
    for (const auto& delivery : mDeliveries) {
        EXPECT_EQ(delivery.mDelivery.mExtent, Extent::Part);
        EXPECT_LE(delivery.mContent->size(), &delivery == &mDeliveries.front() ? 1000u : 3000u);
        EXPECT_EQ(delivery.mIsLast, &delivery == &mDeliveries.back());
        for (const auto& item : *delivery.mContent)
            order.push_back(*item.Find<host::UTF16String>(host::MediaBrowserContentManager::kPathField));
    }
    EXPECT_TRUE(std::ranges::is_sorted(order, [](const auto& a, const auto& b) {
        return host::CompareStringsIncludingNumericValues(a, b) < 0;
    }));
    EXPECT_THAT(wereFactsKnown, testing::Each(true));
    EXPECT_EQ(std::set(turns.begin(), turns.end()).size(), turns.size()) << "several parts in one turn";
}

TEST_F(FolderStoreTest, ReadsFactsOnceAndDeliversThemTogether) {
    mFolder.Write("A.zuproj", "12345");
    mFolder.Write("B.zuproj");
    Lock("", "B.zuproj", u"Ada");
    Monitor();
    List();
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
    EXPECT_EQ(SizeOf("A.zuproj"), 5u);
    ASSERT_TRUE(Facts("B.zuproj")->mLock);
    EXPECT_EQ(Facts("B.zuproj")->mLock->mUser, u"Ada");
    ReadFacts("B.zuproj");
    EXPECT_EQ(mDisk.Count(Operation::Status), 2) << "what is known is not asked again";
}

TEST_F(FolderStoreTest, DropsQuestionsThatNoWorkerHasBegun) {
    for (int i = 0; i < 40; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj");
    Monitor();
    List();
    mDisk.ResetCounts();
    mDisk.CloseGate(Operation::Status, mFolder.Path());
    host::UTF16StringVec names;
    for (int i = 0; i < 40; ++i) names.push_back(host::UTF8to16("Reel " + std::to_string(i) + ".zuproj"));
    mStore->RequestFacts(Path(""), names);
    mMain.Post([&] {
        ASSERT_TRUE(mDisk.WaitAtGate());
        mStore->DropWaitingFacts();
        mDisk.OpenGate();
    });
    mMain.RunUntilIdle();
    const int begun = mDisk.Count(Operation::Status);
    EXPECT_LT(begun, 40);
    mStore->RequestFacts(Path(""), names);
    mMain.RunUntilIdle();
    EXPECT_EQ(mDisk.Count(Operation::Status), 40) << "what was dropped can be asked again, and only that";
}

TEST_F(FolderStoreTest, KeepsWhatIsKnownWhenAListingFails) {
    mFolder.Write("A.zuproj", "1");
    Monitor();
    List();
    {
        ExpectLogged log("(faulty)");
        mDisk.Deny(mFolder.Path(), EIO);
        List();
        List();
        Poll();
        Poll();
        EXPECT_EQ(log.Count(), 1) << "told once while it stays so";
    }
    EXPECT_EQ(mDeliveries.back().mSystemError, EIO);
    EXPECT_EQ(mDeliveries.back().mContent, nullptr);
    EXPECT_TRUE(mDeliveries.back().mIsLast);
    EXPECT_EQ(Shown(), Names{"A.zuproj"});
    EXPECT_NE(Facts("A.zuproj"), nullptr);
    EXPECT_EQ(desk::GetWatchStatus().mSystemError, EIO);

    mFolder.Write("B.zuproj");
    mDisk.Allow(mFolder.Path());
    Poll();
    EXPECT_EQ(Shown(), (Names{"A.zuproj", "B.zuproj"}));
    EXPECT_EQ(desk::GetWatchStatus().mSystemError, 0);
}

TEST_F(FolderStoreTest, CatchesUpWithAFolderThatCouldNotBeListedAtFirst) {
    mFolder.Write("A.zuproj");
    mDisk.Deny(mFolder.Path(), EACCES);
    Monitor();
    {
        ExpectLogged log("(faulty)");
        List();
    }
    EXPECT_FALSE(mStore->IsListed(Path("")));
    mDisk.Allow(mFolder.Path());
    Poll();
    EXPECT_EQ(Shown(), Names{"A.zuproj"});
    EXPECT_TRUE(mStore->IsListed(Path("")));
}

TEST_F(FolderStoreTest, ReadsOnlyWhatTheMonitorNames) {
    mFolder.Write("A.zuproj", "1");
    mFolder.Write("B.zuproj");
    mFolder.MakeFolder("Rushes");
    Monitor();
    List();
    ReadFacts("A.zuproj");
    mDisk.ResetCounts();
    mDeliveries.clear();

    mFolder.Write("C.zuproj", "123");
    ASSERT_TRUE(WaitFor([&] { return Shown().contains("C.zuproj"); }));
    EXPECT_EQ(SizeOf("C.zuproj"), 3u) << "a new row comes complete";
    mFolder.Write("A.zuproj", "12345");
    ASSERT_TRUE(WaitFor([&] { return SizeOf("A.zuproj") == 5; }));
    mFolder.Rename("B.zuproj", "D.zuproj");
    ASSERT_TRUE(WaitFor([&] { return !Shown().contains("B.zuproj") && Shown().contains("D.zuproj"); }));
    mFolder.Remove("D.zuproj");
    ASSERT_TRUE(WaitFor([&] { return !Shown().contains("D.zuproj"); }));
    Lock("", "A.zuproj", u"Grace");
    ASSERT_TRUE(
        WaitFor([&] { return Facts("A.zuproj")->mLock && Facts("A.zuproj")->mLock->mUser == u"Grace"; }));
    mFolder.Remove(LockName("", "A.zuproj"));
    ASSERT_TRUE(WaitFor([&] { return !Facts("A.zuproj")->mHasLockFile; }));
    EXPECT_EQ(Facts("A.zuproj")->mLock, nullptr);

    EXPECT_EQ(CountLists(), 0);
    for (const auto& delivery : mDeliveries) EXPECT_EQ(delivery.mDelivery.mExtent, Extent::Change);
}

TEST_F(FolderStoreTest, SpendsAHandfulOfListingsOnABurst) {
    mFolder.Write("A.zuproj");
    Monitor();
    List();
    mDisk.ResetCounts();
    for (int i = 0; i < 1000; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj");
    ASSERT_TRUE(WaitFor([&] { return Shown().size() == 1001; }));
    EXPECT_LE(CountLists(), 8);
    EXPECT_LE(mDisk.Count(Operation::Status), 64 * 8);
}

TEST_F(FolderStoreTest, KeepsFactsUntilTheNewOnesHaveCome) {
    mFolder.Write("A.zuproj", "1");
    Monitor();
    List();
    ReadFacts("A.zuproj");
    mDisk.CloseGate(Operation::Status, mFolder.Path("A.zuproj"));
    mFolder.Write("A.zuproj", "12");
    mStore->RequestChanges(Path(""));
    mMain.Post([&] {
        ASSERT_TRUE(mDisk.WaitAtGate());
        EXPECT_EQ(SizeOf("A.zuproj"), 1u);
        mDisk.OpenGate();
    });
    ASSERT_TRUE(WaitFor([&] { return SizeOf("A.zuproj") == 2; }));
}

TEST_F(FolderStoreTest, TellsWhoHasTheContentWhatChangedAndOthersTheWhole) {
    mFolder.Write("A.zuproj");
    Monitor();
    List();
    ASSERT_EQ(mDeliveries.back().mDelivery.mExtent, Extent::Whole);
    List();
    EXPECT_EQ(mDeliveries.back().mDelivery.mExtent, Extent::Change);
    EXPECT_TRUE(mDeliveries.back().mContent->empty());
    EXPECT_TRUE(mDeliveries.back().mIsLast);

    int other = 0;
    std::vector<Extent> extents;
    mStore->RequestListing(
        Path(""), [&](const auto& delivery) { extents.push_back(delivery.mDelivery.mExtent); }, &other);
    mMain.RunUntilIdle();
    EXPECT_EQ(extents, std::vector{Extent::Whole});

    mStore->Forget(Path(""), this);
    EXPECT_TRUE(mStore->IsListed(Path(""))) << "the other still wants it";
    mStore->Forget(Path(""), &other);
    EXPECT_FALSE(mStore->IsListed(Path("")));
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 0u);
    mFolder.Write("B.zuproj");
    List();
    EXPECT_EQ(mDeliveries.back().mDelivery.mExtent, Extent::Whole);
    EXPECT_EQ(Shown(), (Names{"A.zuproj", "B.zuproj"}));
}

TEST_F(FolderStoreTest, DeliversAnItemAgainWhenTheProcessThatHeldItsLockHasEnded) {
    const pid_t holder = fork();
    if (holder == 0) {
        pause();
        _exit(0);
    }
    desk::LockRecord record = desk::MakeLockRecord(mDesktop, u"Ada", u"here");
    record.mPid = holder;
    record.mProcessStart = desk::ReadProcessFacts(holder)->mStart;
    mFolder.Write("A.zuproj");
    mFolder.Write(LockName("", "A.zuproj"), desk::WriteLockRecord(record));
    Monitor();
    List();
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

TEST_F(FolderStoreTest, ForgetsWhatIsBelowAFolderThatGoes) {
    mFolder.Write("Reels/Old/A.zuproj");
    Monitor();
    List();
    List("Reels");
    List("Reels/Old");
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 3u);
    mFolder.Remove("Reels");
    ASSERT_TRUE(WaitFor([&] { return Shown().empty(); }));
    ASSERT_TRUE(WaitFor([&] { return !mStore->IsListed(Path("Reels/Old")); }));
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 1u);
}

TEST_F(FolderStoreTest, FindsItemsAmongManyAfterManyChanges) {
    for (int i = 0; i < 500; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj");
    Monitor();
    List();
    for (int i = 0; i < 500; i += 2) mFolder.Remove("Reel " + std::to_string(i) + ".zuproj");
    for (int i = 500; i < 700; ++i) mFolder.Write("Reel " + std::to_string(i) + ".zuproj", "1");
    ASSERT_TRUE(WaitFor([&] { return Shown().size() == 450; }));
    for (int i = 0; i < 700; ++i) {
        const bool isThere = i >= 500 || i % 2 == 1;
        ASSERT_EQ(Facts("Reel " + std::to_string(i) + ".zuproj") != nullptr, isThere) << i;
    }
}

}  // namespace
