#include <gtest/gtest.h>

#include <QLabel>
#include <QMainWindow>
#include <QMenu>

#include "desk/core/QtStrings.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/DockWorkspace.h"
#include "desk/framework/PanelNavigation.h"
#include "desk/framework/PanelRegistry.h"
#include "host/framework/Handler.h"
#include "host/framework/TabView.h"
#include "host/framework/WindowRegistry.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"

namespace desk {
namespace {

using host::UTF16String;

/// A panel that does as the test says.
class TestPanel : public host::Handler {
public:
    explicit TestPanel(const UTF16String& id) : Handler({}, id) {
        ++sLive;
        host::AddWindowClass(id, id, true);
        host::AddWindow(id, u"window", id, u"context");
    }
    ~TestPanel() override {
        --sLive;
        host::RemoveWindowClass(GetHandlerID());
    }
    host::TabView* CreateTabViewSelf(host::WorkspaceFrame* frame) override {
        mView = std::make_unique<host::TabView>(nullptr);
        host::TabView::Create(mView.get(), GetHandlerID(), GetHandlerID() + u" & more", frame, true);
        return mView.get();
    }
    bool ShouldDestroyWhenClosed() const override { return true; }
    bool AllowClose() override { return sAllowClose; }

    inline static int sLive = 0;
    inline static bool sAllowClose = true;

private:
    std::unique_ptr<host::TabView> mView;
};

const UTF16String kOne = u"test.dock.one", kTwo = u"test.dock.two";

struct DockWorkspaceTest : testing::Test {
    static void SetUpTestSuite() {
        host::Handler::RegisterFactory(
            kOne, [](const UTF16String&) -> host::Handler* { return new TestPanel(kOne); });
        host::Handler::RegisterFactory(
            kTwo, [](const UTF16String&) -> host::Handler* { return new TestPanel(kTwo); });
    }
    DockWorkspaceTest() {
        TestPanel::sAllowClose = true;
        mWindow.setCentralWidget(new QLabel);
        mWindow.resize(1000, 600);
    }

    void Show() {
        mWindow.show();
        mMainThread.RunUntilIdle();
    }
    static bool IsShown(const UTF16String& id, bool frontmost) {
        return host::WorkspaceUtils::TabIsShown(host::Workspace::Instance().GetPtr(), host::UTF16to8(id),
                                                frontmost);
    }

    ManualMainThread mMainThread;
    QMainWindow mWindow;
    DockWorkspace mWorkspace{mWindow};
};

TEST_F(DockWorkspaceTest, OpensEveryPanelTabbedAndKnowsTheFrontOne) {
    mWorkspace.OpenPanels({});
    Show();
    EXPECT_EQ(mWindow.tabifiedDockWidgets(mWorkspace.FindFrame(kOne)).size(), 1);
    EXPECT_TRUE(IsShown(kOne, false) && IsShown(kTwo, false));
    EXPECT_NE(IsShown(kOne, true), IsShown(kTwo, true));
    mWorkspace.OpenTab(host::UTF16to8(kTwo));
    mMainThread.RunUntilIdle();
    EXPECT_TRUE(IsShown(kTwo, true) && !IsShown(kOne, true));
    EXPECT_EQ(mWorkspace.FindFrame(kTwo)->windowTitle(), QStringLiteral("test.dock.two && more"));
}

TEST_F(DockWorkspaceTest, ClosesAsTheHandlerWishesAndComesBackWhereItWas) {
    mWorkspace.OpenPanels({});
    Show();
    DockWorkspaceFrame* frame = mWorkspace.FindFrame(kOne);
    mWindow.addDockWidget(Qt::BottomDockWidgetArea, frame);
    TestPanel::sAllowClose = false;
    frame->close();
    mMainThread.RunUntilIdle();
    EXPECT_TRUE(IsShown(kOne, false));

    TestPanel::sAllowClose = true;
    frame->close();
    mMainThread.RunUntilIdle();
    EXPECT_FALSE(IsShown(kOne, false));
    EXPECT_EQ(host::Handler::FindHandler(kOne), nullptr);
    EXPECT_EQ(TestPanel::sLive, 1);

    mWorkspace.TogglePanel(kOne);
    mMainThread.RunUntilIdle();
    EXPECT_TRUE(IsShown(kOne, true));
    EXPECT_EQ(mWindow.dockWidgetArea(mWorkspace.FindFrame(kOne)), Qt::BottomDockWidgetArea);
    mWorkspace.TogglePanel(kOne);
    EXPECT_FALSE(IsShown(kOne, false));
}

TEST_F(DockWorkspaceTest, LayoutSurvivesARestartWithClosedPanels) {
    mWorkspace.OpenPanels({});
    Show();
    mWindow.addDockWidget(Qt::RightDockWidgetArea, mWorkspace.FindFrame(kOne));
    mWindow.resizeDocks({mWorkspace.FindFrame(kOne)}, {333}, Qt::Horizontal);
    mMainThread.RunUntilIdle();
    const int width = mWorkspace.FindFrame(kOne)->width();
    EXPECT_TRUE(mWorkspace.ClosePanel(kTwo));
    const QJsonObject layout = mWorkspace.SaveLayout();
    mWorkspace.DestroyPanels();

    QMainWindow window;
    window.setCentralWidget(new QLabel);
    window.resize(1000, 600);
    DockWorkspace workspace(window);
    workspace.OpenPanels(layout);
    window.show();
    mMainThread.RunUntilIdle();
    EXPECT_EQ(window.dockWidgetArea(workspace.FindFrame(kOne)), Qt::RightDockWidgetArea);
    EXPECT_EQ(workspace.FindFrame(kOne)->width(), width);
    EXPECT_EQ(workspace.FindFrame(kTwo), nullptr);
    const auto& entries = PanelRegistry::Instance().GetWindowEntries();
    EXPECT_TRUE(std::any_of(entries.begin(), entries.end(), [](auto& entry) {
        return entry.mHandlerID == kTwo;
    })) << "a closed panel must be there to be brought back";
}

TEST_F(DockWorkspaceTest, ABrokenLayoutGivesTheDefaultOne) {
    ExpectLogged log("arrangement of panels");
    mWorkspace.OpenPanels(
        {{QStringLiteral("docks"), QStringLiteral("bm9uc2Vuc2U=")}, {QStringLiteral("closedPanels"), 7}});
    Show();
    EXPECT_TRUE(IsShown(kOne, false) && IsShown(kTwo, false));
    EXPECT_EQ(mWindow.dockWidgetArea(mWorkspace.FindFrame(kOne)), Qt::LeftDockWidgetArea);
}

TEST_F(DockWorkspaceTest, GoesFromPanelToPanel) {
    mWorkspace.OpenPanels({});
    Show();
    mWorkspace.FindFrame(kOne)->TakeFocus();
    const auto onDuty = [] { return CommandRouter::Instance().GetHandlerOnDuty()->GetHandlerID(); };
    EXPECT_EQ(onDuty(), kOne);
    EXPECT_TRUE(PanelNavigation::Instance().Select(true));
    EXPECT_EQ(onDuty(), kTwo);
    EXPECT_TRUE(PanelNavigation::Instance().Select(true));
    EXPECT_EQ(onDuty(), kOne);
    mWorkspace.ClosePanel(kTwo);
    EXPECT_FALSE(PanelNavigation::Instance().CanSelect());
    EXPECT_FALSE(PanelNavigation::Instance().Select(false));
}

TEST_F(DockWorkspaceTest, MenuFloatsAndClosesThePanel) {
    mWorkspace.OpenPanels({});
    Show();
    DockWorkspaceFrame* frame = mWorkspace.FindFrame(kTwo);
    QMenu menu;
    frame->FillMenu(menu);
    ASSERT_EQ(menu.actions().size(), 2);
    menu.actions()[0]->trigger();
    EXPECT_TRUE(frame->isFloating());
    menu.actions()[1]->trigger();
    mMainThread.RunUntilIdle();
    EXPECT_FALSE(IsShown(kTwo, false));
}

TEST_F(DockWorkspaceTest, AnUnknownPanelIsLogged) {
    ExpectLogged log("no.such.panel");
    mWorkspace.OpenTab("no.such.panel");
    EXPECT_EQ(TestPanel::sLive, 0);
}

}  // namespace
}  // namespace desk
