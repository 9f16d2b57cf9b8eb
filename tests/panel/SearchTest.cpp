#include <QHeaderView>
#include <QTest>

#include "desk/toolkit/TreeImpl.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

class SearchTest : public PanelFixture {
protected:
    void SetUp() override {
        OpenProductionWith({"Reels/xAB", "Reels/ab 2", "Reels/Other", "ab folder/Day 1/ab deep",
                            "ab folder/Nothing", "Sound/abc/", "Gr\u00FC\u00DFe"});
    }
    std::string EmptyText() {
        return UI_MultiColumnTree::TreeImpl::Of(*SearchView().GetTree()).mEmptyText.toStdString();
    }
};

TEST_F(SearchTest, DeletingTheTextReturnsToTheTreeWithTheColumnsAsSetMeanwhile) {
    const Columns::HeaderRowRef directory = DirectoryView().GetHeaderRow();
    const Columns::HeaderRowRef hits = SearchView().GetHeaderRow();
    directory->MoveColumn(Columns::kSizeColumnID, 1, true);
    directory->SetColumnWidth(Columns::kNameColumnID, 333);
    directory->SetSortDirection(false);
    TypeSearch(QStringLiteral("ab"));
    EXPECT_TRUE(SearchTreeWidget().isVisible() && !TreeWidget().isVisible());
    EXPECT_EQ(hits->GetIndexOfColumn(Columns::kSizeColumnID), 1);
    EXPECT_EQ(hits->GetColumnWidth(Columns::kNameColumnID), 333);
    EXPECT_EQ(ShownHits().front(), "Sound");
    SearchTreeWidget().header()->resizeSection(4, 77);
    hits->SetSortColumn(Columns::kLockedColumnID);
    Send(30323);
    EXPECT_FLOAT_EQ(hits->GetColumnWidth(Columns::kSizeColumnID), 77 * 1.45f);
    TypeSearch(QStringLiteral("a"));
    TypeSearch({});
    EXPECT_EQ(ShownHits(), Rows{});
    EXPECT_TRUE(TreeWidget().isVisible());
    EXPECT_FLOAT_EQ(directory->GetColumnWidth(Columns::kSizeColumnID), 77 * 1.45f);
    EXPECT_EQ(directory->GetSortColumn(), Columns::kLockedColumnID);
}

TEST_F(SearchTest, SelectAllTakesProjectsOnlyAndClosingTheProductionEmptiesFieldAndHits) {
    TypeSearch(QStringLiteral("ab"));
    EXPECT_TRUE(Send(57642));
    EXPECT_EQ(SelectedNames(), (std::vector<std::string>{"ab deep", "ab 2", "xAB"}));
    EXPECT_EQ(SelectionCount(), "3 of 8 items selected");
    EXPECT_TRUE(Send(11303));
    EXPECT_EQ(SelectionCount(), "8 items");
    CloseProduction();
    EXPECT_EQ(SearchField()->text(), QString());
    EXPECT_EQ(ShownHits(), Rows{});
    EXPECT_TRUE(TreeWidget().isVisible());
}

TEST_F(SearchTest, HitsFollowTheVolumeAndOpenProjectsInFoldersThatNobodyOpened) {
    TypeSearch(QStringLiteral("ab"));
    EXPECT_TRUE(
        ShowsHits({"ab folder", "  Day 1", "    ab deep", "Reels", "  ab 2", "  xAB", "Sound", "  abc"}));
    RemoveProject("Reels/ab 2");
    Make({"Reels/ab 3", "Reels/unrelated"});
    EXPECT_TRUE(
        ShowsHits({"ab folder", "  Day 1", "    ab deep", "Reels", "  ab 3", "  xAB", "Sound", "  abc"}));
    OpenProject("ab folder/Day 1/ab deep");
    EXPECT_EQ(HitSays("ab folder/Day 1/ab deep.zuproj"), "ab deep, open");
    OtherUserLocks("Reels/xAB");
    EXPECT_TRUE(Shows([&] { return HitSays("Reels/xAB.zuproj") == "xAB, locked by edit-bay-2"; }));
    Unlock("Reels/xAB");
    EXPECT_TRUE(Shows([&] { return HitSays("Reels/xAB.zuproj") == "xAB"; }));
    // Folders that lead to no hit any more go.
    RemoveProject("ab folder/Day 1/ab deep");
    RemoveProject("Reels/ab 3");
    RemoveProject("Reels/xAB");
    mFolder.Remove(OnDisk("Sound"));
    EXPECT_TRUE(ShowsHits({"ab folder"}));
    MakeProject("Reels/ab again");
    EXPECT_TRUE(ShowsHits({"ab folder", "Reels", "  ab again"}));
}

TEST_F(SearchTest, FactsOfHitsComeWithoutTheUIThreadWaitingAndSortThem) {
    Make({{"Reels/ab 2", "12"}, {"Reels/xAB", "123456"}});
    Settle();
    mDisk.ResetCounts();
    TypeSearch(QStringLiteral("ab"));
    const Columns::HeaderRowRef hits = SearchView().GetHeaderRow();
    hits->SetSortColumn(Columns::kSizeColumnID);
    hits->SetSortDirection(false);
    SearchView().UpdateOpenRows();
    const auto standsBefore = [this](const char* first, const char* second) {
        const Rows rows = ShownHits();
        return std::ranges::find(rows, first) < std::ranges::find(rows, second);
    };
    EXPECT_TRUE(Shows([&] { return standsBefore("  xAB", "  ab 2"); }));
    MakeProject("Reels/ab 2", "1234567890");
    EXPECT_TRUE(Shows([&] { return standsBefore("  ab 2", "  xAB"); }));
    EXPECT_EQ(mDisk.CountOnUIThread(), 0);
}

TEST_F(SearchTest, FindsKnownNamesOfAVolumeThatCannotBeReadAndSaysWhyOthersAreMissing) {
    mDisk.Deny(mFolder.Path(OnDisk("Reels")));
    ExpectLogged denied("Permission denied");
    TypeSearch(QStringLiteral("xab"));
    EXPECT_EQ(ShownHits(), Rows{});
    EXPECT_EQ(EmptyText(),
              "No project or folder matches “xab”, but the folder “Reels” cannot be read: Permission denied");
    mDisk.Allow(mFolder.Path(OnDisk("Reels")));
    EXPECT_TRUE(ShowsHits({"Reels", "  xAB"}));
    const std::string root = mFolder.Path(kProduction);
    mDisk.Deny(root, ENOTCONN);
    ExpectLogged log("Transport endpoint is not connected");
    TypeSearch(QStringLiteral("Gr"));
    EXPECT_EQ(ShownHits(), Rows{"Gr\u00FC\u00DFe"});
    CloseProduction();
    OpenProduction();
    TypeSearch(QStringLiteral("Gr"));
    EXPECT_EQ(ShownHits(), Rows{});
    EXPECT_EQ(EmptyText(), "This production cannot be searched: Transport endpoint is not connected");
    mDisk.Allow(root);
    EXPECT_TRUE(ShowsHits({"Gr\u00FC\u00DFe"}));
}

TEST_F(SearchTest, DownGoesToTheFirstHitEscapeBackAndAFolderThatLeadsNowhereIsShownInTheTree) {
    mFrame.Window().activateWindow();
    TypeSearch(QStringLiteral("ab d"));
    QTest::keyClick(SearchField(), Qt::Key_Down);
    Settle();
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"ab deep"});
    QTest::keyClick(&SearchTreeWidget(), Qt::Key_Escape);
    Settle();
    EXPECT_EQ(SearchField()->text(), QString());
    EXPECT_TRUE(TreeWidget().isVisible() && TreeWidget().hasFocus());
    TypeSearch(QStringLiteral("abc"));
    QTest::keyClick(SearchField(), Qt::Key_Down);
    Settle();
    EXPECT_TRUE(SearchTreeWidget().hasFocus());
    QTest::keyClick(&SearchTreeWidget(), Qt::Key_Return);
    EXPECT_TRUE(Shows({"ab folder", "Gr\u00FC\u00DFe", "Reels", "Sound", "  abc"}));
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"abc"});
    EXPECT_TRUE(SearchField()->text().isEmpty() && RowOf("Sound/abc")->IsOpen() && TreeWidget().hasFocus());
}

}  // namespace HandlerSharedProjects
