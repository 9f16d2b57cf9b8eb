#include <gtest/gtest.h>

#include "desk/core/UserNotice.h"
#include "host/framework/SystemReveal.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"

namespace {

TEST(SystemRevealTest, ShowsItemsAndFoldersAndTellsWhatWentWrong) {
    struct Notices : host::Listener {
        Notices() { host::AddListener(desk::kStation_UserNotices, this); }
        ~Notices() override { host::RemoveListener(desk::kStation_UserNotices, this); }
        void ListenToMessage(const host::Message& message) override {
            mText = host::UTF16to8(host::MessageCast<desk::UserNoticeMessage>(message)->GetText());
        }
        std::string mText;
    } notices;
    ManualMainThread mainThread;
    RecordingDesktop desktop;
    host::RevealAndSelectFile(u"/p//Reel \xDCE9.zuproj");
    host::RevealAndSelectFiles({u"/p/a", u"/q/b/"});
    host::RevealAndSelectFiles({});
    host::RevealFolder(u"/p/");
    EXPECT_EQ(desktop.mShown, (std::vector<std::string>{"items", "/p/Reel \xE9.zuproj", "items", "/p/a", "/q/b",
                                                        "folders", "/p"}));
    desktop.mRevealProblem = "xdg-open: none";
    host::RevealFolder(u"/p/Reels");
    mainThread.RunUntilIdle();
    EXPECT_EQ(notices.mText, "“Reels” cannot be shown in the file browser: xdg-open: none");
}

}  // namespace
