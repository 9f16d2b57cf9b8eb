#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "desk/core/WorkProgress.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"
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
            {.mExtensions = {u".zuproj"},
             .mFilter =
                 [needle = host::UTF8to16(text)](const host::UTF16String& path) {
                     return host::PathUtils::GetFullFilePart(path).find(needle) != std::u16string::npos;
                 },
             .mChanged = [this](const FileSearch::Changes& changes) { Take(changes); }},
            [this](const FileSearch::Result& result) {
                ++mCompletions;
                mHits.clear();
                mError = result.mUnreadable.empty() ? 0 : result.mUnreadable[0].mSystemError;
                for (const host::UTF16String& path : result.mPaths) mHits.insert(Relative(path));
                EXPECT_TRUE(std::ranges::is_sorted(result.mPaths));
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
    int mError = 0;
    int mCompletions = 0;
};

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

TEST_F(FileSearchTest, ADroppedRequestEndsTheWalkAndNeverCompletes) {
    for (int i = 0; i < 50; ++i) mFolder.Write("a/" + std::to_string(i) + "/Reel.zuproj");
    mDisk.CloseGate(Operation::ListFolder, mFolder.Path("a"));
    auto request = Start();
    ASSERT_TRUE(mDisk.WaitAtGate());
    request.reset();
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_EQ(mCompletions, 0);
    EXPECT_EQ(mDisk.Count(Operation::ListFolder), 2);
}

TEST_F(FileSearchTest, AWalkThatIsCancelledInItsLastFolderFindsNothing) {
    class CancelsInFolder : public ScriptedDialogs {
    public:
        explicit CancelsInFolder(FaultyFileSystem& disk) : mDisk(disk) {}
        void WaitFor(const host::UTF16String&, desk::WorkProgress& progress,
                     const std::future<void>& done) override {
            EXPECT_TRUE(mDisk.WaitAtGate());
            progress.Cancel();
            mDisk.OpenGate();
            done.wait();
        }
        FaultyFileSystem& mDisk;
    } dialogs(mDisk);
    mFolder.Write("a/Reel.zuproj");
    mDisk.CloseGate(Operation::ListFolder, mFolder.Path("a"));
    EXPECT_EQ(ErrorOf([&] { FileSearch::FindFiles(mFolder.PathUTF16(), u".zuproj"); }), ECANCELED);
}

TEST_F(FileSearchTest, LosesNoChangeOfItsOwnTimeAndTellsItAfterTheCompletion) {
    UseInotify();
    mFolder.Write("a/Reel 1.zuproj");
    mFolder.Write("b/Reel 2.zuproj");
    Monitor();
    auto request = Find();
    mDisk.CloseGate(Operation::ListFolder, mFolder.Path("b"));
    mCompletions = 0;
    auto next = Start();
    ASSERT_TRUE(mDisk.WaitAtGate());
    request.reset();
    mFolder.Rename("a/Reel 1.zuproj", "a/Reel 3.zuproj");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::function<void()> openWhenKnown = [&] {
        const bool isKnown = mStore->Find(Path("a/Reel 3.zuproj")) && !mStore->Find(Path("a/Reel 1.zuproj"));
        if (!isKnown && std::chrono::steady_clock::now() < end) return mMain.Post(openWhenKnown);
        EXPECT_TRUE(isKnown);
        EXPECT_EQ(mCompletions, 0);
        mDisk.OpenGate();
    };
    mMain.Post(openWhenKnown);
    ASSERT_TRUE(Becomes({"a/Reel 3.zuproj", "b/Reel 2.zuproj"}));
    EXPECT_EQ(mCompletions, 1);
}

TEST_F(FileSearchTest, TellsOfFoldersThatAreMadeAndRenamed) {
    UseInotify();
    symlink("..", mFolder.Path("loop").c_str());
    Monitor();
    const auto request = Find();
    mFolder.Write("new/deep/Reel 3.zuproj");
    ASSERT_TRUE(Becomes({"new/deep/Reel 3.zuproj"}));
    mFolder.Rename("new", "Reels");
    ASSERT_TRUE(Becomes({"Reels", "Reels/deep/Reel 3.zuproj"}));
    mFolder.Remove("Reels");
    ASSERT_TRUE(Becomes({}));
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

TEST_F(FileSearchTest, FindsWhatIsInAFolderOnceItCanBeRead) {
    UseInotify();
    mFolder.Write("open/Reel 1.zuproj");
    mFolder.Write("shut/Reel 2.zuproj");
    Monitor();
    mDisk.Deny(mFolder.Path("shut"));
    ExpectLogged log("Permission denied");
    const auto request = Find();
    EXPECT_EQ(mHits, Names{"open/Reel 1.zuproj"});
    EXPECT_EQ(mError, EACCES);
    mDisk.Allow(mFolder.Path("shut"));
    Poll();
    ASSERT_TRUE(Becomes({"open/Reel 1.zuproj", "shut/Reel 2.zuproj"}));
}
