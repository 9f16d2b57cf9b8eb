#include <QMainWindow>

#include "desk/framework/DockWorkspace.h"
#include "desk/framework/Shortcuts.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

using HandlerTest = PanelFixture;

TEST_F(HandlerTest, KeysAreBoundToTheCommandsByTheirNames) {
    const std::vector<std::pair<std::string, int>> commands = {
        {"cmd.mediabrowser.newfolder", 1296191078},
        {"cmd.zuproductionfolder.newproject", 30303},
        {"cmd.zuproductionfolder.addproject", 30304},
        {"cmd.zuproductionfolder.refreshproject", 30307},
        {"cmd.zuproductionfolder.renameitem", 30308},
        {"cmd.zuproductionfolder.togglelock", 30311},
        {"cmd.zuproductionfolder.revealrootinsystem", 30309},
        {"cmd.zuproductionfolder.revealiteminsystem", 30310},
        {"cmd.zuproductionfolder.toggle.showpath", 30312},
        {"cmd.zuproductionfolder.trash.empty", 30317},
        {"cmd.zuproductionfolder.renameproduction", 30318},
        {"cmd.zuproductionfolder.refreshallprojects", 30320},
        {"cmd.zuproductionfolder.saveallprojects", 30321},
        {"cmd.zuproductionfolder.closeallprojects", 30322},
        {"cmd.zuproductionfolder.move.pagedown", 30315},
        {"cmd.zuproductionfolder.move.pageup", 30316},
        {"cmd.zuproductionfolder.move.end", 30314},
        {"cmd.zuproductionfolder.move.home", 30313},
        {"cmd.zuproductionfolder.zoomin", 30323},
        {"cmd.zuproductionfolder.zoomout", 30324},
        {"cmd.zuproductionfolder.openproject", 30305},
        {"cmd.zuproductionfolder.closeproject", 30306},
        {"cmd.zuproductionfolder.makeacopy", 30319},
        {"cmd.zuproductionfolder.movetotrash", 30325},
    };
    std::string bindings;
    for (std::size_t i = 0; i < commands.size(); ++i)
        bindings += (i ? ",\"" : "\"") + commands[i].first + "\":\"Ctrl+Alt+Shift+" + char('A' + i) + '"';
    mFolder.Write("shortcuts.json", "{\"zuproduction\":{" + bindings + "}}");
    desk::Shortcuts::Instance().Load(mFolder.Path());
    for (std::size_t i = 0; i < commands.size(); ++i)
        EXPECT_EQ(desk::Shortcuts::Instance().GetKey(commands[i].second).toString().toStdString(),
                  std::string("Ctrl+Alt+Shift+") + char('A' + i))
            << commands[i].first;
    desk::Shortcuts::Instance().Load({});
}

TEST_F(HandlerTest, TheRootIsTheFolderOfTheOpenProduction) {
    EXPECT_EQ(SharedProjectsHandler::GetRootDirectory(), u"");
    EXPECT_EQ(SharedProjectsHandler::GetHandler(), nullptr);
    OpenProduction();
    EXPECT_EQ(SharedProjectsHandler::GetRootDirectory(), mFolder.PathUTF16(kProduction));
    EXPECT_EQ(SharedProjectsHandler::GetHandler(), mHandler);
    EXPECT_STREQ(mHandler->GetContextName(), "zuproduction");
    EXPECT_TRUE(mHandler->ShouldDestroyWhenClosed());
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
}

}  // namespace HandlerSharedProjects
