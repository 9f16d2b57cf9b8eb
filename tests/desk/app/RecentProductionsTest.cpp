#include "desk/app/RecentProductions.h"
#include "tests/support/HostFixture.h"

namespace desk {
namespace {

using Folders = std::vector<std::string>;

struct RecentProductionsTest : HostFixture {
    const std::string mFile = mFolder.Path(RecentProductions::kFileName);
    Folders Reread() const { return RecentProductions(mFile).Get(); }
};

TEST_F(RecentProductionsTest, KeepsTheLastTenMostRecentFirstWithTheirBytesInOneListForAllWindows) {
    RecentProductions recent(mFile), other(mFile);
    EXPECT_TRUE(recent.IsFirstStart());
    for (int i = 0; i < 12; ++i) (i % 2 ? recent : other).Add("/p/" + std::to_string(i));
    recent.Add("/p/5");
    recent.Add("/r\xE9-l%41 \"x\"\n");
    const Folders expected{
        "/r\xE9-l%41 \"x\"\n", "/p/5", "/p/11", "/p/10", "/p/9", "/p/8", "/p/7", "/p/6", "/p/4", "/p/3"};
    EXPECT_EQ(recent.Get(), expected);
    EXPECT_EQ(Reread(), expected);
    recent.Remove("/p/9");
    EXPECT_EQ(Reread().size(), 9u);
    recent.ForgetFolderToOpen();
    EXPECT_EQ(RecentProductions(mFile).GetFolderToOpen(), "");
    EXPECT_FALSE(RecentProductions(mFile).IsFirstStart());
    other.Add("/a");
    EXPECT_EQ(RecentProductions(mFile).GetFolderToOpen(), "/a");
}

TEST_F(RecentProductionsTest, LeavesOutWhatIsNoLocalPath) {
    mFolder.Write(RecentProductions::kFileName, R"({"productions": ["file:///a", 7, null, "b",
        "file://host/c", "http:///d", "file:///a", "file:///e%00f"]})");
    EXPECT_EQ(Reread(), Folders{"/a"});
}

TEST_F(RecentProductionsTest, NeverReplacesWhatItCouldNotRead) {
    RecentProductions(mFile).Add("/old");
    const std::string before = mFolder.Read(RecentProductions::kFileName);
    for (const int read : {1, 2, 3}) mDisk.Fail(Operation::ReadSmallFile, read, EIO);
    ExpectLogged log("recent productions is not saved"), refused(RecentProductions::kFileName);
    RecentProductions recent(mFile);
    recent.Add("/a");
    recent.Add("/b");
    EXPECT_EQ(recent.Get(), (Folders{"/b", "/a"}));
    EXPECT_EQ(mFolder.Read(RecentProductions::kFileName), before);
}

}  // namespace
}  // namespace desk
