#include <gtest/gtest.h>

#include <QMainWindow>
#include <QMenu>

#include "desk/app/ProductionCommands.h"
#include "desk/app/ProgramCommands.h"
#include "desk/app/RecentProductions.h"
#include "desk/app/StatusLine.h"
#include "desk/core/QtStrings.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/WatchStatus.h"
#include "desk/framework/CommandRouter.h"
#include "desk/project/Production.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/ManualMainThread.h"
#include "tests/support/RecordingDesktop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/TemporaryFolder.h"

namespace desk {
namespace {

using Operation = FaultyFileSystem::Operation;
using Folders = std::vector<std::string>;

struct ProductionCommandsTest : testing::Test {
    ProductionCommandsTest() {
        Production::Instance().Close();
        mFolders.MakeFolder("Harbour");
        mFolders.MakeFolder("North Shore");
    }
    ~ProductionCommandsTest() override {
        mMainThread.RunUntilIdle();
        Production::Instance().Close();
        GetServices().mWorkerPool = nullptr;
    }

    std::string OpenFolder() const { return host::UTF16to8(Production::Instance().GetFolder()); }
    void Choose(int command) {
        CommandRouter::Instance().Send(command);
        mMainThread.RunUntilIdle();
    }
    /// With `problem`, the title of the message that is to come.
    void Open(const std::string& folder, const char* problem = nullptr) {
        mDialogs.ExpectFolder("Open Production", host::UTF8to16(folder));
        if (problem) mDialogs.ExpectMessage(problem);
        Choose(kCommandOpenProduction);
    }

    TemporaryFolder mFolders;
    TemporaryFolder mProfile;
    ManualMainThread mMainThread;
    FaultyFileSystem mDisk;
    ScriptedDialogs mDialogs;
    RecordingDesktop mDesktop;
    WorkerPool mPool{2};
    WorkerPool* const mSetPool = GetServices().mWorkerPool = &mPool;
    QMainWindow mWindow;
    StatusLine mStatusLine{mWindow};
    RecentProductions mRecent{mProfile.Path(RecentProductions::kFileName)};
    ProductionCommands mCommands{mStatusLine, &mRecent};
};

TEST_F(ProductionCommandsTest, NewMakesTheFolderWithItsTrashAndOpensIt) {
    const std::string folder = mFolders.Path("South Shore");
    mDialogs.ExpectNewFolder("New Production", host::UTF8to16(folder));
    Choose(kCommandNewProduction);
    EXPECT_EQ(OpenFolder(), folder);
    EXPECT_TRUE(mFolders.Exists("South Shore/Trash"));
    EXPECT_EQ(mRecent.Get(), Folders{folder});
}

TEST_F(ProductionCommandsTest, NewThatFailsLeavesNothingAndTheOpenProductionStays) {
    Open(mFolders.Path("Harbour"));
    for (const int step : {1, 2}) {
        mDisk.Fail(Operation::CreateFolder, step, ENOSPC);
        mDialogs.ExpectNewFolder("New Production", mFolders.PathUTF16("South Shore"));
        mDialogs.ExpectMessage("The Production Was Not Made");
        Choose(kCommandNewProduction);
        EXPECT_NE(mDialogs.LastText().find("South Shore"), std::string::npos) << mDialogs.LastText();
        EXPECT_NE(mDialogs.LastText().find("No space left"), std::string::npos) << mDialogs.LastText();
        EXPECT_FALSE(mFolders.Exists("South Shore"));
        EXPECT_EQ(OpenFolder(), mFolders.Path("Harbour"));
    }
}

TEST_F(ProductionCommandsTest, AFolderThatCannotBeReadKeepsTheOpenProduction) {
    Open(mFolders.Path("Harbour"));
    mDisk.Deny(mFolders.Path("North Shore"));
    mFolders.Write("file");
    const struct {
        const char* mName;
        const char* mReason;
    } cases[] = {{"North Shore", "Permission denied"}, {"Nowhere", "does not exist"}, {"file", "not a folder"}};
    for (const auto& c : cases) {
        Open(mFolders.Path(c.mName), "The Production Was Not Opened");
        EXPECT_NE(mDialogs.LastText().find(c.mName), std::string::npos) << mDialogs.LastText();
        EXPECT_NE(mDialogs.LastText().find(c.mReason), std::string::npos) << mDialogs.LastText();
        EXPECT_EQ(OpenFolder(), mFolders.Path("Harbour"));
    }
    EXPECT_EQ(mRecent.Get(), Folders{mFolders.Path("Harbour")});
}

TEST_F(ProductionCommandsTest, AVolumeThatHangsHoldsNobodyUpAndComesTooLate) {
    mDisk.CloseGate(Operation::Status, mFolders.Path("Harbour"));
    mCommands.OpenAtStart(mFolders.Path("Harbour"), {});
    ASSERT_TRUE(mDisk.WaitAtGate());
    WorkerPool otherPool(1);  // Its work comes to rest while the first one's does not.
    GetServices().mWorkerPool = &otherPool;
    mCommands.OpenAtStart(mFolders.Path("North Shore"), {});
    mMainThread.RunUntilIdle();
    EXPECT_EQ(OpenFolder(), mFolders.Path("North Shore"));
    GetServices().mWorkerPool = &mPool;
    mDisk.OpenGate();
    mMainThread.RunUntilIdle();
    EXPECT_EQ(OpenFolder(), mFolders.Path("North Shore"));
}

TEST_F(ProductionCommandsTest, RecentOnesAreOfferedUntilTheyAreGone) {
    Open(mFolders.Path("North Shore"));
    Open(mFolders.Path("Harbour"));
    Choose(kCommandCloseProduction);
    EXPECT_FALSE(Production::Instance().IsOpen());
    EXPECT_EQ(mRecent.GetFolderToOpen(), "");
    EXPECT_FALSE(CommandRouter::Instance().FindStatus(kCommandCloseProduction).mIsEnabled);

    QMenu menu;
    mCommands.FillRecentMenu(menu);
    ASSERT_EQ(menu.actions().size(), 2);
    EXPECT_TRUE(menu.actions()[1]->text().startsWith(QStringLiteral("North Shore")));
    menu.actions()[1]->trigger();
    mMainThread.RunUntilIdle();
    EXPECT_EQ(OpenFolder(), mFolders.Path("North Shore"));

    mFolders.Remove("Harbour");
    mCommands.FillRecentMenu(menu);
    mDialogs.ExpectMessage("The Production Was Not Opened");
    menu.actions()[1]->trigger();
    mMainThread.RunUntilIdle();
    EXPECT_EQ(mRecent.Get(), Folders{mFolders.Path("North Shore")});
}

TEST(WatchStatusText, SaysHowTheProductionIsFollowed) {
    const auto text = [](const WatchStatus& status) {
        return ToUTF8(DescribeWatchStatus(QStringLiteral("North Shore"), status));
    };
    EXPECT_EQ(text({.mWatchedFolders = 3}), "North Shore — watched for changes");
    EXPECT_EQ(text({.mPolledFolders = 3, .mPollInterval = 2}), "North Shore — shared volume, polled every 2 s");
    EXPECT_EQ(text({.mWatchedFolders = 8, .mPolledFolders = 1, .mLimitReached = true, .mPollInterval = 1.5}),
              "North Shore — polled every 1.5 s: the system's limit of watched folders is reached");
    EXPECT_EQ(text({.mPolledFolders = 3, .mSystemError = ESTALE}),
              "North Shore — not answering: Stale file handle");
    EXPECT_EQ(text({.mPolledFolders = 3, .mSecondsWithoutAnswer = 7}), "North Shore — not answering for 7 s");
}

}  // namespace
}  // namespace desk
