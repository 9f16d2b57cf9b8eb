#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"
#include "tests/support/HostFixture.h"

using host::FileSearch;
using Paths = std::vector<std::string>;

namespace {

class FileSearchTest : public HostFixture {
protected:
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
                for (const host::UTF16String& path : result.mPaths)
                    mFound.push_back(host::UTF16to8(path).substr(mFolder.Path().size() + 1));
            });
    }
    /// What is found, relative to the folder.
    Paths Find(const std::string& text) {
        auto request = Start(text);
        mMain.RunUntilIdle();
        return mFound;
    }

    Paths mFound;
    int mCompletions = 0;
};

}  // namespace

TEST_F(FileSearchTest, FindsProjectsAndFoldersAtAnyDepthSorted) {
    for (const char* name : {"Reel 1.zuproj", "a/Reel 2.ZUPROJ", "a/b/Reels/x.zuproj", "a/b/c/d/Reel 3.zuproj",
                             "a/Reel.txt", "a/Reel.zuproj.tmp", "a/Other.zuproj", "\xE9/Reel \xE9.zuproj"})
        mFolder.Write(name);
    EXPECT_EQ(Find("Reel"), (Paths{"Reel 1.zuproj", "a/Reel 2.ZUPROJ", "a/b/Reels", "a/b/c/d/Reel 3.zuproj",
                                   "\xE9/Reel \xE9.zuproj"}));
    EXPECT_EQ(Find("nothing"), Paths{});
    mDisk.HideKinds(true);
    EXPECT_EQ(Find("Reel").size(), 5u);
}

TEST_F(FileSearchTest, LeavesOutHiddenFoldersAndTheHostsFiles) {
    for (const char* name : {".trash/Reel 1.zuproj", ".Reel 2.zuproj.lock", ".zutmp-Reel.zuproj",
                             ".nfsReel.zuproj", ".Reel hidden.zuproj"})
        mFolder.Write(name);
    mkfifo(mFolder.Path("Reel pipe.zuproj").c_str(), 0600);
    EXPECT_EQ(Find("Reel"), Paths{".Reel hidden.zuproj"});
    mDisk.HideKinds(true);
    EXPECT_EQ(Find("Reel"), Paths{".Reel hidden.zuproj"});
}

TEST_F(FileSearchTest, LinksAreFoundButNotEntered) {
    mFolder.Write("real/Reel 1.zuproj");
    symlink("..", mFolder.Path("real/Reel loop").c_str());
    symlink("real/Reel 1.zuproj", mFolder.Path("Reel link.zuproj").c_str());
    symlink("real", mFolder.Path("Reel folder").c_str());
    symlink("nowhere", mFolder.Path("Reel broken.zuproj").c_str());
    symlink("itself.Reel.zuproj", mFolder.Path("itself.Reel.zuproj").c_str());
    const Paths expected{"Reel folder", "Reel link.zuproj", "real/Reel 1.zuproj", "real/Reel loop"};
    EXPECT_EQ(Find("Reel"), expected);
    mDisk.HideKinds(true);
    EXPECT_EQ(Find("Reel"), expected);
}

TEST_F(FileSearchTest, ADroppedRequestEndsTheWalkAndNeverCompletes) {
    for (int i = 0; i < 50; ++i) mFolder.Write("a/" + std::to_string(i) + "/Reel.zuproj");
    mDisk.CloseGate(Operation::ListFolder, mFolder.Path("a"));
    auto request = Start("Reel");
    ASSERT_TRUE(mDisk.WaitAtGate());
    request.reset();
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_EQ(mCompletions, 0);
    EXPECT_EQ(mDisk.Count(Operation::ListFolder), 2);
}
