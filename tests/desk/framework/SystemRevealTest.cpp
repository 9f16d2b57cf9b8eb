#include "desk/core/log/UserNotice.h"
#include "host/framework/SystemReveal.h"
#include "tests/support/HostFixture.h"

namespace {

struct SystemRevealTest : HostFixture, host::Listener {
    SystemRevealTest() { host::AddListener(desk::kStation_UserNotices, this); }
    ~SystemRevealTest() override { host::RemoveListener(desk::kStation_UserNotices, this); }
    void ListenToMessage(const host::Message& message) override {
        mNotice = host::UTF16to8(host::MessageCast<desk::UserNoticeMessage>(message)->GetText());
    }
    std::string mNotice;
};

TEST_F(SystemRevealTest, ShowsItemsAndFoldersAndTellsWhatWentWrong) {
    host::RevealAndSelectFiles({u"/p//Reel \xDCE9.zuproj", u"/q/b/"});
    host::RevealAndSelectFiles({});
    mDesktop.mRevealFailedFor = "/p/Reels";
    host::RevealFolder(u"/p/Reels");
    EXPECT_EQ(mDesktop.mShown,
              (std::vector<std::string>{"items", "/p/Reel \xE9.zuproj", "/q/b", "folders", "/p/Reels"}));
    mMain.RunUntilIdle();
    EXPECT_EQ(mNotice, "No file browser could be opened to show “/p/Reels”.");
}

}  // namespace
