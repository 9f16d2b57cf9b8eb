#include <QTest>

#include "desk/framework/DockWorkspace.h"
#include "desk/framework/MenuResources.h"
#include "tests/panel/CommandsFixture.h"

namespace HandlerSharedProjects {

using namespace std::chrono_literals;

/// What the pointer and the keyboard do in the trees.
class HandsTest : public CommandsFixture {
protected:
    HandsTest() { desk::MenuResources::Instance().Load(mFolder.Path("profile")); }

    QPoint PointOf(const std::string& name) {
        const RectT<float> cell = Tree()->GetCellRect(RowOf(name).get(), 0);
        const QPoint inTree(int(cell.x) + 60, int(cell.y + cell.height / 2));
        return TreeWidget().viewport()->mapFrom(&TreeWidget(), inTree);
    }
    static QPoint EmptyPlaceIn(QTreeView& tree) { return {20, tree.viewport()->height() - 5}; }
    /// The first and the last entry of the menu that a right click shows; empty for no menu.
    std::string MenuAt(QTreeView& tree, QPoint point) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, point, tree.viewport()->mapToGlobal(point));
        QApplication::sendEvent(tree.viewport(), &event);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu) return {};
        const QList<QAction*> entries = menu->actions();
        // Behind a tab stands the key, in a process that has loaded some.
        const auto text = [](const QAction* entry) { return entry->text().section(QLatin1Char('\t'), 0, 0); };
        const QString shown = text(entries.first()) + QLatin1Char('|') + text(entries.last());
        menu->close();
        Settle();
        return shown.toStdString();
    }

    /// Drags rows, or files of another program, over a point, and drops them there.
    bool Drop(const std::vector<std::string>& paths, bool areRows, QWidget& target, QPoint point) {
        QMimeData data;
        QByteArray files;
        for (const std::string& path : paths) files += "file://" + QByteArray::fromStdString(path) + "\r\n";
        data.setData(QStringLiteral("text/uri-list"), files);
        if (areRows)
            data.setData(QStringLiteral("application/x-zuhost-vantor-sharedprojectspanel-rowdragtype"), "x");
        QDragEnterEvent enter(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &enter);
        mMain.Advance(250ms);
        QDropEvent drop(point, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &drop);
        Settle();
        return drop.isAccepted();
    }
    bool DropRows(const std::vector<std::string>& names, const std::string& onto) {
        std::vector<std::string> paths;
        for (const std::string& name : names)
            paths.push_back(UTF16to8(DirectoryView().GetRowPath(RowOf(name).get())));
        Select(names);
        QWidget& area = *TreeWidget().viewport();
        return Drop(paths, true, area, onto.empty() ? EmptyPlaceIn(TreeWidget()) : PointOf(onto));
    }
};

TEST_F(HandsTest, EachSelectionHasItsMenu) {
    OpenProductionWith({"A", "Reels/B", "Trash/Old"});
    OpenFolder("Trash");
    const auto menuAt = [this](const char* name) { return MenuAt(TreeWidget(), PointOf(name)); };
    EXPECT_EQ(menuAt("A"), "Open Project|Refresh Project");
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"A"})
        << "the row under the pointer is what it is about";
    EXPECT_EQ(menuAt("Reels"), "New Project|Reveal in File Browser");
    Select({"A", "Reels"});
    EXPECT_EQ(menuAt("Reels"), "Make a Copy|Reveal in File Browser");
    Select({"A", "Trash"});
    EXPECT_EQ(menuAt("A"), "Reveal in File Browser|Reveal in File Browser");
    {
        const ExpectLogged told("There is no menu for what is in the trash");
        EXPECT_EQ(menuAt("Trash/Old"), "");
    }
    EXPECT_EQ(MenuAt(TreeWidget(), EmptyPlaceIn(TreeWidget())), "New Project|Select All");
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{});
    TypeSearch(QStringLiteral("b"));
    QTreeView& hits = SearchTreeWidget();
    EXPECT_EQ(MenuAt(hits, {60, 35}), "Open Project|Reveal in File Browser");
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"B"});
    {
        const ExpectLogged told("Among search results only projects");
        EXPECT_EQ(MenuAt(hits, {60, 10}), "") << "a folder";
    }
    EXPECT_EQ(MenuAt(hits, EmptyPlaceIn(hits)), "");
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{});
}

TEST_F(HandsTest, ReturnRenamesOneRowThatIsSeen) {
    Make({"A", "B", "Held"});
    OtherUserLocks("Held");
    OpenProduction();
    const auto isEditing = [this] {
        QTest::keyClick(&TreeWidget(), Qt::Key_Return);
        Settle();
        return Tree()->GetCellEditor().GetTextEdit() != nullptr;
    };
    Select({"A", "B"});
    EXPECT_FALSE(isEditing());
    Select({"Held"});
    ASSERT_TRUE(Shows([&] { return !IsEnabled(30308); }));
    {
        const ExpectLogged told(
            "“Held” in “North Shore” is in use. Locked by edit-bay-2 on machine-of-edit-bay-2 since");
        EXPECT_FALSE(isEditing());
    }
    Select({"A"});
    EXPECT_TRUE(isEditing());
}

TEST_F(HandsTest, RowsAreMovedWhereTheyMayGo) {
    Make({"A", "Deep/X", "Held", "Reels/B", "Reels/Day/C", "Trash/Old"});
    OtherUserLocks("Held");
    OpenProduction();
    OpenFolder("Reels");
    ASSERT_TRUE(Shows([&] { return Says("Held") == "Held, locked by edit-bay-2"; }));
    const QString tip = TreeWidget().model()->index(2, 1).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(tip.startsWith(QStringLiteral("Locked by edit-bay-2 on machine-of-edit-bay-2 since")))
        << tip.toStdString();
    {
        const ExpectLogged told("“Held” in “North Shore” is in use. Locked by edit-bay-2");
        EXPECT_FALSE(DropRows({"A", "Held"}, "Reels"));
    }
    EXPECT_FALSE(DropRows({"Trash"}, "Reels"));
    EXPECT_FALSE(DropRows({"Reels"}, "Reels")) << "into itself";
    EXPECT_FALSE(DropRows({"Reels"}, "Reels/Day"));
    EXPECT_FALSE(DropRows({"Reels/B"}, "Reels")) << "it lies there";
    EXPECT_FALSE(DropRows({"A"}, ""));
    {
        const ExpectLogged one("“A” was moved to “Reels”."), several("2 items were moved to “North Shore”.");
        EXPECT_TRUE(DropRows({"A"}, "Reels/B")) << "into its folder";
        EXPECT_TRUE(Shows({"Deep", "Held", "Reels", "  A", "  B", "  Day", "Trash"}));
        EXPECT_EQ(SelectedNames(), std::vector<std::string>{"A"}) << "at its new place";
        EXPECT_TRUE(DropRows({"Reels/A", "Reels/B"}, ""));
        EXPECT_TRUE(Shows({"A", "B", "Deep", "Held", "Reels", "  Day", "Trash"}));
        EXPECT_EQ(SelectedNames(), (std::vector<std::string>{"A", "B"}));
        EXPECT_TRUE(DropRows({"A", "B"}, "Deep")) << "a closed folder, never listed";
        EXPECT_TRUE(Shows({"Deep", "  A", "  B", "  X", "Held", "Reels", "  Day", "Trash"}));
        EXPECT_TRUE(Shows([&] { return SelectedNames() == std::vector<std::string>{"A", "B"}; }));
        EXPECT_TRUE(DropRows({"Deep/A", "Deep/B"}, "Reels"));
    }
    EXPECT_TRUE(DropRows({"Reels/Day"}, ""));
    EXPECT_TRUE(Shows({"Day", "Deep", "  X", "Held", "Reels", "  A", "  B", "Trash"}));
    const ExpectLogged toTrash("“A” was moved to “Trash”.");
    EXPECT_TRUE(DropRows({"Reels/A"}, "Trash"));
    EXPECT_TRUE(Shows({"Day", "Deep", "  X", "Held", "Reels", "  B", "Trash"}));
    Select({"Reels/B"});
    QWidget& button = *mFrame.Window().findChild<QWidget*>(QStringLiteral("command-30325"));
    EXPECT_FALSE(Drop({OnDisk("Trash/A.zuproj")}, true, button, {5, 5}));
    {
        const ExpectLogged told("“X” lies in another production");
        EXPECT_FALSE(Drop({"/elsewhere/X.zuproj"}, true, button, {5, 5}));
        EXPECT_FALSE(Drop({"/elsewhere/X.zuproj"}, true, *TreeWidget().viewport(), PointOf("Day")));
    }
    Select({});
    ASSERT_FALSE(button.isEnabled());
    EXPECT_TRUE(Drop({mFolder.Path(OnDisk("Reels/B.zuproj"))}, true, button, {5, 5})) << "of another window";
    EXPECT_TRUE(Shows({"Day", "Deep", "  X", "Held", "Reels", "Trash"}));
}

TEST_F(HandsTest, FilesOfOtherProgramsAreAddedIfAllAreProjects) {
    mFolder.Write("elsewhere/X.zuproj", "x");
    mFolder.Write("elsewhere/notes.txt", "x");
    OpenProductionWith({"Reels/B"});
    const std::string project = mFolder.Path("elsewhere/X.zuproj"), other = mFolder.Path("elsewhere/notes.txt");
    QWidget& area = *TreeWidget().viewport();
    EXPECT_FALSE(Drop({other}, false, area, PointOf("Reels")));
    mDialogs.ExpectMessage("Can Only Drop Projects");
    EXPECT_TRUE(Drop({project, other}, false, area, PointOf("Reels")));
    QMainWindow window;
    const desk::DockWorkspace workspace(window);
    const ExpectLogged noProgress("There is no panel");
    mDialogs.ExpectQuestion("Add Projects to Production", u"Copy");
    EXPECT_TRUE(Drop({project}, false, area, PointOf("Reels")));
    EXPECT_TRUE(mDialogs.LastText().ends_with("Folder: “Reels”")) << mDialogs.LastText();
    EXPECT_TRUE(Shows({"Reels", "  B", "  X"}));
}

}  // namespace HandlerSharedProjects
