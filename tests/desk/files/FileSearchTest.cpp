#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/TemporaryFolder.h"

using host::FileSearch;
using Names = std::vector<std::string>;

namespace {

class FileSearchTest : public testing::Test {
protected:
    FileSearchTest() { desk::GetServices().mWorkerPool = &mPool; }
    ~FileSearchTest() override { desk::GetServices().mWorkerPool = mPoolBefore; }

    std::unique_ptr<FileSearch::Request> Start(const std::string& text) {
        return FileSearch::FindFilesOrDirectories(
            mFolder.PathUTF16(),
            {.mExtensions = {u".zuproj"},
             .mFilter =
                 [needle = host::UTF8to16(text)](const host::UTF16String& path) {
                     return host::PathUtils::GetFullFilePart(path).find(needle) != std::u16string::npos;
                 },
             .mChanged = {}},
            [this](const FileSearch::Result& result) {
                ++mCompletions;
                mFound.clear();
                mUnreadable.clear();
                for (const auto& folder : result.mUnreadable)
                    mUnreadable.push_back(host::UTF16to8(folder.mPath).substr(mFolder.Path().size()) + ": " +
                                          std::strerror(folder.mSystemError));
                for (const host::UTF16String& path : result.mPaths)
                    mFound.push_back(host::UTF16to8(path).substr(mFolder.Path().size() + 1));
            });
    }
    /// What is found, relative to the folder.
    Names Find(const std::string& text) {
        auto request = Start(text);
        mMainThread.RunUntilIdle();
        return mFound;
    }

    TemporaryFolder mFolder;
    FaultyFileSystem mDisk;
    desk::WorkerPool* mPoolBefore = desk::GetServices().mWorkerPool;
    desk::WorkerPool mPool{4};
    ManualMainThread mMainThread;
    Names mFound;
    /// Relative to the folder, with the reason.
    Names mUnreadable;
    int mCompletions = 0;
};

}  // namespace

TEST_F(FileSearchTest, FindsProjectsAndFoldersAtAnyDepthSorted) {
    for (const char* name : {"Reel 1.zuproj", "a/Reel 2.ZUPROJ", "a/b/Reels/x.zuproj", "a/b/c/d/Reel 3.zuproj",
                             "a/Reel.txt", "a/Reel.zuproj.tmp", "a/Other.zuproj", "\xE9/Reel \xE9.zuproj"})
        mFolder.Write(name);
    EXPECT_EQ(Find("Reel"), (Names{"Reel 1.zuproj", "a/Reel 2.ZUPROJ", "a/b/Reels", "a/b/c/d/Reel 3.zuproj",
                                   "\xE9/Reel \xE9.zuproj"}));
    EXPECT_EQ(Find("nothing"), Names{});
    EXPECT_EQ(mCompletions, 2);
    mDisk.HideKinds(true);
    EXPECT_EQ(Find("Reel").size(), 5u);
}

TEST_F(FileSearchTest, LeavesOutHiddenFoldersAndTheHostsFiles) {
    for (const char* name : {".trash/Reel 1.zuproj", ".Reel 2.zuproj.lock", ".zutmp-Reel.zuproj",
                             ".nfsReel.zuproj", ".Reel hidden.zuproj"})
        mFolder.Write(name);
    mkfifo(mFolder.Path("Reel pipe.zuproj").c_str(), 0600);
    EXPECT_EQ(Find("Reel"), Names{".Reel hidden.zuproj"});
    mDisk.HideKinds(true);
    EXPECT_EQ(Find("Reel"), Names{".Reel hidden.zuproj"});
}

TEST_F(FileSearchTest, LinksAreFoundButNotEntered) {
    mFolder.Write("real/Reel 1.zuproj");
    symlink("..", mFolder.Path("real/Reel loop").c_str());
    symlink("real/Reel 1.zuproj", mFolder.Path("Reel link.zuproj").c_str());
    symlink("real", mFolder.Path("Reel folder").c_str());
    symlink("nowhere", mFolder.Path("Reel broken.zuproj").c_str());
    symlink("itself.Reel.zuproj", mFolder.Path("itself.Reel.zuproj").c_str());
    const Names expected{"Reel folder", "Reel link.zuproj", "real/Reel 1.zuproj", "real/Reel loop"};
    EXPECT_EQ(Find("Reel"), expected);
    mDisk.HideKinds(true);
    EXPECT_EQ(Find("Reel"), expected);
}

TEST_F(FileSearchTest, AFolderThatCannotBeReadIsLoggedAndNamed) {
    mFolder.Write("open/Reel 1.zuproj");
    mFolder.Write("shut/Reel 2.zuproj");
    mDisk.Deny(mFolder.Path("shut"));
    ExpectLogged log(mFolder.Path("shut") + ": Permission denied");
    EXPECT_EQ(Find("Reel"), Names{"open/Reel 1.zuproj"});
    EXPECT_EQ(mUnreadable, Names{"/shut: Permission denied"});
    mDisk.SetGone(true);
    ExpectLogged gone("Stale file handle");
    EXPECT_EQ(Find("Reel"), Names{});
    EXPECT_EQ(mUnreadable, Names{": Stale file handle"});
    mDisk.SetGone(false);
    ExpectLogged missing("No such file or directory");
    mFolder.Remove("");
    EXPECT_EQ(Find("Reel"), Names{});
    EXPECT_EQ(mUnreadable, Names{": No such file or directory"});
    EXPECT_EQ(mCompletions, 3);
}

TEST_F(FileSearchTest, ADroppedRequestEndsTheWalkAndNeverCompletes) {
    for (int i = 0; i < 50; ++i) mFolder.Write("a/" + std::to_string(i) + "/Reel.zuproj");
    mDisk.CloseGate(FaultyFileSystem::Operation::ListFolder, mFolder.Path("a"));
    auto request = Start("Reel");
    ASSERT_TRUE(mDisk.WaitAtGate());
    request.reset();
    mDisk.OpenGate();
    mMainThread.RunUntilIdle();
    EXPECT_EQ(mCompletions, 0);
    EXPECT_EQ(mDisk.Count(FaultyFileSystem::Operation::ListFolder), 2);

    // Also when all is found and only the hand-over waits.
    request = Start("Reel");
    mPool.WaitUntilIdle(std::chrono::seconds(20));
    request.reset();
    mMainThread.RunUntilIdle();
    EXPECT_EQ(mCompletions, 0);
}
