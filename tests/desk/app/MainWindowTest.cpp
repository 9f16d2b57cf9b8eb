#include <QTest>

#include "desk/app/KeyChoice.h"
#include "desk/app/MainWindow.h"
#include "desk/app/ProgramCommands.h"
#include "desk/app/RecentProductions.h"
#include "desk/app/Screenshot.h"
#include "desk/core/settings/Profile.h"
#include "desk/framework/MenuResources.h"
#include "desk/project/production/CopyQueue.h"
#include "desk/project/production/Production.h"
#include "desk/toolkit/KeyTable.h"
#include "host/project/ProductionItems.h"
#include "host/toolkit/UI_KeyboardEvent.h"
#include "tests/desk/files/FollowedFolder.h"

namespace desk {
namespace {

struct MainWindowTest : FollowedFolder {
    MainWindowTest() {
        MenuResources::Instance().Load(mFolder.Path());
        UseFakeSource();
    }

    Profile mProfile{mFolder.Path("profile")};
    RecentProductions mRecent{mProfile.PathOf(RecentProductions::kFileName)};
};

TEST_F(MainWindowTest, IsClosedOnceWhileAQuestionStands) {
    mFolder.Write("A.zuproj");
    Production::Instance().Open(mFolder.PathUTF16());
    CopyQueue queue;
    MainWindow window(mProfile, &mRecent, {});
    mDisk.CloseGate(Operation::CopyFile, mFolder.Path());
    host::AddProjectToZuProduction(Path("A.zuproj"), Path("B.zuproj"));
    ASSERT_TRUE(mDisk.WaitAtGate());
    mDialogs.mMeanwhile = [&, isFirst = true]() mutable {
        if (!std::exchange(isFirst, false)) return;
        QCloseEvent again;
        QCoreApplication::sendEvent(&window, &again);
        EXPECT_FALSE(again.isAccepted());
    };
    mDialogs.ExpectQuestion("Projects Are Being Copied", u"Keep Copying");
    EXPECT_FALSE(window.close());
    mDisk.OpenGate();
    mMain.RunUntilIdle();
    Production::Instance().Close();
}

TEST_F(MainWindowTest, EscapeLeavesTheMenuBarToo) {
    MainWindow window(mProfile, &mRecent, {});
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QMenuBar& bar = *window.menuBar();
    const QPoint title = bar.actionGeometry(bar.actions().at(1)).center();
    QTest::mouseClick(&bar, Qt::LeftButton, {}, title);
    ASSERT_TRUE(QApplication::activePopupWidget());
    QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    QCoreApplication::processEvents();
    EXPECT_FALSE(QApplication::activePopupWidget());
    EXPECT_EQ(bar.activeAction(), nullptr);
    QTest::mouseMove(&bar, bar.actionGeometry(bar.actions().at(2)).center());
    EXPECT_FALSE(QApplication::activePopupWidget()) << "it would close at the click that is to open it";
}

TEST_F(MainWindowTest, WhatReturnDoesIsTheUsersChoiceAndRemembered) {
    const KeyTable& keys = KeyTable::Instance();
    for (const auto& [command, code] : {std::pair(kCommandReturnOpens, 0), {kCommandReturnRenames, 4}}) {
        const auto window = std::make_unique<MainWindow>(mProfile, &mRecent, QSize());
        window->findChild<QAction*>(QStringLiteral("command-%1").arg(command))->trigger();
        EXPECT_EQ(keys.FindCode(Qt::Key_Return).value_or(0), code);
        KeyTable::Instance().Choose(code ? KeyTable::kReturnOpens : KeyTable::kReturnRenames);
        const KeyChoice again(mProfile);
        EXPECT_EQ(keys.FindCode(Qt::Key_Return).value_or(0), code);
        EXPECT_EQ(keys.FindCode(Qt::Key_Escape), host::kKey_Escape);
    }
}

TEST_F(MainWindowTest, ALayoutThatCouldNotBeReadIsNotOverwritten) {
    mFolder.Write("profile/Window Layout.json", "{}");
    ExpectLogged log("Window Layout.json");
    mDisk.Deny(mProfile.PathOf(MainWindow::kLayoutFileName), EIO);
    const MainWindow window(mProfile, &mRecent, {});
    mDisk.Allow(mProfile.PathOf(MainWindow::kLayoutFileName));
    window.SaveLayout();
    EXPECT_EQ(mFolder.Read("profile/Window Layout.json"), "{}");
}

TEST_F(MainWindowTest, APictureWaitsForTheWorkersAndForWhatIsExpected) {
    QWidget window;
    std::optional<std::string> problem;
    std::promise<void> end;
    bool isIdle = true;
    mPool.Submit([&] { end.get_future().wait(); });
    const Screenshot picture(
        window, mFolder.Path("picture.png"), [] { return false; }, [&] { return isIdle; },
        [&](const std::string& error) { problem = error; });
    EXPECT_FALSE(QTest::qWaitFor([&] { return problem.has_value(); }, 200));
    isIdle = false;
    end.set_value();
    EXPECT_FALSE(QTest::qWaitFor([&] { return problem.has_value(); }, 200));
    isIdle = true;
    EXPECT_TRUE(QTest::qWaitFor([&] { return problem.has_value(); }));
    EXPECT_EQ(problem, "");
    EXPECT_TRUE(mFolder.Exists("picture.png"));
}

}  // namespace
}  // namespace desk
