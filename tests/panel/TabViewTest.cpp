#include <QAbstractButton>
#include <QApplication>
#include <QHeaderView>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSlider>
#include <QTest>

#include "desk/core/DebugDatabaseFile.h"
#include "desk/core/UsageLogFile.h"
#include "host/core/DebugDatabase.h"
#include "host/project/ProductionTrash.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

/// Takes the messages of a station.
class MessageCounter : public Listener {
public:
    explicit MessageCounter(StationID station) : mStation(std::move(station)) { AddListener(mStation, this); }
    ~MessageCounter() override { RemoveListener(mStation, this); }
    void ListenToMessage(const Message& message) override {
        ++mCount;
        if (const auto* closing = MessageCast<HandlerWindowClosingMessage>(message))
            mHandlerID = closing->GetHandlerID();
    }
    int mCount = 0;
    UTF16String mHandlerID;

private:
    StationID mStation;
};

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
    CommandHandler& Commander() { return *mTabView; }
    bool IsEnabled(int commandID, bool& isKnown) {
        bool enabled = false;
        bool checked = true;
        MenuMark mark = MenuMark::None;
        UTF16String text;
        isKnown = Commander().FindCommandStatus(commandID, enabled, checked, mark, text);
        EXPECT_TRUE(!isKnown || !checked) << "a decided status clears the check mark";
        return enabled;
    }
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
    EXPECT_EQ(InPanel(Slider()).y(), 99 + 12);
    mFrame.Resize({200, 200});
    Settle();
    EXPECT_EQ(InPanel(SearchField()).width(), 80);
    EXPECT_EQ(SelectionCountText().UI_GetBounds().width, 130);
    EXPECT_EQ(mTabView->GetStackedDimensionHeightMin(), 100);
    EXPECT_EQ(mTabView->GetStackedDimensionHeightMax(), 600);
    std::vector<Point> sizes;
    EXPECT_FALSE(mTabView->GetSnapSizesSelf(sizes));
    EXPECT_TRUE(sizes.empty());
    EXPECT_FALSE(mTabView->AllowTablessSelf());
    EXPECT_STREQ(mTabView->GetFlyoutMenuID(), "HandlerSharedProjects_Wing_Menu");
}

TEST_F(TabViewTest, AChangedTunableShowsAtOnce) {
    MakeProject("Reel 1");
    OpenProduction();
    const TemporaryFolder profile;
    const desk::DebugDatabaseFile file(profile.Path());
    profile.Write(desk::DebugDatabaseFile::kFileName,
                  R"({"SharedProjects.Controls.SideMargins": 40, "SharedProjects.Controls.RowHeight.Min": 50,
                      "SharedProjects.Columns.MinWidth": 220})");
    EXPECT_TRUE(Shows([&] { return TreeArea() == QRect(40, 43, 849, 653); }));
    EXPECT_EQ(InPanel(SearchField()).x(), 40);
    EXPECT_EQ(InPanel(Slider()).right(), 929 - 40 - 1);
    EXPECT_EQ(RowHeight(), 50);
    EXPECT_EQ(Width(Columns::kNameColumnID), 220);
    desk::SetDebugDatabaseEntries({});
    Settle();
    EXPECT_EQ(TreeArea(), QRect(19, 43, 891, 653));
    EXPECT_EQ(RowHeight(), 25);
}

TEST_F(TabViewTest, ZoomCommandsAndSliderScaleRowsAndColumns) {
    OpenProduction();
    EXPECT_EQ(RowHeight(), 25);
    EXPECT_TRUE(Send(30324));
    EXPECT_EQ(RowHeight(), 25);
    EXPECT_TRUE(Send(30323));
    EXPECT_FLOAT_EQ(RowHeight(), 36.25f);
    EXPECT_FLOAT_EQ(Width(Columns::kNameColumnID), 200 * 1.45f);
    EXPECT_EQ(Slider()->value() * 4, Slider()->maximum());
    EXPECT_FLOAT_EQ(SearchView().GetTree()->GetRowHeight(), 36.25f);
    EXPECT_FLOAT_EQ(SearchView().GetHeaderRow()->GetColumnWidth(Columns::kSizeColumnID), 200 * 1.45f);

    // From between two steps to the next one in the command's direction.
    Slider()->setValue(Slider()->maximum() * 3 / 10);
    EXPECT_FLOAT_EQ(RowHeight(), 25 + 45 * 0.3f);
    Send(30323);
    EXPECT_FLOAT_EQ(RowHeight(), 47.5f);
    Slider()->setValue(Slider()->maximum() * 3 / 10);
    Send(30324);
    EXPECT_FLOAT_EQ(RowHeight(), 36.25f);
    Slider()->setValue(Slider()->maximum() * 99 / 100);
    Send(30323);
    EXPECT_EQ(RowHeight(), 70);
    EXPECT_FLOAT_EQ(mTabView->GetColumnWidthScale(), 2.8f);
    Send(30323);
    EXPECT_EQ(RowHeight(), 70);
    EXPECT_FLOAT_EQ(Width(Columns::kNameColumnID), 560);

    // A width that the user sets at one zoom keeps its proportion at another.
    TreeWidget().header()->resizeSection(0, 280);
    Settle();
    for (int i = 0; i < 4; ++i) Send(30324);
    EXPECT_FLOAT_EQ(Width(Columns::kNameColumnID), 100);
    EXPECT_FLOAT_EQ(Width(Columns::kSizeColumnID), 200);
}

TEST_F(TabViewTest, SelectionCountTexts) {
    OpenProduction();
    EXPECT_EQ(SelectionCount(), "0 items");
    MakeProject("A");
    ASSERT_TRUE(Shows({"A"}));
    EXPECT_EQ(SelectionCount(), "1 item");
    Select({"A"});
    EXPECT_EQ(SelectionCount(), "1 of 1 item selected");
    MakeProject("B");
    MakeFolder("C");
    ASSERT_TRUE(Shows({"A", "B", "C"}));
    EXPECT_EQ(SelectionCount(), "1 of 3 items selected");
    Send(11303);
    EXPECT_EQ(SelectionCount(), "3 items");
}

TEST_F(TabViewTest, ControlsFollowTheProduction) {
    OpenPanel();
    EXPECT_FALSE(SearchField()->isEnabled());
    EXPECT_FALSE(Slider()->isEnabled());
    EXPECT_EQ(Title(), "Production");
    OpenProduction();
    EXPECT_TRUE(SearchField()->isEnabled());
    EXPECT_TRUE(Slider()->isEnabled());
    EXPECT_EQ(Title(), "Production: North Shore");
    EXPECT_TRUE(Button("New Folder")->isEnabled());
    EXPECT_FALSE(Button("Move to Trash")->isEnabled());
    MakeProject("A");
    ASSERT_TRUE(Shows({"A"}));
    Select({"A"});
    EXPECT_TRUE(Button("Move to Trash")->isEnabled());
    OtherUserLocks("A");
    EXPECT_TRUE(Shows([&] { return !Button("Move to Trash")->isEnabled(); }));
    CloseProduction();
    EXPECT_FALSE(SearchField()->isEnabled() || Button("New Folder")->isEnabled());
}

TEST_F(TabViewTest, CommandsGoToTheViewOrToTheBase) {
    OpenProduction();
    bool isKnown = false;
    for (const int id : {30313, 30314, 30315, 30316, 30323, 30324, 57642, 11303}) {
        EXPECT_TRUE(IsEnabled(id, isKnown) && isKnown) << id;
        EXPECT_TRUE(Send(id)) << id;
    }
    for (const int id : {30312, 30317, 30318, 4711}) {
        EXPECT_FALSE(IsEnabled(id, isKnown) || isKnown) << id;
        EXPECT_FALSE(Send(id)) << id;
    }
    EXPECT_TRUE(mHandler->ObeyCommand(Command(11311)));
    EXPECT_EQ(QApplication::focusWidget(), SearchField());
}

TEST_F(TabViewTest, PageMovesGoToTheEdgeFirst) {
    for (int i = 100; i < 200; ++i) MakeProject("R " + std::to_string(i));
    OpenProduction();
    const int perPage = static_cast<int>(Tree()->GetScrollView().mVisibleRect.height / (RowHeight() + 1));
    const auto selected = [this] { return SelectedNames(); };
    const auto name = [](int index) { return std::vector<std::string>{"R " + std::to_string(100 + index)}; };
    Send(30313);
    EXPECT_EQ(selected(), name(0));
    Send(30315);
    const int last = Tree()->GetLastVisibleOpenedRowIndex();
    ASSERT_GT(last, 10);
    EXPECT_EQ(selected(), name(last));
    Send(30315);
    EXPECT_EQ(selected(), name(std::min(last + perPage, 99)));
    Send(30314);
    EXPECT_EQ(selected(), name(99));
    Send(30315);
    EXPECT_EQ(selected(), name(99));
    const int first = Tree()->GetFirstVisibleOpenedRowIndex();
    Send(57642);
    Send(30316);
    EXPECT_EQ(selected(), name(first));
    Send(30316);
    EXPECT_EQ(selected(), name(std::max(first - perPage, 0)));
}

TEST_F(TabViewTest, PathTypes) {
    MakeProject("Trash/Old");
    MakeProject("A");
    MakeFolder("B");
    OpenProduction();
    EXPECT_EQ(Utils::GetPathTypes({}), 0);
    EXPECT_EQ(Utils::GetPathTypes({PathOf("A.zuproj"), PathOf("Trash/")}), 5);
    EXPECT_EQ(Utils::GetPathTypes({PathOf("Trash/Old.zuproj")}), 8);
    EXPECT_EQ(Utils::GetPathTypes({PathOf("A.zuproj"), PathOf("B")}), 3);
}

TEST_F(TabViewTest, UsageEvents) {
    OpenProduction();
    {
        const desk::UsageLogFile usage(mFolder.Path("usage.jsonl"));
        Utils::LogUsage("DirectoryTree", "NewFolder");
        Send(30323);
        TreeWidget().header()->moveSection(4, 0);
        Settle();
        mMain.RunUntilIdle();
    }
    const std::string text = mFolder.Read("usage.jsonl");
    std::vector<QJsonObject> lines;
    for (const QByteArray& line : QByteArray::fromStdString(text).split('\n'))
        if (!line.isEmpty()) lines.push_back(QJsonDocument::fromJson(line).object());
    ASSERT_EQ(lines.size(), 3u) << text;
    EXPECT_NE(text.find("NewFolder"), std::string::npos);
    const auto value = [&](int line, const char* key) {
        return lines.at(line)[QLatin1String("values")].toObject()[QLatin1String(key)].toString().toStdString();
    };
    EXPECT_EQ(lines[1][QLatin1String("event")].toString(), QLatin1String("PanelViewProperty"));
    EXPECT_EQ(lines[1][QLatin1String("group")].toString(), QLatin1String("zuproduction_view_properties"));
    EXPECT_EQ(value(1, "property_changed"), "Zoom");
    EXPECT_EQ(value(1, "row_height"), "36.25");
    EXPECT_EQ(value(1, "locked_column_index"), "1");
    EXPECT_EQ(value(1, "modifed_date_column_index"), "2");
    EXPECT_EQ(value(1, "creation_date_column_index"), "3");
    EXPECT_EQ(value(1, "size_column_index"), "4");
    EXPECT_EQ(value(2, "property_changed"), "ColumnOrder");
    EXPECT_EQ(value(2, "size_column_index"), "0");
    EXPECT_EQ(value(2, "locked_column_index"), "2");
}

TEST_F(TabViewTest, ClosingThePanelUndoesWhatOpeningItDid) {
    OpenProduction();
    const auto project = OpenProject("A");
    {
        const MessageCounter closing(kStation_WindowClosing);
        ClosePanel();
        EXPECT_EQ(closing.mCount, 1);
        EXPECT_EQ(closing.mHandlerID, UTF16String(kZuProductionFolderHandlerID));
    }
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
