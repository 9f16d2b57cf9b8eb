#include <gmock/gmock.h>

#include "host/files/FileSearch.h"
#include "tests/desk/files/FollowedFolder.h"

using namespace std::chrono_literals;

namespace {

constexpr long kNfs = 0x6969, kNobodyKnowsThisType = 0x12345678, kFuse = 0x65735546;

using DirectoryMonitorTest = FollowedFolder;

TEST_F(DirectoryMonitorTest, AnnouncesTheFirstChangeAtOnceAndTheRestInBatches) {
    UseFakeSource();
    Follow();
    mAppliesChanges = false;
    mSource->Tell(mFolder.Path(), IN_CREATE, "A.zuproj");
    mMain.RunUntilIdle();
    EXPECT_EQ(mAnnouncements, 1);
    for (int i = 0; i < 100; ++i) mSource->Tell(mFolder.Path(), IN_MODIFY, "B.zuproj");
    mMain.RunUntilIdle();
    EXPECT_EQ(mAnnouncements, 1);
    mMain.Advance(1s);
    EXPECT_EQ(mAnnouncements, 2);
    mSource->Tell(mFolder.Path(), IN_DELETE, "A.zuproj");
    mMain.RunUntilIdle();
    EXPECT_EQ(mAnnouncements, 3) << "at once again after a pause";
}

TEST_F(DirectoryMonitorTest, ListsEverythingAgainAfterAnOverflow) {
    UseFakeSource();
    mFolder.Write("A.zuproj", "1");
    mFolder.MakeFolder("Reels");
    Follow({"Reels"});
    ReadFacts("A.zuproj");
    mFolder.Write("A.zuproj", "12345");
    mFolder.Write("Reels/B.zuproj");
    mSource->Overflow();
    mMain.RunUntilIdle();
    EXPECT_EQ(SizeOf("A.zuproj"), 5u);
    EXPECT_EQ(Shown("Reels"), Names{"B.zuproj"});
}

TEST_F(DirectoryMonitorTest, PollsWhereTheWatchLimitIsReached) {
    UseFakeSource();
    mFolder.Write("Reels/A.zuproj");
    Follow();
    mSource->FailWatches(ENOSPC);
    List("Reels");
    desk::WatchStatus status = desk::GetWatchStatus();
    EXPECT_EQ(status.mWatchedFolders, 1u);
    EXPECT_EQ(status.mPolledFolders, 1u);
    EXPECT_TRUE(status.mLimitReached);
    mFolder.Write("Reels/B.zuproj");
    Poll();
    EXPECT_EQ(Shown("Reels"), (Names{"A.zuproj", "B.zuproj"}));
    mSource->FailWatches(0);
    Poll();
    EXPECT_TRUE(!desk::GetWatchStatus().mLimitReached && mSource->IsWatched(mFolder.Path("Reels")));
    EXPECT_EQ(desk::GetWatchStatus().mPolledFolders, 0u);
}

TEST_F(DirectoryMonitorTest, FollowsFoldersThatMoveAndThatHaveTwoPaths) {
    UseInotify();
    mFolder.Write("Reels/Old/A.zuproj");
    Follow({"Reels", "Reels/Old"});
    mFolder.Rename("Reels", "Takes");
    ASSERT_TRUE(WaitFor([&] { return Shown() == Names{"Takes"}; }));
    List("Takes");
    List("Takes/Old");
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 3u);
    mFolder.Write("Takes/Old/B.zuproj");
    ASSERT_TRUE(WaitFor([&] { return Shown("Takes/Old").contains("B.zuproj"); }));
    EXPECT_FALSE(mStore->IsListed(Path("Reels/Old")));

    std::filesystem::create_symlink("Takes/Old", mFolder.Path("Link"));
    List("Link");
    mFolder.Write("Takes/Old/C.zuproj");
    ASSERT_TRUE(
        WaitFor([&] { return Shown("Takes/Old").contains("C.zuproj") && Shown("Link").contains("C.zuproj"); }));
    mStore->Forget(Path("Link"));
    mFolder.Write("Takes/Old/D.zuproj");
    ASSERT_TRUE(WaitFor([&] { return Shown("Takes/Old").contains("D.zuproj"); }));
}

TEST_F(DirectoryMonitorTest, KeepsRowsWhileTheRootIsAway) {
    UseInotify();
    mFolder.Write("Production/A.zuproj");
    const std::string root = "Production";
    Monitor(root);
    List(root);
    {
        ExpectLogged log("list folder");
        mFolder.Rename(root, "Elsewhere");
        ASSERT_TRUE(WaitFor([] { return desk::GetWatchStatus().mSystemError == ENOENT; }));
        Poll();
        EXPECT_EQ(log.Count(), 1);
    }
    EXPECT_EQ(Shown(root), Names{"A.zuproj"});
    mFolder.Write("Elsewhere/B.zuproj");
    mFolder.Rename("Elsewhere", root);
    ASSERT_TRUE(WaitFor([&] { return Shown(root) == (Names{"A.zuproj", "B.zuproj"}); }));
    EXPECT_EQ(desk::GetWatchStatus().mSystemError, 0);
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 1u) << "watched again, not polled";
    mFolder.Write(root + "/C.zuproj");
    ASSERT_TRUE(WaitFor([&] { return Shown(root).contains("C.zuproj"); }));
}

TEST_F(DirectoryMonitorTest, TakesTheEmptyFolderOfAnUnmountedVolumeForNoAnswer) {
    UseFakeSource();
    mFolder.Write("A.zuproj");
    mDisk.SetVolumeType(kFuse);
    Follow();
    mFolder.Remove("A.zuproj");
    mDisk.SetVolumeType(0xEF53);
    {
        ExpectLogged log("list folder");
        Poll();
    }
    EXPECT_EQ(Shown(), Names{"A.zuproj"});
    EXPECT_EQ(desk::GetWatchStatus().mSystemError, ENODEV);
    mFolder.Write("B.zuproj");
    mDisk.SetVolumeType(kFuse);
    Poll();
    EXPECT_EQ(Shown(), Names{"B.zuproj"});
    mFolder.Remove("B.zuproj");
    Poll();
    EXPECT_EQ(Shown(), Names{}) << "a volume that answers may become empty";
}

TEST_F(DirectoryMonitorTest, EveryChangeShowsWhereFoldersArePolledAndOnlyWhatChangedIsRead) {
    mDisk.SetVolumeType(kNobodyKnowsThisType);
    UseFakeSource();
    const auto sees = [this](const std::function<bool()>& isDone) { return Poll(), isDone(); };
    const auto seesLockOf = [&](const host::UTF16String& user) {
        return sees([&] { return Facts("A.zuproj")->mLock && Facts("A.zuproj")->mLock->mUser == user; });
    };
    mFolder.Write("A.zuproj", "1");
    mFolder.Write("B.zuproj");
    mFolder.MakeFolder("Reels");
    Follow();
    ReadFacts("A.zuproj");
    EXPECT_EQ(desk::GetWatchStatus().mPolledFolders, 1u);
    EXPECT_EQ(mStatusChanges, 1);
    mDeliveries.clear();
    mDisk.ResetCounts();
    Poll();
    EXPECT_EQ(mDeliveries.size(), 0u) << "nothing has changed";
    EXPECT_EQ(mStatusChanges, 1) << "nor has the status";

    WriteWithoutNewTime("A.zuproj", "12345");
    ASSERT_TRUE(sees([&] { return SizeOf("A.zuproj") == 5; }));
    Lock("", "A.zuproj", u"Ada");
    ASSERT_TRUE(seesLockOf(u"Ada"));
    Lock("", "A.zuproj", u"Grace Hopper");
    ASSERT_TRUE(seesLockOf(u"Grace Hopper"));
    const int readings = mDisk.Count(Operation::ReadSmallFile);
    Poll();
    EXPECT_EQ(mDisk.Count(Operation::ReadSmallFile), readings) << "an unchanged lock file is not read again";
    mFolder.Remove(LockName("", "A.zuproj"));
    ASSERT_TRUE(sees([&] { return !Facts("A.zuproj")->mHasLockFile && !Facts("A.zuproj")->mLock; }));
    mFolder.Write("C.zuproj", "123");
    ASSERT_TRUE(sees([&] { return Shown().contains("C.zuproj"); }));
    EXPECT_EQ(SizeOf("C.zuproj"), 3u) << "a new row comes complete";
    mFolder.Rename("B.zuproj", "D.zuproj");
    mFolder.Remove("Reels");
    ASSERT_TRUE(sees([&] { return Shown() == Names{"A.zuproj", "C.zuproj", "D.zuproj"}; }));
    for (const auto& delivery : mDeliveries) EXPECT_EQ(delivery.mDelivery.mExtent, Extent::Change);
}

TEST_F(DirectoryMonitorTest, SaysForHowLongAVolumeHasNotAnswered) {
    UseFakeSource();
    mDisk.SetVolumeType(kNfs);
    Monitor();
    host::UTF16StringVec names;
    for (int i = 0; i < 40; ++i) {
        const std::string number = std::to_string(i);
        names.push_back(host::UTF8to16("Reel " + number + ".zuproj"));
        mFolder.Write(host::UTF16to8(names.back()));
        mFolder.MakeFolder(number);
        List(number);
    }
    List();
    mStore->RequestFacts(Path(""), names);
    mMain.RunUntilIdle();
    const auto silence = [] { return desk::GetWatchStatus().mSecondsWithoutAnswer; };
    for (const Operation operation : {Operation::ListFolder, Operation::Status}) {
        SCOPED_TRACE(operation == Operation::ListFolder ? "listings hang" : "reads of facts hang");
        ExpectLogged log("did not answer for ");
        mDisk.CloseGate(operation, mFolder.Path());
        mMain.AdvanceAlone(2s);
        ASSERT_TRUE(mDisk.WaitAtGate());
        mMain.AdvanceAlone(3s);
        EXPECT_EQ(silence(), 0);
        mMain.AdvanceAlone(60s);
        EXPECT_GE(silence(), 60);
        EXPECT_EQ(desk::GetWatchStatus().mSystemError, 0);
        EXPECT_EQ(Shown().size(), 80u);
        EXPECT_EQ(log.Count(), 0);
        mDisk.OpenGate();
        mMain.RunUntilIdle();
        EXPECT_EQ(silence(), 0);
        EXPECT_EQ(log.Count(), 1);
    }
}

TEST_F(DirectoryMonitorTest, AnotherProductionIsUsableWhileTheVolumeOfTheFirstHangs) {
    UseFakeSource();
    mDisk.SetVolumeType(kNfs);
    host::UTF16StringVec names;
    for (int i = 0; i < 20; ++i) {
        const std::string number = std::to_string(i);
        names.push_back(host::UTF8to16(number + ".zuproj"));
        mFolder.Write("sick/" + number + ".zuproj");
        mFolder.MakeFolder("sick/" + number);
    }
    mFolder.Write("well/A.zuproj", "123");
    std::size_t found = 0;
    const auto search = [&](const char* root) {
        return host::FileSearch::FindFilesOrDirectories(
            Path(root), {.mText = u"", .mChanged = {}},
            [&](const auto& result) { found += result.mPaths.size(); });
    };
    Monitor("sick");
    List("sick");
    mDisk.CloseGate(Operation::Any, mFolder.Path("sick"));
    const auto first = search("sick"), second = search("sick"), third = search("sick");
    ASSERT_TRUE(mMain.AdvanceAloneUntil([&] { return mDisk.Count(Operation::ListFolder) > 1; }));
    mStore->RequestFacts(Path("sick"), names);
    for (const char* folder : {"sick/1", "sick/2", "sick/3", "sick/4"})
        mStore->RequestListing(Path(folder), Receiver(folder), this);
    ASSERT_TRUE(mDisk.WaitAtGate(4)) << "all workers";
    StopMonitoring("sick");

    Monitor("well");
    mStore->RequestListing(Path("well"), Receiver("well"), this);
    EXPECT_TRUE(mMain.AdvanceAloneUntil([&] { return Shown("well") == Names{"A.zuproj"}; }));
    mStore->FindAndRequest(Path("well/A.zuproj"));
    EXPECT_TRUE(mMain.AdvanceAloneUntil([&] { return SizeOf("well/A.zuproj") == 3u; }));
    const auto request = search("well");
    EXPECT_TRUE(mMain.AdvanceAloneUntil([&] { return found == 1; }));
    mDisk.OpenGate();
    mMain.RunUntilIdle();
}

TEST_F(DirectoryMonitorTest, ShowsNamesAndLocksThatAPollFindsBeforeItsFacts) {
    UseFakeSource();
    mDisk.SetVolumeType(kNfs);
    for (const char* name : {"A.zuproj", "B.zuproj", "C.zuproj"}) mFolder.Write(name, "1");
    Follow();
    ReadFacts("A.zuproj");
    mDisk.CloseGate(Operation::Status, mFolder.Path("A.zuproj"));
    mFolder.Write("A.zuproj", "12345");
    Lock("", "B.zuproj", u"Ada");
    mFolder.Remove("C.zuproj");
    mFolder.Write("D.zuproj", "123");
    mMain.AdvanceAlone(2s);
    ASSERT_TRUE(mDisk.WaitAtGate());
    mMain.AdvanceAlone(0s);
    EXPECT_EQ(Shown(), (Names{"A.zuproj", "B.zuproj", "D.zuproj"}));
    EXPECT_TRUE(Facts("B.zuproj")->mHasLockFile);
    EXPECT_EQ(SizeOf("D.zuproj"), 3u) << "a new row comes complete";
    EXPECT_EQ(SizeOf("A.zuproj"), 1u);
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_EQ(SizeOf("A.zuproj"), 5u);
}

TEST_F(DirectoryMonitorTest, HearsWhatAWatchTellsBeforeItIsKnown) {
    UseFakeSource();
    mSource->mDuringAdd = [&] { mSource->Tell(mFolder.Path(), IN_CREATE, "A.zuproj"); };
    Monitor();
    mMain.RunUntilIdle();
    EXPECT_EQ(mAnnouncements, 1);
}

TEST(FolderPollerTest, PollsFewFoldersAtATimeAndSlowOnesLessOften) {
    ManualMainThread main;
    std::vector<host::UTF16String> begun;
    desk::FolderPoller poller([&](const host::UTF16String& folder) { begun.push_back(folder); }, 8);
    const auto finishAll = [&](std::chrono::milliseconds duration) {
        for (std::size_t i = 0; i < begun.size(); ++i) poller.Finished(begun[i], duration);
        return std::exchange(begun, {}).size();
    };
    for (char16_t name = u'a'; name < u'u'; ++name) poller.Add(host::UTF16String(1, name));
    main.Advance(8s);
    EXPECT_EQ(begun.size(), 8u) << "none has finished";
    EXPECT_EQ(finishAll(0ms), 20u) << "each that finishes makes room for another";
    main.Advance(2s);
    EXPECT_EQ(finishAll(2s), 20u);
    EXPECT_EQ(poller.GetInterval(), 6s) << "from one beginning to the next";
    main.Advance(2s);
    EXPECT_EQ(begun.size(), 0u);
    main.Advance(2s);
    EXPECT_EQ(finishAll(0ms), 20u);

    main.mTimeUnused = 60s;
    EXPECT_EQ(poller.GetInterval(), 30s) << "nobody uses the program";
    main.Advance(26s);
    EXPECT_EQ(begun.size(), 0u);
    main.mTimeUnused = 0s;
    main.Advance(2s);
    EXPECT_EQ(begun.size(), 8u) << "somebody is back";
}

TEST_F(DirectoryMonitorTest, FollowsWhatLiesBelowMonitoredRootsOnly) {
    UseFakeSource();
    mFolder.MakeFolder("Reels");
    mFolder.MakeFolder("Reels 2");
    Monitor("Reels");
    Monitor("Reels");
    List("Reels");
    List("Reels 2");
    EXPECT_TRUE(mStore->IsListed(Path("Reels")));
    EXPECT_FALSE(mStore->IsListed(Path("Reels 2"))) << "nobody would tell when it changes";
    StopMonitoring("Reels");
    EXPECT_TRUE(mSource->IsWatched(mFolder.Path("Reels")));
    StopMonitoring("Reels");
    EXPECT_FALSE(mStore->IsListed(Path("Reels")));
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 0u);

    // Monitored again, what is known is brought up to date.
    mFolder.Write("Reels/A.zuproj");
    Monitor("Reels");
    mMain.RunUntilIdle();
    EXPECT_EQ(Shown("Reels"), Names{"A.zuproj"});
}

}  // namespace
