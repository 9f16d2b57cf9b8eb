#include <gtest/gtest.h>

#include <QTest>
#include <QtWidgets>

#include "desk/framework/CommandRouter.h"
#include "desk/framework/DockWorkspace.h"
#include "desk/framework/PanelRegistry.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/framework/TabViews.h"
#include "host/framework/CommandIdentifiers.h"
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
        (new QLineEdit(mView->GetImpl().mWidget))->show();
        return mView.get();
    }
    bool ShouldDestroyWhenClosed() const override { return true; }
    bool AllowClose() override { return sAllowClose; }

    inline static int sLive = 0;
    inline static bool sAllowClose = true;

private:
    std::unique_ptr<host::TabView> mView;
};

const UTF16String kOne = u"test.dock.one", kTwo = u"test.dock.two", kAside = u"test.dock.aside";

struct DockWorkspaceTest : testing::Test {
    static void SetUpTestSuite() {
        using Handler = host::Handler;
        Handler::RegisterFactory(kOne, [](const UTF16String&) -> Handler* { return new TestPanel(kOne); });
        Handler::RegisterFactory(kTwo, [](const UTF16String&) -> Handler* { return new TestPanel(kTwo); });
        Handler::RegisterFactory(kAside, [](const UTF16String&) -> Handler* { return new TestPanel(kAside); });
        PanelRegistry::Instance().SetOnDemand(kAside);
    }
    DockWorkspaceTest() {
        TestPanel::sAllowClose = true;
        Open(mWindow, mWorkspace, {});
    }

    void Open(QMainWindow& window, DockWorkspace& workspace, const QJsonObject& layout) {
        window.setCentralWidget(new QLabel);
        window.resize(1000, 600);
        workspace.OpenPanels(layout);
        window.show();
        mMainThread.RunUntilIdle();
    }
    void ActivateWindow() {
        mWindow.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&mWindow));
    }
    static bool IsShown(const UTF16String& id, bool frontmost = false) {
        return host::WorkspaceUtils::TabIsShown(host::Workspace::Instance().GetPtr(), host::UTF16to8(id),
                                                frontmost);
    }

    static UTF16String OnDuty() { return CommandRouter::Instance().GetHandlerOnDuty()->GetHandlerID(); }
    bool HasKeyboard(const UTF16String& id) const { return mWorkspace.FindFrame(id)->HasKeyboard(); }

    ManualMainThread mMainThread;
    QMainWindow mWindow;
    DockWorkspace mWorkspace{mWindow};
};

TEST_F(DockWorkspaceTest, OpensEveryPanelTabbedAndGoesFromOneToTheNext) {
    EXPECT_EQ(mWindow.tabifiedDockWidgets(mWorkspace.FindFrame(kOne)).size(), 1);
    EXPECT_EQ(mWindow.dockWidgetArea(mWorkspace.FindFrame(kOne)), Qt::LeftDockWidgetArea);
    mWorkspace.OpenTab(host::UTF16to8(kTwo));
    mMainThread.RunUntilIdle();
    EXPECT_TRUE(IsShown(kTwo, true) && IsShown(kOne) && !IsShown(kOne, true));
    EXPECT_EQ(mWorkspace.FindFrame(kTwo)->windowTitle(), QStringLiteral("test.dock.two && more"));
    ExpectLogged log("no.such.panel");
    mWorkspace.OpenTab("no.such.panel");

    mWorkspace.FindFrame(kOne)->TakeFocus();
    EXPECT_EQ(OnDuty(), kOne);
    CommandRouter& router = CommandRouter::Instance();
    EXPECT_TRUE(router.FindStatus(host::CommandID::kNextPanel).mIsEnabled &&
                router.Send(host::CommandID::kNextPanel));
    EXPECT_EQ(OnDuty(), kTwo);
    EXPECT_TRUE(router.Send(host::CommandID::kNextPanel));
    EXPECT_EQ(OnDuty(), kOne);
    mWorkspace.ClosePanel(kTwo);
    EXPECT_FALSE(router.FindStatus(host::CommandID::kPreviousPanel).mIsEnabled ||
                 router.Send(host::CommandID::kPreviousPanel));
}

TEST_F(DockWorkspaceTest, APanelOnDemandLeavesTheDutyWhereItIsAndTakesTheKeyboardOnlyFromTheUser) {
    ActivateWindow();
    mWorkspace.FindFrame(kOne)->TakeFocus();
    mWorkspace.CreateOrReanimateTabView(kAside, {})->BringToFront(true, false);
    EXPECT_TRUE(IsShown(kAside) && HasKeyboard(kOne));
    EXPECT_EQ(OnDuty(), kOne);
    QTest::mouseClick(mWorkspace.FindFrame(kAside)->findChild<QLineEdit*>(), Qt::LeftButton);
    EXPECT_TRUE(HasKeyboard(kAside));
    EXPECT_EQ(OnDuty(), kOne);
    CommandRouter::Instance().Send(host::CommandID::kNextPanel);
    EXPECT_TRUE(HasKeyboard(kOne)) << "on from where the keyboard is";
    CommandRouter::Instance().Send(host::CommandID::kPreviousPanel);
    EXPECT_TRUE(HasKeyboard(kAside));

    mWorkspace.OpenTab(host::UTF16to8(kAside));
    const QJsonObject layout = mWorkspace.SaveLayout();
    mWorkspace.DestroyPanels();
    QMainWindow window;
    DockWorkspace workspace(window);
    Open(window, workspace, layout);
    EXPECT_TRUE(IsShown(kAside));
    EXPECT_NE(OnDuty(), kAside);
    EXPECT_EQ(TabViews::Instance().FindOpen()->mHandlerID, kOne) << "who serves while none is on duty";
}

TEST_F(DockWorkspaceTest, ClosesAsTheHandlerWishesAndComesBackWhereItWas) {
    DockWorkspaceFrame* frame = mWorkspace.FindFrame(kOne);
    mWindow.addDockWidget(Qt::BottomDockWidgetArea, frame);
    for (const bool allowsClose : {false, true}) {
        TestPanel::sAllowClose = allowsClose;
        frame->close();
        mMainThread.RunUntilIdle();
        EXPECT_NE(IsShown(kOne), allowsClose);
    }
    EXPECT_EQ(host::Handler::FindHandler(kOne), nullptr);
    EXPECT_EQ(TestPanel::sLive, 1);
    mWorkspace.TogglePanel(kOne);
    mMainThread.RunUntilIdle();
    EXPECT_TRUE(IsShown(kOne, true));
    EXPECT_EQ(mWindow.dockWidgetArea(mWorkspace.FindFrame(kOne)), Qt::BottomDockWidgetArea);

    QMenu menu;
    mWorkspace.FindFrame(kOne)->FillMenu(menu);
    ASSERT_EQ(menu.actions().size(), 2);
    menu.actions()[0]->trigger();
    EXPECT_TRUE(mWorkspace.FindFrame(kOne)->isFloating());
    menu.actions()[1]->trigger();
    mMainThread.RunUntilIdle();
    EXPECT_FALSE(IsShown(kOne));
}

TEST_F(DockWorkspaceTest, AFloatingPanelComesAfterItsWindowOnAScreenAndIsBroughtForwardBeforeItIsClosed) {
    DockWorkspaceFrame& frame = *mWorkspace.FindFrame(kOne);
    host::TabView& view = *frame.GetView();
    EXPECT_TRUE(view.IsDockedInMainWindow());
    EXPECT_EQ(view.GetFloatingWindowGlobalRect(), host::Rect());
    view.SetPlace(false, {40, 60, 400, 300});
    EXPECT_FALSE(view.IsDockedInMainWindow());
    EXPECT_EQ(view.GetFloatingWindowGlobalRect(), (host::Rect{40, 60, 400, 300}));
    mWindow.move(0, 0);
    QWidget other;
    other.setGeometry(40, 60, 100, 100);
    other.show();
    ActivateWindow();
    mWorkspace.TogglePanel(kOne);
    EXPECT_TRUE(IsShown(kOne)) << "it may have been covered";
    other.hide();
    ActivateWindow();
    mWorkspace.TogglePanel(kOne);
    EXPECT_FALSE(IsShown(kOne)) << "its own window stands behind it";

    mWorkspace.TogglePanel(kOne);
    frame.setGeometry(5000, 5000, 400, 300);
    const QJsonObject layout = mWorkspace.SaveLayout();
    mWorkspace.DestroyPanels();
    QMainWindow window;
    DockWorkspace workspace(window);
    workspace.OpenPanels(layout);
    const DockWorkspaceFrame& restored = *workspace.FindFrame(kOne);
    EXPECT_TRUE(IsShown(kOne, true) && !restored.isVisible());
    window.show();
    mMainThread.RunUntilIdle();
    EXPECT_TRUE(restored.isVisible() && restored.isFloating());
    EXPECT_TRUE(restored.screen()->geometry().contains(restored.frameGeometry()));
    restored.GetView()->SetPlace(true, {});
    EXPECT_TRUE(restored.GetView()->IsDockedInMainWindow());
}

TEST_F(DockWorkspaceTest, LayoutSurvivesARestartWithClosedPanelsAndABrokenOneGivesTheDefault) {
    mWindow.addDockWidget(Qt::RightDockWidgetArea, mWorkspace.FindFrame(kOne));
    mWindow.resizeDocks({mWorkspace.FindFrame(kOne)}, {333}, Qt::Horizontal);
    mMainThread.RunUntilIdle();
    const int width = mWorkspace.FindFrame(kOne)->width();
    EXPECT_TRUE(mWorkspace.ClosePanel(kTwo));
    const QJsonObject layout = mWorkspace.SaveLayout();
    mWorkspace.DestroyPanels();
    {
        QMainWindow window;
        DockWorkspace workspace(window);
        Open(window, workspace, layout);
        EXPECT_EQ(window.dockWidgetArea(workspace.FindFrame(kOne)), Qt::RightDockWidgetArea);
        EXPECT_EQ(workspace.FindFrame(kOne)->width(), width);
        EXPECT_EQ(workspace.FindFrame(kTwo), nullptr);
        EXPECT_EQ(std::ranges::count(PanelRegistry::Instance().GetWindowEntries(), kTwo,
                                     &PanelRegistry::WindowEntry::mHandlerID),
                  1)
            << "a closed panel must be there to be brought back";
    }
    const ExpectLogged log("arrangement of panels");
    QMainWindow window;
    DockWorkspace workspace(window);
    Open(window, workspace,
         {{QStringLiteral("docks"), QStringLiteral("bm9uc2Vuc2U=")}, {QStringLiteral("closedPanels"), 7}});
    EXPECT_TRUE(IsShown(kOne) && IsShown(kTwo));
    EXPECT_EQ(window.tabifiedDockWidgets(workspace.FindFrame(kOne)).size(), 1);
}

}  // namespace
}  // namespace desk
