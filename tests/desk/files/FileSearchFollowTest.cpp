#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"
#include "tests/desk/files/FollowedFolder.h"

using host::FileSearch;

namespace {

/// Searches that go on after their completion, in folders that no view has listed.
class FileSearchFollowTest : public FollowedFolder {
protected:
    FileSearchFollowTest() { mAppliesChanges = false; }

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

TEST_F(FileSearchFollowTest, LosesNoChangeOfItsOwnTimeAndTellsItAfterTheCompletion) {
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

TEST_F(FileSearchFollowTest, TellsOfFoldersThatAreMadeAndRenamed) {
    UseInotify();
    std::filesystem::create_symlink("..", mFolder.Path("loop"));
    Monitor();
    const auto request = Find();
    mFolder.Write("new/deep/Reel 3.zuproj");
    ASSERT_TRUE(Becomes({"new/deep/Reel 3.zuproj"}));
    mFolder.Rename("new", "Reels");
    ASSERT_TRUE(Becomes({"Reels", "Reels/deep/Reel 3.zuproj"}));
    mFolder.Remove("Reels");
    ASSERT_TRUE(Becomes({}));
}

TEST_F(FileSearchFollowTest, LetsGoOfTheFoldersWhenItEnds) {
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

TEST_F(FileSearchFollowTest, FindsWhatIsInAFolderOnceItCanBeRead) {
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

}  // namespace
