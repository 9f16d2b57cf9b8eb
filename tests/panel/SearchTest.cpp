#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

class SearchTest : public PanelFixture {
protected:
    void SetUp() override {
        MakeProject("Reels/xAB");
        MakeProject("Reels/ab 2");
        MakeProject("Reels/Other");
        MakeProject("ab folder/Day 1/ab deep");
        MakeProject("ab folder/Nothing");
        MakeFolder("Sound/abc");
        MakeProject(
            "Gr\xC3\xBC\xC3\x9F"
            "e");
        OpenProduction();
    }
};

TEST_F(SearchTest, ShowsHitsUnderTheirFoldersEachFolderOnce) {
    TypeSearch(QStringLiteral("AB"));
    EXPECT_EQ(ShownHits(),
              (Rows{"ab folder", "  Day 1", "    ab deep", "Reels", "  ab 2", "  xAB", "Sound", "  abc"}));
    EXPECT_EQ(SelectionCount(), "8 items");
    EXPECT_FALSE(Tree()->IsRowVisible(RowOf("Reels").get()));
    // More of the text, fewer hits.
    TypeSearch(QStringLiteral("ab d"));
    EXPECT_EQ(ShownHits(), (Rows{"ab folder", "  Day 1", "    ab deep"}));
}

TEST_F(SearchTest, FoldsASCIILettersOnlyAndOnTheDisplayedName) {
    TypeSearch(QStringLiteral("GR\u00FC"));
    EXPECT_EQ(ShownHits(), Rows{"Gr\xC3\xBC\xC3\x9F"
                                "e"});
    TypeSearch(QStringLiteral("gr\u00DC"));
    EXPECT_EQ(ShownHits(), Rows{});
    TypeSearch(QStringLiteral("zuproj"));
    EXPECT_EQ(ShownHits(), Rows{});
}

TEST_F(SearchTest, DeletingTheTextReturnsToTheTreeWithTheColumnsAsSetMeanwhile) {
    const Columns::HeaderRowRef directory = DirectoryView().GetHeaderRow();
    const Columns::HeaderRowRef hits = SearchView().GetHeaderRow();
    directory->MoveColumn(Columns::kSizeColumnID, 1, true);
    directory->SetColumnWidth(Columns::kNameColumnID, 333);
    directory->SetSortDirection(false);
    TypeSearch(QStringLiteral("ab"));
    EXPECT_TRUE(SearchTreeWidget().isVisible());
    EXPECT_FALSE(TreeWidget().isVisible());
    EXPECT_EQ(hits->GetIndexOfColumn(Columns::kSizeColumnID), 1);
    EXPECT_EQ(hits->GetColumnWidth(Columns::kNameColumnID), 333);
    EXPECT_FALSE(hits->IsSortDirectionAscending());
    EXPECT_EQ(ShownHits().front(), "Sound");

    hits->SetColumnWidth(Columns::kSizeColumnID, 77);
    hits->SetSortColumn(Columns::kLockedColumnID);
    hits->SetSortDirection(true);
    TypeSearch(QStringLiteral("a"));
    EXPECT_EQ(hits->GetColumnWidth(Columns::kSizeColumnID), 77);
    TypeSearch({});
    EXPECT_EQ(ShownHits(), Rows{});
    EXPECT_TRUE(TreeWidget().isVisible());
    EXPECT_EQ(directory->GetColumnWidth(Columns::kSizeColumnID), 77);
    EXPECT_EQ(directory->GetSortColumn(), Columns::kLockedColumnID);
    EXPECT_TRUE(directory->IsSortDirectionAscending());
}

TEST_F(SearchTest, SelectAllTakesProjectsOnly) {
    TypeSearch(QStringLiteral("ab"));
    EXPECT_TRUE(Send(57642));
    EXPECT_EQ(SelectedNames(), (std::vector<std::string>{"ab deep", "ab 2", "xAB"}));
    EXPECT_EQ(SelectionCount(), "3 of 8 items selected");
    EXPECT_EQ(SearchView().GetSelectedPaths(false).size(), 3u);
    EXPECT_TRUE(Send(11303));
    EXPECT_EQ(SelectionCount(), "8 items");
}

TEST_F(SearchTest, ANewerSearchDropsAnOlderOne) {
    TypeSearch(QStringLiteral("ab"));
    SearchField()->setText(QStringLiteral("Other"));
    SearchField()->setText(QStringLiteral("Sound"));
    Settle();
    EXPECT_EQ(ShownHits(), (Rows{"Sound"}));
    SearchField()->setText(QStringLiteral("Other"));
    SearchField()->clear();
    Settle();
    EXPECT_EQ(ShownHits(), Rows{});
}

TEST_F(SearchTest, HitsFollowTheVolumeAndOpenProjects) {
    OpenFolder("Reels");
    TypeSearch(QStringLiteral("ab"));
    const auto shows = [this](const Rows& rows) {
        EXPECT_TRUE(Shows([&] { return ShownHits() == rows; })) << testing::PrintToString(ShownHits());
    };
    RemoveProject("Reels/ab 2");
    shows({"ab folder", "  Day 1", "    ab deep", "Reels", "  xAB", "Sound", "  abc"});
    MakeProject("Reels/ab 3");
    MakeProject("Reels/unrelated");
    shows({"ab folder", "  Day 1", "    ab deep", "Reels", "  ab 3", "  xAB", "Sound", "  abc"});
    const auto says = [this](const UTF16String& path) {
        const RowRef row = SearchView().GetRowFromPath(path);
        for (QModelIndex i = SearchTreeWidget().model()->index(0, 0); i.isValid();
             i = SearchTreeWidget().indexBelow(i))
            if (i.internalPointer() == row.get())
                return i.data(Qt::AccessibleTextRole).toString().toStdString();
        return std::string("(not shown)");
    };
    OpenProject("ab folder/Day 1/ab deep");
    EXPECT_EQ(says(PathOf("ab folder/Day 1/ab deep.zuproj")), "ab deep, open");
    OtherUserLocks("Reels/xAB");
    EXPECT_TRUE(Shows([&] { return says(PathOf("Reels/xAB.zuproj")) == "xAB, locked by edit-bay-2"; }));
}

TEST_F(SearchTest, ClosingTheProductionEmptiesFieldAndHits) {
    TypeSearch(QStringLiteral("ab"));
    CloseProduction();
    EXPECT_EQ(SearchField()->text(), QString());
    EXPECT_EQ(ShownHits(), Rows{});
    EXPECT_TRUE(TreeWidget().isVisible());
}

}  // namespace HandlerSharedProjects
