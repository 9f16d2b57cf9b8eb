#include <QTest>
#include <QtWidgets>

#include "desk/core/log/UsageLogFile.h"
#include "desk/core/settings/DebugDatabaseFile.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

class TabViewTest : public PanelFixture {
protected:
    QSlider* Slider() { return mFrame.Window().findChild<QSlider*>(QStringLiteral("ZuProduction.ZoomSlider")); }
    QAbstractButton* Button(const char* name) {
        for (auto* button : mFrame.Window().findChildren<QAbstractButton*>())
            if (button->accessibleName() == QLatin1String(name)) return button;
        return nullptr;
    }
    QRect InPanel(const QWidget* widget) { return {widget->mapTo(&mFrame.Window(), QPoint()), widget->size()}; }
    QRect TreeArea() { return InPanel(TreeWidget().parentWidget()); }
    float RowHeight() { return Tree()->GetRowHeight(); }
    float Width(ColumnID column) { return DirectoryView().GetHeaderRow()->GetColumnWidth(column); }
};

TEST_F(TabViewTest, EverythingStandsInItsPlace) {
    OpenProduction();
    EXPECT_EQ(TreeArea(), QRect(19, 43, 891, 653));
    EXPECT_EQ(InPanel(SearchField()), QRect(19, 11, 200, 20));
    EXPECT_EQ(InPanel(Button("New Project")), QRect(820, 6, 30, 30));
    EXPECT_EQ(InPanel(Button("New Folder")), QRect(850, 6, 30, 30));
    EXPECT_EQ(InPanel(Button("Move to Trash")), QRect(880, 6, 30, 30));
    EXPECT_EQ(InPanel(Slider()), QRect(839, 714, 71, 13));
    EXPECT_EQ(SelectionCountText().UI_GetBounds(), (RectT<float>{19, 709, 805, 23}));
    // The search field gives way before the buttons do.
    mFrame.Resize({300, 136});
    Settle();
    EXPECT_EQ(InPanel(SearchField()), QRect(19, 11, 157, 20));
    EXPECT_EQ(TreeArea(), QRect(19, 43, 262, 50));
    mFrame.Resize({200, 200});
    Settle();
    EXPECT_EQ(InPanel(SearchField()).width(), 80);
    EXPECT_EQ(SelectionCountText().UI_GetBounds().width, 130);
}

TEST_F(TabViewTest, ZoomCommandsAndSliderScaleRowsAndColumns) {
    OpenProduction();
    Send(30324);
    EXPECT_EQ(RowHeight(), 25);
    Send(30323);
    EXPECT_FLOAT_EQ(RowHeight(), 36.25f);
    EXPECT_FLOAT_EQ(Width(Columns::kNameColumnID), 200 * 1.45f);
    EXPECT_EQ(Slider()->value() * 4, Slider()->maximum());
    EXPECT_FLOAT_EQ(SearchView().GetTree()->GetRowHeight(), 36.25f);
    // From between two steps to the next one in the command's direction.
    for (const auto& [command, height] : {std::pair(30323, 47.5f), std::pair(30324, 36.25f)}) {
        Slider()->setValue(Slider()->maximum() * 3 / 10);
        EXPECT_FLOAT_EQ(RowHeight(), 25 + 45 * 0.3f);
        Send(command);
        EXPECT_FLOAT_EQ(RowHeight(), height);
    }
    for (int i = 0; i < 4; ++i) Send(30323);
    EXPECT_EQ(RowHeight(), 70);
    EXPECT_FLOAT_EQ(Width(Columns::kNameColumnID), 560);
    // A width that the user sets at one zoom keeps its proportion at another.
    TreeWidget().header()->resizeSection(0, 280);
    Settle();
    for (int i = 0; i < 4; ++i) Send(30324);
    EXPECT_FLOAT_EQ(Width(Columns::kNameColumnID), 100);
    EXPECT_FLOAT_EQ(Width(Columns::kSizeColumnID), 200);
}

TEST_F(TabViewTest, ControlsFollowTheProduction) {
    OpenPanel();
    EXPECT_FALSE(SearchField()->isEnabled() || Slider()->isEnabled());
    OpenProduction();
    EXPECT_TRUE(SearchField()->isEnabled() && Slider()->isEnabled() && Button("New Folder")->isEnabled());
    EXPECT_FALSE(Button("Move to Trash")->isEnabled());
    EXPECT_EQ(SelectionCount(), "0 items");
    MakeProject("A");
    ASSERT_TRUE(Shows({"A"}));
    Settle();
    EXPECT_EQ(SelectionCount(), "1 item");
    Select({"A"});
    EXPECT_EQ(SelectionCount(), "1 of 1 item selected");
    EXPECT_TRUE(Button("Move to Trash")->isEnabled());
    OtherUserLocks("A");
    EXPECT_TRUE(Shows([&] { return !Button("Move to Trash")->isEnabled(); }));
    EXPECT_TRUE(mHandler->ObeyCommand(Command(11311)));
    EXPECT_EQ(QApplication::focusWidget(), SearchField());
    CloseProduction();
    EXPECT_FALSE(SearchField()->isEnabled() || Button("New Folder")->isEnabled());
}

TEST_F(TabViewTest, PageMovesGoToTheEdgeFirst) {
    for (int i = 100; i < 200; ++i) MakeProject("R " + std::to_string(i));
    OpenProduction();
    const int perPage = static_cast<int>(Tree()->GetScrollView().mVisibleRect.height / (RowHeight() + 1));
    const auto go = [this](int command) { return Send(command), SelectedNames(); };
    const auto name = [](int index) { return std::vector<std::string>{"R " + std::to_string(100 + index)}; };
    EXPECT_EQ(go(30313), name(0));
    const auto atEnd = go(30315);
    const int last = Tree()->GetLastVisibleOpenedRowIndex();
    ASSERT_GT(last, 10);
    EXPECT_EQ(atEnd, name(last));
    EXPECT_EQ(go(30315), name(std::min(last + perPage, 99)));
    EXPECT_EQ(go(30314), name(99));
    EXPECT_EQ(go(30315), name(99));
    const int first = Tree()->GetFirstVisibleOpenedRowIndex();
    Send(57642);
    EXPECT_EQ(go(30316), name(first));
    EXPECT_EQ(go(30316), name(std::max(first - perPage, 0)));
}

TEST_F(TabViewTest, WhatTheUserSetsIsRecorded) {
    OpenProduction();
    const desk::UsageLogFile usage(mFolder.Path("usage.jsonl"));
    Send(30323);
    Slider()->setSliderDown(true);
    Slider()->setValue(Slider()->maximum());
    Slider()->setSliderDown(false);
    TreeWidget().header()->moveSection(4, 0);
    Settle();
    const auto columns = [](const char* created, const char* locked, const char* modified, const char* size) {
        return std::string(R"(","creation_date_column_index":")") + created + R"(","locked_column_index":")" +
               locked + R"(","modifed_date_column_index":")" + modified + R"(","size_column_index":")" + size;
    };
    std::string recorded = mFolder.Read("usage.jsonl");
    for (const std::string& values : {R"("Zoom","row_height":"36.25)" + columns("3", "1", "2", "4"),
                                      R"("Zoom","row_height":"70.00)" + columns("3", "1", "2", "4"),
                                      R"("ColumnOrder","row_height":"70.00)" + columns("4", "2", "3", "0")}) {
        const std::size_t begin =
            recorded.find(R"("event":"PanelViewProperty","group":"zuproduction_view_properties",)"
                          R"("values":{"property_changed":)" +
                          values);
        ASSERT_NE(begin, std::string::npos) << values << " in\n" << recorded;
        recorded.erase(0, recorded.find('\n', begin));
    }
    EXPECT_EQ(recorded, "\n");
}

TEST_F(TabViewTest, AChangedTunableShowsAtOnce) {
    OpenProduction();
    desk::SetDebugDatabaseEntries({{"SharedProjects.Controls.SideMargins", 40},
                                   {"SharedProjects.Controls.RowHeight.Min", 50},
                                   {"SharedProjects.Columns.MinWidth", 220}});
    Settle();
    EXPECT_EQ(TreeArea(), QRect(40, 43, 849, 653));
    EXPECT_EQ(InPanel(SearchField()).x(), 40);
    EXPECT_EQ(RowHeight(), 50);
    EXPECT_EQ(Width(Columns::kNameColumnID), 220);
    desk::SetDebugDatabaseEntries({});
    EXPECT_EQ(RowHeight(), 25);
}

TEST_F(TabViewTest, ClosingThePanelUndoesWhatOpeningItDid) {
    OpenProduction();
    const auto project = OpenProject("A");
    std::vector<std::string> gone;
    const auto note = [&gone](QObject& object, const char* name) {
        QObject::connect(&object, &QObject::destroyed, [&gone, name] { gone.emplace_back(name); });
    };
    note(SearchTreeWidget(), "hits");
    note(TreeWidget(), "tree");
    ClosePanel();
    EXPECT_EQ(gone, (std::vector<std::string>{"tree", "hits"}));
    const std::size_t delayed = mMain.CountDelayed();
    CloseProduction();
    OpenPanel();
    desk::OpenProjectList::Instance().Remove(project);
    ClosePanel();
    // Without open projects the host's command follows a quarter of a second later.
    EXPECT_EQ(mMain.CountDelayed(), delayed + 1);
    mMain.Advance(std::chrono::milliseconds(250));
    EXPECT_EQ(mMain.CountDelayed(), delayed);
}

}  // namespace HandlerSharedProjects
