#include <gtest/gtest.h>

#include "desk/app/RecentProductions.h"
#include "tests/desk/core/CoreFixture.h"
#include "tests/support/FaultyFileSystem.h"

namespace desk {
namespace {

using Folders = std::vector<std::string>;

struct RecentProductionsTest : CoreFixture {
    const std::string mFile = mProfile.Path(RecentProductions::kFileName);
    Folders Reread() const { return RecentProductions(mFile).Get(); }
};

TEST_F(RecentProductionsTest, KeepsTheLastTenMostRecentFirstWithTheirBytes) {
    RecentProductions recent(mFile);
    EXPECT_TRUE(recent.IsFirstStart());
    for (int i = 0; i < 12; ++i) recent.Add("/p/" + std::to_string(i));
    recent.Add("/p/5");
    recent.Add(
        "/r\xE9"
        "el%41 \"x\"\n");
    const Folders expected{
        "/r\xE9"
        "el%41 \"x\"\n",
        "/p/5",
        "/p/11",
        "/p/10",
        "/p/9",
        "/p/8",
        "/p/7",
        "/p/6",
        "/p/4",
        "/p/3"};
    EXPECT_EQ(recent.Get(), expected);
    EXPECT_EQ(Reread(), expected);
    recent.Remove("/p/9");
    EXPECT_EQ(Reread().size(), 9u);
}

TEST_F(RecentProductionsTest, OpensTheLastOneAgainUnlessTheUserClosedIt) {
    RecentProductions(mFile).Add("/a");
    EXPECT_EQ(RecentProductions(mFile).GetFolderToOpen(), "/a");
    RecentProductions(mFile).ForgetFolderToOpen();
    EXPECT_EQ(RecentProductions(mFile).GetFolderToOpen(), "");
    EXPECT_FALSE(RecentProductions(mFile).IsFirstStart());
    EXPECT_EQ(Reread(), Folders{"/a"});
    RecentProductions(mFile).Add("/a");
    EXPECT_EQ(RecentProductions(mFile).GetFolderToOpen(), "/a");
}

TEST_F(RecentProductionsTest, TwoWindowsAddToOneList) {
    RecentProductions one(mFile), other(mFile);
    one.Add("/a");
    other.Add("/b");
    EXPECT_EQ(Reread(), (Folders{"/b", "/a"}));
}

TEST_F(RecentProductionsTest, LeavesOutWhatIsNoLocalPath) {
    mProfile.Write(
        RecentProductions::kFileName,
        R"({"productions": ["file:///a", 7, null, "b", "file://host/c", "http:///d", "file:///a", "file:///e%00f"]})");
    EXPECT_EQ(Reread(), Folders{"/a"});
}

TEST_F(RecentProductionsTest, KeepsAListThatIsNoJsonAside) {
    mProfile.Write(RecentProductions::kFileName, "{\"productions\": [");
    {
        ExpectLogged log(RecentProductions::kFileName);
        RecentProductions recent(mFile);
        EXPECT_FALSE(recent.GetNotice().empty());
        recent.Add("/a");
    }
    EXPECT_EQ(Reread(), Folders{"/a"});
    EXPECT_EQ(mProfile.Read(std::string(RecentProductions::kFileName) + ".unreadable-1"),
              "{\"productions\": [");
}

TEST_F(RecentProductionsTest, NeverReplacesWhatItCouldNotRead) {
    RecentProductions(mFile).Add("/old");
    const std::string before = mProfile.Read(RecentProductions::kFileName);
    {
        FaultyFileSystem disk;
        disk.Deny(mFile);
        ExpectLogged log("recent productions is not saved");
        ExpectLogged refused(RecentProductions::kFileName);
        RecentProductions recent(mFile);
        recent.Add("/a");
        recent.Add("/b");
        EXPECT_EQ(recent.Get(), (Folders{"/b", "/a"}));
    }
    EXPECT_EQ(mProfile.Read(RecentProductions::kFileName), before);
}

}  // namespace
}  // namespace desk
