#include <QtWidgets>

#include "desk/app/ProductionCommands.h"
#include "desk/app/ProgramCommands.h"
#include "desk/app/RecentProductions.h"
#include "desk/app/StatusLine.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/LongWork.h"
#include "desk/files/live/WatchStatus.h"
#include "desk/framework/CommandRouter.h"
#include "desk/project/production/Production.h"
#include "tests/support/HostFixture.h"

namespace desk {
namespace {

using Folders = std::vector<std::string>;

struct ProductionCommandsTest : HostFixture {
    ProductionCommandsTest() {
        Production::Instance().Close();
        mFolder.MakeFolder("Harbour");
        mFolder.MakeFolder("North Shore");
    }
    ~ProductionCommandsTest() override {
        mMain.RunUntilIdle();
        Production::Instance().Close();
    }

    bool IsTold(const char* part) const { return mDialogs.LastText().find(part) != std::string::npos; }
    std::string OpenFolder() const { return host::UTF16to8(Production::Instance().GetFolder()); }
    void Choose(int command) {
        CommandRouter::Instance().Send(command);
        mMain.RunUntilIdle();
    }
    /// With `problem`, the title of the message that is to come.
    void Open(const std::string& folder, const char* problem = nullptr) {
        mDialogs.ExpectFolder("Open Production", host::UTF8to16(folder));
        if (problem) mDialogs.ExpectMessage(problem);
        Choose(kCommandOpenProduction);
    }

    TemporaryFolder mProfile;
    QMainWindow mWindow;
    StatusLine mStatusLine{mWindow};
    RecentProductions mRecent{mProfile.Path(RecentProductions::kFileName)};
    ProductionCommands mCommands{mStatusLine, &mRecent};
};

TEST_F(ProductionCommandsTest, NewMakesTheFolderWithItsTrashAndLeavesNothingWhenItFails) {
    Open(mFolder.Path("Harbour"));
    for (const int failingStep : {1, 2, 0}) {
        mDialogs.ExpectNewFolder("New Production", mFolder.PathUTF16("South Shore"));
        if (failingStep != 0) {
            mDisk.Fail(Operation::CreateFolder, failingStep, ENOSPC);
            mDialogs.ExpectMessage("The Production Was Not Made");
        }
        Choose(kCommandNewProduction);
        EXPECT_EQ(mFolder.Exists("South Shore/Trash"), failingStep == 0);
        EXPECT_EQ(mFolder.Exists("South Shore"), failingStep == 0);
        EXPECT_EQ(OpenFolder(), mFolder.Path(failingStep == 0 ? "South Shore" : "Harbour"));
    }
    EXPECT_TRUE(IsTold("South Shore") && IsTold("No space left")) << mDialogs.LastText();
    EXPECT_EQ(mRecent.Get(), (Folders{mFolder.Path("South Shore"), mFolder.Path("Harbour")}));
}

TEST_F(ProductionCommandsTest, AFolderThatCannotBeReadKeepsTheOpenProduction) {
    Open(mFolder.Path("Harbour"));
    mDisk.Deny(mFolder.Path("North Shore"));
    mFolder.Write("file");
    const std::map<const char*, const char*> reasons = {
        {"North Shore", "Permission denied"}, {"Nowhere", "does not exist"}, {"file", "not a folder"}};
    for (const auto& [name, reason] : reasons) {
        Open(mFolder.Path(name), "The Production Was Not Opened");
        EXPECT_TRUE(IsTold(name) && IsTold(reason)) << mDialogs.LastText();
        EXPECT_EQ(OpenFolder(), mFolder.Path("Harbour"));
    }
    EXPECT_EQ(mRecent.Get(), Folders{mFolder.Path("Harbour")});
}

TEST_F(ProductionCommandsTest, AVolumeThatHangsHoldsNobodyUpAndComesTooLate) {
    mDisk.CloseGate(Operation::Status, mFolder.Path("Harbour"));
    int ended = 0;
    mCommands.OpenAtStart(mFolder.Path("Harbour"), [&](const ProductionOpener::Result&) { ++ended; });
    ASSERT_TRUE(mDisk.WaitAtGate());
    WorkerPool otherPool(1);  // Its work comes to rest while the first one's does not.
    GetServices().mWorkerPool = &otherPool;
    mCommands.OpenAtStart(mFolder.Path("North Shore"), {});
    mMain.RunUntilIdle();
    EXPECT_EQ(OpenFolder(), mFolder.Path("North Shore"));
    EXPECT_EQ(ended, 1) << "who waits for it goes on";
    EXPECT_FALSE(mCommands.IsOpening());
    GetServices().mWorkerPool = &mPool;
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    EXPECT_EQ(OpenFolder(), mFolder.Path("North Shore"));
    EXPECT_EQ(ended, 1);
}

TEST_F(ProductionCommandsTest, NoneIsOpenedInTheMiddleOfLongWork) {
    mCommands.OpenAtStart(mFolder.Path("Harbour"), {});
    ASSERT_TRUE(mPool.WaitUntilIdle(std::chrono::seconds(20)));
    std::promise<void> end;
    mDialogs.mWhileWaiting = [&](WorkProgress&) {
        mMain.AdvanceAlone(std::chrono::seconds(1));
        EXPECT_EQ(OpenFolder(), "");
        end.set_value();
    };
    RunLongWork(u"Moving", [&](WorkProgress&) { end.get_future().wait(); });
    mMain.Advance(std::chrono::seconds(1));
    EXPECT_EQ(OpenFolder(), mFolder.Path("Harbour"));
}

TEST_F(ProductionCommandsTest, RecentOnesAreOfferedUntilTheyAreGone) {
    Open(mFolder.Path("North Shore"));
    Open(mFolder.Path("Harbour"));
    Choose(kCommandCloseProduction);
    EXPECT_FALSE(Production::Instance().IsOpen());
    EXPECT_EQ(mRecent.GetFolderToOpen(), "");
    EXPECT_FALSE(CommandRouter::Instance().FindStatus(kCommandCloseProduction).mIsEnabled);

    QMenu menu;
    mCommands.FillRecentMenu(menu);
    ASSERT_EQ(menu.actions().size(), 2);
    EXPECT_TRUE(menu.actions()[1]->text().startsWith(QStringLiteral("North Shore")));
    menu.actions()[1]->trigger();
    mMain.RunUntilIdle();
    EXPECT_EQ(OpenFolder(), mFolder.Path("North Shore"));

    mFolder.Remove("Harbour");
    mCommands.FillRecentMenu(menu);
    mDialogs.ExpectMessage("The Production Was Not Opened");
    menu.actions()[1]->trigger();
    mMain.RunUntilIdle();
    EXPECT_EQ(mRecent.Get(), Folders{mFolder.Path("North Shore")});
}

TEST(WatchStatusText, SaysHowTheProductionIsFollowed) {
    const std::pair<WatchStatus, const char*> texts[] = {
        {{.mPolledFolders = 3, .mPollInterval = 2}, "shared volume, polled every 2 s"},
        {{.mWatchedFolders = 8, .mPolledFolders = 1, .mLimitReached = true, .mPollInterval = 1.5},
         "polled every 1.5 s: the system's limit of watched folders is reached"},
        {{.mPolledFolders = 3, .mSystemError = ESTALE}, "not answering: Stale file handle"},
        {{.mPolledFolders = 3, .mSecondsWithoutAnswer = 7}, "not answering for 7 s"}};
    for (const auto& [status, text] : texts)
        EXPECT_EQ(ToUTF8(DescribeWatchStatus(QStringLiteral("North Shore"), status)),
                  std::string("North Shore — ") + text);
}

}  // namespace
}  // namespace desk
