#include <QMenu>
#include <QTest>

#include "desk/framework/MenuResources.h"
#include "desk/toolkit/Theme.h"
#include "host/framework/MenuUtils.h"
#include "tests/desk/framework/FrameworkFixture.h"

namespace {

constexpr char kWingMenu[] = "HandlerSharedProjects_Wing_Menu";

class MenuResourcesTest : public FrameworkFixture {
protected:
    ~MenuResourcesTest() override { mMenus.Load("/nowhere"); }

    /// A line for each entry: "Text", "(Text)" for a disabled one, "x Text" for a marked one, "-"; those of
    /// sub-menus are indented.
    static Events Shown(QMenu& menu, const std::string& indent = {}) {
        Q_EMIT menu.aboutToShow();
        Events lines;
        for (QAction* action : menu.actions()) {
            std::string text =
                action->isSeparator() ? "-" : action->text().section(QLatin1Char('\t'), 0, 0).toStdString();
            if (!action->isSeparator() && !action->isEnabled()) text = "(" + text + ")";
            lines.push_back(indent + (action->isChecked() ? "x " : "") + text);
            if (action->menu())
                for (const std::string& line : Shown(*action->menu(), indent + "  ")) lines.push_back(line);
        }
        return lines;
    }

    desk::MenuResources& mMenus = desk::MenuResources::Instance();
};

TEST_F(MenuResourcesTest, ThePanelsMenuFollowsTheStateAndSendsCommands) {
    mMenus.Load(mFolder.Path());
    QMenu menu;
    mMenus.Fill(menu, kWingMenu);
    EXPECT_EQ(Shown(menu),
              (Events{"(Find)", "-", "(Select All)", "(Deselect All)", "-", "(Zoom In)", "(Zoom Out)"}));
    mPanel->mCommands = {{57642, true}, {30323, true}, {30324, false}};
    OpenPanel();
    EXPECT_EQ(Shown(menu),
              (Events{"(Find)", "-", "Select All", "(Deselect All)", "-", "Zoom In", "(Zoom Out)"}));
    mEvents.clear();
    menu.findChild<QAction*>(QStringLiteral("command-30323"))->trigger();
    EXPECT_EQ(mEvents, (Events{"panel 30323"}));
}

TEST_F(MenuResourcesTest, AProfilesMenuGoesBeforeAndStateCanNameAndMarkAnEntry) {
    mFolder.Write("menus/own.json", R"({"HandlerSharedProjects_Wing_Menu": [
        {"command": 900010, "text": "Mode"}, {"menu": "More", "entries": [{"command": 900011, "text": "Unknown"}]}]})");
    mMenus.Load(mFolder.Path());
    desk::MainCommander::Instance().Register(
        900010,
        [] {
            return desk::CommandStatus{true, true, true, host::MenuMark::Check, u"Read & Write"};
        },
        [] { return true; });
    QMenu menu;
    mMenus.Fill(menu, kWingMenu);
    EXPECT_EQ(Shown(menu), (Events{"x Read && Write", "More", "  (Unknown)"}));
    desk::MainCommander::Instance().Register(900010, {}, {});
}

TEST_F(MenuResourcesTest, AContextMenuSaysWhyEntriesAreGreyAndGoesWithItsOwner) {
    // Its style decides what the keys reach, and whoever runs first may have applied it.
    desk::Theme::Apply(desk::ThemeKind::Dark);
    mMenus.Load(mFolder.Path());
    mPanel->mCommands = {{30305, false}, {30306, true}, {60019, false}};
    OpenPanel();
    const host::Menu menu = host::Menu::Load("HandlerSharedProjects_Context_Menu_Project");
    const auto open = [&] {
        host::MenuUtils::TrackContextMenu(menu, *mPanel->GetToolkitContainer(), {10, 20});
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    };
    QMenu* shown = open();
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->pos(), PanelWidget().mapToGlobal(QPoint(10, 20)));
    EXPECT_EQ(Shown(*shown)[1], "Close Project");
    EXPECT_FALSE(shown->findChild<QAction*>(QStringLiteral("command-60019"))->isVisible()) << "nobody holds it";
    const StatusTips tips(PanelWidget().window());
    Q_EMIT shown->hovered(shown->actions().last());
    EXPECT_EQ(tips.mTips.back(), QStringLiteral("This command cannot act on what is selected now."))
        << "nobody knows it";
    TakeEvents();
    QTest::keyClick(shown, Qt::Key_Down);
    EXPECT_EQ(tips.mTips.back(), QStringLiteral("not now")) << "the keys reach grey entries, too";
    QTest::keyClick(shown, Qt::Key_Down);
    EXPECT_EQ(tips.mTips.back(), QString());
    QTest::keyClick(shown, Qt::Key_Return);
    EXPECT_EQ(TakeEvents(), Events{"panel 30306"});
    ASSERT_TRUE(open());
    mPanel->Destroy();
    mMain.RunUntilIdle();
    EXPECT_FALSE(QApplication::activePopupWidget());
    const ExpectLogged log("There is no menu \"nowhere\"");
    EXPECT_FALSE(host::Menu::Load("nowhere").IsValid());
}

TEST_F(MenuResourcesTest, AFileThatIsNotUnderstoodIsNamedAndLeftOut) {
    const std::pair<const char*, const char*> files[] = {
        {"broken", "["},
        {"entry", R"({"A": [{"separator": true}, {"command": "11311", "text": "Find"}]})"},
        {"nested", R"({"A": [{"menu": "More", "entries": [{"text": "x"}]}]})"},
        {"right", R"({"C": [{"command": 1, "text": "One"}]})"}};
    for (const auto& [name, text] : files) mFolder.Write(std::string("menus/") + name + ".json", text);
    const ExpectLogged broken("broken.json is left out"), entry("entry.json is left out: menu \"A\": entry 2 "),
        nested("nested.json is left out: menu \"A\": entry 1 entry 1 needs");
    mMenus.Load(mFolder.Path());
    EXPECT_TRUE(!mMenus.HasMenu("A") && mMenus.HasMenu("C") && mMenus.HasMenu(kWingMenu));
}

}  // namespace
