#include <gmock/gmock.h>
#include <unistd.h>

#include "desk/files/search/FolderFollower.h"
#include "desk/files/search/FolderWalk.h"
#include "host/files/FileSearch.h"
#include "tests/desk/files/FollowedFolder.h"

using host::FileSearch;

namespace {

/// Searches, also such as go on after their completion, in folders that no view has listed.
class FileSearchTest : public FollowedFolder {
protected:
    FileSearchTest() { mAppliesChanges = false; }

    std::unique_ptr<FileSearch::Request> Start(const std::string& text = "Reel") {
        return FileSearch::FindFilesOrDirectories(
            mFolder.PathUTF16(),
            {.mText = host::UTF8to16(text),
             .mChanged = [this](const FileSearch::Changes& changes) { Take(changes); }},
            [this](const FileSearch::Result& result) {
                ++mCompletions;
                mHits.clear();
                for (const host::UTF16String& path : result.mPaths) mHits.insert(Relative(path));
            });
    }
    std::unique_ptr<FileSearch::Request> Find(const std::string& text = "Reel") {
        auto request = Start(text);
        mMain.RunUntilIdle();
        return request;
    }
    void Take(const FileSearch::Changes& changes) {
        EXPECT_GT(mCompletions, 0) << "changes before the completion";
        for (const host::UTF16String& path : changes.mRemovedPaths)
            std::erase_if(mHits, [gone = Relative(path)](const std::string& hit) {
                return hit == gone || hit.starts_with(gone + '/');
            });
        for (const host::UTF16String& path : changes.mPaths) mHits.insert(Relative(path));
    }
    std::string Relative(const host::UTF16String& path) const {
        return host::UTF16to8(path).substr(mFolder.Path().size() + 1);
    }
    bool Becomes(const Names& hits) {
        if (WaitFor([&] { return mHits == hits; })) return true;
        EXPECT_EQ(mHits, hits);
        return false;
    }

    Names mHits;
    int mCompletions = 0;
};

TEST_F(FileSearchTest, AWalkEndsWhateverHappensInAFolder) {
    desk::FolderWalk::Parameters parameters;
    parameters.mVisitor = [](const auto&, const auto&) { throw std::runtime_error("no memory"); };
    const auto walk = std::make_shared<desk::FolderWalk>(
        parameters, [this](const desk::FolderWalk::Result&) { ++mCompletions; });
    const ExpectLogged log("no memory");
    walk->Start({mFolder.PathUTF16()});
    mMain.RunUntilIdle();
    EXPECT_EQ(mCompletions, 1);
}

}  // namespace

TEST_F(FileSearchTest, FindsProjectsFoldersAndLinksAndNothingThatIsHiddenOrEnteredByALink) {
    for (const char* name :
         {"Reel 1.zuproj", "a/Reel 2.ZUPROJ", "a/b/Reels/x.zuproj", "a/b/c/Reel 3.zuproj",
          "\xE9/Reel \xE9.zuproj", ".Reel hidden.zuproj", "real/Reel 4.zuproj",  // and what is left out:
          "a/Reel.txt", "a/Reel.zuproj.tmp", "a/Other.zuproj", ".trash/Reel.zuproj", ".Reel 2.zuproj.lock",
          "..Reel.ZUPROJ.lock", ".zutmp-Reel.zuproj", ".nfsReel.zuproj", ".fuse_hiddenReel.zuproj"})
        mFolder.Write(name);
    mkfifo(mFolder.Path("Reel pipe.zuproj").c_str(), 0600);
    symlink("..", mFolder.Path("real/Reel loop").c_str());
    symlink("real/Reel 4.zuproj", mFolder.Path("Reel link.zuproj").c_str());
    symlink("real", mFolder.Path("Reel folder").c_str());
    symlink("nowhere", mFolder.Path("Reel broken.zuproj").c_str());
    symlink("itself.Reel.zuproj", mFolder.Path("itself.Reel.zuproj").c_str());
    for (const bool isHidden : {false, true}) {
        mDisk.HideKinds(isHidden);
        Find();
        EXPECT_EQ(mHits, (Names{"Reel 1.zuproj", "a/Reel 2.ZUPROJ", "a/b/Reels", "a/b/c/Reel 3.zuproj",
                                "\xE9/Reel \xE9.zuproj", ".Reel hidden.zuproj", "real/Reel 4.zuproj",
                                "Reel link.zuproj", "Reel folder", "real/Reel loop"}));
    }
}

TEST_F(FileSearchTest, LosesNoChangeOfItsOwnTimeAndTellsItAfterTheCompletion) {
    UseInotify();
    for (const char* name : {"a/Reel 1.zuproj", "b/Reel 2.zuproj", "c/Reel 3.zuproj"}) mFolder.Write(name);
    Monitor();
    // A view has listed these two.
    List();
    List("a");
    mDisk.CloseGate(Operation::ListFolder, mFolder.Path("b"));
    const auto request = Start();
    ASSERT_TRUE(mMain.AdvanceAloneUntil([&] { return mDisk.Count(Operation::ListFolder) == 4; }));
    mFolder.Rename("a/Reel 1.zuproj", "a/Reel 4.zuproj");
    mFolder.Rename("c/Reel 3.zuproj", "c/Reel 5.zuproj");
    // The view holds the change back.
    EXPECT_TRUE(mMain.AdvanceAloneUntil([&] { return mAnnouncements > 0; }));
    EXPECT_EQ(mCompletions, 0);
    mDisk.OpenGate();
    ASSERT_TRUE(Becomes({"a/Reel 4.zuproj", "b/Reel 2.zuproj", "c/Reel 5.zuproj"}));
    EXPECT_EQ(mCompletions, 1);
}

TEST_F(FileSearchTest, AsksTheVolumeForNothingOnceTheNamesAreKnownAndSharesAWalkUnderWay) {
    UseInotify();
    for (const char* name : {"Reel 1.zuproj", "a/Reel 2.zuproj", "a/b/Other.zuproj", "c/REEL 3.zuproj"})
        mFolder.Write(name);
    symlink("c", mFolder.Path("Reel link").c_str());
    Monitor();
    // The first key, and the second before the first has found anything.
    auto older = Start("R");
    auto request = Start();
    older.reset();
    mMain.RunUntilIdle();
    const Names hits{"Reel 1.zuproj", "Reel link", "a/Reel 2.zuproj", "c/REEL 3.zuproj"};
    EXPECT_EQ(mHits, hits);
    EXPECT_EQ(mCompletions, 1);
    EXPECT_EQ(CountLists(), 8) << "each folder once by the walk and once to be followed";
    mDisk.ResetCounts();
    for (const char* text : {"Reel", "reel ", "Other", "reel"}) request = Find(text);
    EXPECT_EQ(mHits, hits);
    EXPECT_EQ(mDisk.Count(Operation::Any), 0);
    // What changes is found by the next search as it is told to this one.
    mFolder.Rename("c/REEL 3.zuproj", "c/reel 4.zuproj");
    mFolder.Write("d/Reel 5.zuproj");
    mFolder.Remove("a");
    const Names changed{"Reel 1.zuproj", "Reel link", "c/reel 4.zuproj", "d/Reel 5.zuproj"};
    ASSERT_TRUE(Becomes(changed));
    mDisk.ResetCounts();
    request = Find();
    EXPECT_EQ(mHits, changed);
    EXPECT_EQ(mDisk.Count(Operation::Any), 0);
}

TEST_F(FileSearchTest, LetsGoOfTheFoldersWhenItEnds) {
    UseInotify();
    mFolder.Write("a/Reel 1.zuproj");
    mFolder.Write("b/c/Other.zuproj");
    Monitor();
    auto request = Find();
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 4u);
    auto next = Find("Other");
    request.reset();
    mMain.RunUntilIdle();
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 4u) << "the next search needs them";
    next.reset();
    mMain.RunUntilIdle();
    EXPECT_EQ(desk::GetWatchStatus().mWatchedFolders, 0u);
    EXPECT_FALSE(mStore->IsListed(Path("a")));
}

TEST_F(FileSearchTest, ReadsTheFoldersAgainThatAreTooManyToFollow) {
    constexpr long kNfs = 0x6969;
    constexpr std::size_t kFolders = desk::FolderFollower::kMostPolled + 20;
    UseFakeSource();
    mDisk.SetVolumeType(kNfs);
    for (std::size_t i = 0; i < kFolders; ++i) mFolder.MakeFolder(std::to_string(i));
    Monitor();
    auto request = Find();
    std::vector<std::string> unfollowed;
    for (std::size_t i = 0; i < kFolders; ++i)
        if (!mStore->IsListed(Path(std::to_string(i)))) unfollowed.push_back(std::to_string(i));
    ASSERT_GE(unfollowed.size(), 2u);
    const std::string& folder = unfollowed.back();
    mFolder.Write(folder + "/Reel 1.zuproj");
    mFolder.Write(unfollowed.front() + "/Reels/Reel 2.zuproj");
    mDisk.ResetCounts();
    request = Find();
    EXPECT_EQ(mHits, Names()) << "keys do not wait for the disk";
    mMain.Advance(std::chrono::seconds(1));
    const Names hits{folder + "/Reel 1.zuproj", unfollowed.front() + "/Reels",
                     unfollowed.front() + "/Reels/Reel 2.zuproj"};
    EXPECT_EQ(mHits, hits);
    EXPECT_LE(CountLists(), static_cast<int>(unfollowed.size()) + 1) << "the others are known";
    EXPECT_FALSE(mStore->IsAwaited(Path(folder)));
    mFolder.Remove(unfollowed.front() + "/Reels");
    request = Find();
    EXPECT_TRUE(mStore->IsAwaited(Path(folder))) << "has a hit now";
    mMain.Advance(std::chrono::seconds(1));
    EXPECT_EQ(mHits, Names{folder + "/Reel 1.zuproj"});
}
