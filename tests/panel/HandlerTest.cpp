#include <QMainWindow>

#include "desk/framework/DockWorkspace.h"
#include "desk/framework/Shortcuts.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

using HandlerTest = PanelFixture;

TEST_F(HandlerTest, KeysAreBoundToTheCommandsByTheirNames) {
    mFolder.Write("shortcuts.json", R"({"zuproduction": {"cmd.mediabrowser.newfolder": "Ctrl+Alt+A",
        "cmd.zuproductionfolder.zoomin": "Ctrl+Alt+B", "cmd.zuproductionfolder.movetotrash": "Ctrl+Alt+C"}})");
    desk::Shortcuts::Instance().Load(mFolder.Path());
    const auto key = [](int command) { return desk::Shortcuts::Instance().GetKey(command).toString(); };
    EXPECT_EQ(key(1296191078), QStringLiteral("Ctrl+Alt+A"));
    EXPECT_EQ(key(30323), QStringLiteral("Ctrl+Alt+B"));
    EXPECT_EQ(key(30325), QStringLiteral("Ctrl+Alt+C"));
    desk::Shortcuts::Instance().Load({});
}

TEST_F(HandlerTest, AProductionThatOpensBringsThePanelForward) {
    QMainWindow window;
    desk::DockWorkspace workspace(window);
    window.show();
    const UTF16String id = kZuProductionFolderHandlerID;
    ASSERT_TRUE(desk::PanelRegistry::Instance().FindOrCreateHandler(id));
    MakeProject("Reel 1");
    desk::Production::Instance().Open(mFolder.PathUTF16(kProduction));
    mMain.Advance(std::chrono::milliseconds(100));
    ASSERT_TRUE(workspace.FindFrame(id));
    EXPECT_EQ(window.findChildren<QTreeView*>().size(), 2);
    EXPECT_TRUE(WorkspaceUtils::TabIsShown(&workspace, UTF16to8(id), true));

    // Opened again while it is there, it is brought forward; there is no second one.
    desk::Production::Instance().Open(mFolder.PathUTF16("South Shore"));
    mMain.Advance(std::chrono::milliseconds(100));
    EXPECT_EQ(window.findChildren<QTreeView*>().size(), 2);

    // So it is when the last project has been closed, and only then.
    const auto first = OpenProject("Reel 1");
    const auto second = OpenProject("Reel 2");
    workspace.FindFrame(id)->hide();
    desk::OpenProjectList::Instance().Remove(first);
    EXPECT_FALSE(workspace.FindFrame(id)->isVisible());
    desk::OpenProjectList::Instance().Remove(second);
    EXPECT_TRUE(workspace.FindFrame(id)->isVisible());
    const auto third = OpenProject("Reel 3");
    desk::Production::Instance().Close();
    workspace.FindFrame(id)->hide();
    desk::OpenProjectList::Instance().Remove(third);
    EXPECT_FALSE(workspace.FindFrame(id)->isVisible()) << "there is no production to go on with";
}

}  // namespace HandlerSharedProjects
