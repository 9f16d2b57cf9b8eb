#include <QTest>

#include "desk/files/live/DirectoryMonitor.h"
#include "desk/toolkit/TreeImpl.h"
#include "tests/panel/PanelFixture.h"

namespace HandlerSharedProjects {

class DirectoryViewTest : public PanelFixture {
protected:
    void MakeProduction() {
        Make({"Reel 10", "Reel 9", "Rushes/Day 1/Scene 1", "Rushes/Scene 2", "Empty/", "Trash/"});
        mFolder.Write(OnDisk("notes.txt"));
        mFolder.Write(OnDisk(".hidden/x.zuproj"));
    }
};

TEST_F(DirectoryViewTest, ALongListingComesInPartsAndInOrder) {
    OpenPanel();
    const ModelSignals signals(TreeWidget());
    constexpr int kCount = 5000;
    for (int i = 1; i <= kCount; ++i) MakeProject("Reel " + std::to_string(i));
    OpenProductionWith({"Trash/"});
    Rows expected;
    for (int i = 1; i <= kCount; ++i) expected.push_back("Reel " + std::to_string(i));
    expected.push_back("Trash");
    EXPECT_TRUE(ShownRows() == expected);
    EXPECT_EQ(signals.mInserted, kCount + 1);
    EXPECT_EQ(signals.mRemoved, 0);
    EXPECT_EQ(SelectionCount(), "5001 items");
}

TEST_F(DirectoryViewTest, FollowsWhatOthersDoAndKeepsSelectionAndOpenFolders) {
    MakeProduction();
    OpenProduction();
    OpenFolder("Rushes");
    Select({"Rushes/Scene 2"});
    const RowRef kept = RowOf("Rushes/Scene 2");
    EXPECT_EQ(DirectoryView().GetRowFromPath(PathOf("Rushes//Day 1/../Scene 2.zuproj")), kept)
        << "any spelling";
    const ModelSignals signals(TreeWidget());

    MakeProject("Rushes/Scene 3");
    ASSERT_TRUE(Shows({"Empty", "Reel 9", "Reel 10", "Rushes", "  Day 1", "  Scene 2", "  Scene 3", "Trash"}));
    EXPECT_EQ(signals.mInserted, 1);
    EXPECT_EQ(signals.mRemoved, 0);

    mFolder.Rename(OnDisk("Reel 9.zuproj"), OnDisk("Reel 11.zuproj"));
    ASSERT_TRUE(Shows({"Empty", "Reel 10", "Reel 11", "Rushes", "  Day 1", "  Scene 2", "  Scene 3", "Trash"}));
    EXPECT_EQ(signals.mInserted, 2);
    EXPECT_EQ(signals.mRemoved, 1);

    RemoveProject("Rushes/Scene 3");
    mFolder.Remove(OnDisk("Empty"));
    ASSERT_TRUE(Shows({"Reel 10", "Reel 11", "Rushes", "  Day 1", "  Scene 2", "Trash"}));
    EXPECT_EQ(signals.mResets, 0);
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"Scene 2"});
    EXPECT_EQ(SelectionCount(), "1 of 6 items selected");
    EXPECT_EQ(RowOf("Rushes/Scene 2"), kept);
    mFolder.Remove(OnDisk("Rushes"));
    ASSERT_TRUE(Shows({"Reel 10", "Reel 11", "Trash"}));
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{});
}

TEST_F(DirectoryViewTest, BringsAFolderUpToDateWhenItShowsAgain) {
    OpenProductionWith({"Reels/Old/A"});
    for (const char* folder : {"Reels", "Reels/Old"}) OpenFolder(folder);
    Tree()->CloseRow(RowOf("Reels").get());
    mDisk.ResetCounts();
    Make({"Reels/B", "Reels/Old/C", "Seen"});
    ASSERT_TRUE(Shows({"Reels", "Seen"}));
    EXPECT_LE(mDisk.Count(Operation::Status), 2) << "nobody sees the others";
    OpenFolder("Reels");
    EXPECT_TRUE(Shows({"Reels", "  B", "  Old", "    A", "    C", "Seen"}));
    EXPECT_EQ(mDisk.Count(Operation::ListFolder), 0) << "what is known is not listed again";
}

TEST_F(DirectoryViewTest, KeepsRowsWhenAListingFailsSaysWhyThereAreNoneAndTriesAgain) {
    const std::string root = mFolder.Path(kProduction), reels = mFolder.Path(OnDisk("Reels"));
    const ExpectLogged log("(faulty)");
    mDisk.Deny(root, EIO);
    OpenProductionWith({"Reels/A"});
    EXPECT_EQ(UI_MultiColumnTree::TreeImpl::Of(*Tree()).mEmptyText.toStdString(),
              "The folder “North Shore” cannot be read: Input/output error");
    mDisk.Allow(root);
    ASSERT_TRUE(Shows({"Reels"}));
    mDisk.Deny(reels, EIO);
    Tree()->OpenRow(RowOf("Reels").get());
    EXPECT_TRUE(DirectoryView().IsContentAwaited(RowOf("Reels")));
    Settle();
    EXPECT_FALSE(DirectoryView().IsContentAwaited(RowOf("Reels")));
    EXPECT_EQ(ShownRows(), Rows{"Reels"});
    mDisk.Allow(reels);
    EXPECT_TRUE(Shows({"Reels", "  A"}));
    mDisk.Deny(reels, EIO);
    mDisk.ResetCounts();
    DirectoryView().RefreshDirectoryContent(RowOf("Reels"));
    Settle();
    EXPECT_EQ(mDisk.Count(Operation::ListFolder), 1);
    EXPECT_EQ(ShownRows(), (Rows{"Reels", "  A"}));
}

TEST_F(DirectoryViewTest, ShowsLocksSizesAndSavesAsTheyHappen) {
    MakeProject("Reel 1", std::string(1500, 'x'));
    OtherUserLocks("Reel 1");
    OpenProductionWith({"Reel 2"});
    const auto says = [this](const char* name, ColumnID column, const std::string& text) {
        const bool isShown = Shows([&] { return Says(name, column) == text; });
        EXPECT_TRUE(isShown) << Says(name, column) << " instead of " << text;
    };
    says("Reel 1", Columns::kLockedColumnID, "edit-bay-2");
    says("Reel 1", Columns::kNameColumnID, "Reel 1, locked by edit-bay-2");
    says("Reel 1", Columns::kSizeColumnID, "1.50 KB");
    says("Reel 2", Columns::kLockedColumnID, "Not locked");

    const ModelSignals signals(TreeWidget());
    OtherUserLocks("Reel 2", u"edit-bay-4");
    says("Reel 2", Columns::kLockedColumnID, "edit-bay-4");
    Unlock("Reel 1");
    says("Reel 1", Columns::kLockedColumnID, "Not locked");
    MakeProject("Reel 1", std::string(2'000'000, 'x'));
    says("Reel 1", Columns::kSizeColumnID, "2.00 MB");
    EXPECT_EQ(signals.mInserted + signals.mRemoved + signals.mResets, 0);
}

TEST_F(DirectoryViewTest, ClosingAProductionEmptiesTheTreeAndAnotherShowsOnlyItsOwnRows) {
    MakeProduction();
    OpenProduction();
    EXPECT_EQ(Title(), "Production: North Shore");
    CloseProduction();
    EXPECT_EQ(ShownRows(), Rows{});
    EXPECT_EQ(Title(), "Production");
    mFolder.Write("South Shore/Other.zuproj");
    OpenProduction("South Shore");
    EXPECT_EQ(ShownRows(), Rows{"Other"});
    EXPECT_EQ(Title(), "Production: South Shore");
    EXPECT_TRUE(mStore->GetMonitor().IsMonitored(PathOf("Reels")));
    EXPECT_FALSE(mStore->GetMonitor().IsMonitored(mFolder.PathUTF16("North Shore/Rushes")));

    // The old production's changes do not show; the new one's do.
    mFolder.Write("North Shore/Late.zuproj");
    MakeProject("More");
    ASSERT_TRUE(Shows({"More", "Other"}));

    // Straight from one to the other, while the first is still being listed.
    desk::Production::Instance().Open(mFolder.PathUTF16("North Shore"));
    desk::Production::Instance().Open(mFolder.PathUTF16("South Shore"));
    Settle();
    EXPECT_EQ(ShownRows(), (Rows{"More", "Other"}));
}

TEST_F(DirectoryViewTest, BothTreesSortAlikeAndClosedFoldersFollow) {
    Rows byName{"Reels"}, bySize{"Reels"};
    for (int i = 10; i < 70; ++i) {
        MakeProject("Reels/Reel " + std::to_string(i), std::string(std::size_t(100 - i), 'x'));
        byName.push_back("  Reel " + std::to_string(i));
        bySize.insert(bySize.begin() + 1, byName.back());
    }
    OpenProduction();
    OpenFolder("Reels");
    Tree()->CloseRow(RowOf("Reels").get());
    const auto sortInSearch = [&](ColumnID column, bool isAscending, const Rows& rows) {
        TypeSearch(QStringLiteral("reel "));
        SearchView().GetHeaderRow()->SetSortColumn(column);
        SearchView().GetHeaderRow()->SetSortDirection(isAscending);
        SearchView().UpdateOpenRows();
        EXPECT_TRUE(ShowsHits(rows));
        TypeSearch({});
        OpenFolder("Reels");
        EXPECT_TRUE(Shows(rows));
        Tree()->CloseRow(RowOf("Reels").get());
    };
    sortInSearch(Columns::kSizeColumnID, true, bySize);
    // Nobody holds them: their names tell.
    sortInSearch(Columns::kLockedColumnID, false, byName);
    sortInSearch(Columns::kLockedColumnID, true, byName);
}

TEST_F(DirectoryViewTest, NothingReachesTheRowsWhileUpdatesArePaused) {
    constexpr long kNfs = 0x6969;
    for (const bool isPolled : {false, true}) {
        if (isPolled) mDisk.SetVolumeType(kNfs);
        OpenProduction(isPolled ? "South Shore" : "North Shore");
        DirectoryView().GetHeaderRow()->SetSortColumn(Columns::kNameColumnID);
        Make({"Reel 1", "Reels/A", "Closed/B"});
        ASSERT_TRUE(Shows({"Closed", "Reel 1", "Reels"}));
        OpenFolder("Reels");
        DirectoryView().GetHeaderRow()->SetSortColumn(Columns::kLockedColumnID);
        ASSERT_TRUE(Shows({"Closed", "Reels", "  A", "Reel 1"}));
        desk::Production::Instance().PausePanelUpdates(true);
        Make({"Reel 2", "Reels/B", "Reels/Gone"});
        OtherUserLocks("Reel 1", u"a colleague");
        Tree()->OpenRow(RowOf("Closed").get());
        RemoveProject("Reels/Gone");
        // Until the next poll has found all.
        mMain.Advance(std::chrono::seconds(3));
        Settle();
        const auto nameCell = [this] { return RowOf("Reel 1")->GetCellView(0)->GetChildren().front(); };
        const RefPtr<UI_Node> cellBefore = nameCell();
        const desk::OpenProjectRef project = OpenProject("Reel 1");
        EXPECT_EQ(nameCell(), cellBefore);
        EXPECT_EQ(ShownRows(), (Rows{"Closed", "Reels", "  A", "Reel 1"}));
        EXPECT_EQ(Says("Reel 1"), "Reel 1, open");
        TypeSearch(QStringLiteral("reel"));
        MakeProject("Reel 3");
        mMain.Advance(std::chrono::seconds(3));
        Settle();
        EXPECT_EQ(std::ranges::count(ShownHits(), "Reel 3"), 0);
        desk::Production::Instance().PausePanelUpdates(false);
        EXPECT_TRUE(ShowsHits({"Reels", "Reel 2", "Reel 3", "Reel 1"}));
        TypeSearch({});
        EXPECT_TRUE(Shows({"Closed", "  B", "Reels", "  A", "  B", "Reel 2", "Reel 3", "Reel 1"}));
        EXPECT_EQ(Says("Reel 1"), "Reel 1, open, locked by a colleague");
        desk::OpenProjectList::Instance().Remove(project);
    }
}

TEST_F(DirectoryViewTest, AnItemThatIsToBeRenamedIsSelectedWhenItsRowComes) {
    for (int i = 0; i < 2500; ++i) MakeProject("Long/Reel " + std::to_string(i));
    OpenProductionWith({"Short/Reel 1"});
    for (const std::string folder : {"Long", "Short"}) {
        mTabView->SetDeferredRenameRowPath(PathOf(folder + "/Gone.zuproj"));
        OpenFolder(folder);
        EXPECT_TRUE(mTabView->GetDeferredRenameRowPath().empty()) << "all has come, and it was not there";
        Tree()->CloseRow(RowOf(folder).get());
    }
    MakeProject("Reel 1");
    mTabView->SetDeferredRenameRowPath(PathOf("Reel 2.zuproj"));
    MakeProject("Reel 2");
    ASSERT_TRUE(Shows({"Long", "Reel 1", "Reel 2", "Short"}));
    Settle();
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{"Reel 2"});
    EXPECT_TRUE(mTabView->GetDeferredRenameRowPath().empty());
}

TEST_F(DirectoryViewTest, SelectAllLeavesTheTrashOut) {
    MakeProduction();
    OpenProductionWith({"Trash/Old"});
    OpenFolder("Trash");
    EXPECT_TRUE(Send(57642));
    EXPECT_EQ(SelectedNames(), (std::vector<std::string>{"Empty", "Reel 9", "Reel 10", "Rushes"}));
    EXPECT_EQ(SelectionCount(), "4 of 6 items selected");
    EXPECT_TRUE(Send(11303));
    EXPECT_EQ(SelectedNames(), std::vector<std::string>{});
    EXPECT_EQ(SelectionCount(), "6 items");
}

TEST_F(DirectoryViewTest, RowsOfAClosedFolderFollowAnotherSortColumnWhenItOpens) {
    for (int i = 10; i < 99; ++i) MakeProject("Reels/P " + std::to_string(i), std::string(i, 'x'));
    OpenProduction();
    mDisk.ResetCounts();
    OpenFolder("Reels");
    DirectoryView().SelectAll();
    Settle();
    EXPECT_LT(mDisk.Count(Operation::Status), 60) << "whether they may be deleted is asked of none";
    Tree()->CloseRow(RowOf("Reels").get());
    mDisk.ResetCounts();
    DirectoryView().GetHeaderRow()->SetSortColumn(Columns::kSizeColumnID);
    DirectoryView().GetHeaderRow()->SetSortDirection(false);
    DirectoryView().UpdateOpenRows();
    Settle();
    EXPECT_EQ(mDisk.Count(Operation::Status), 0) << "nobody sees them";
    OpenFolder("Reels");
    EXPECT_TRUE(Shows([&] { return ShownRows()[1] == "  P 98"; })) << "the largest, which nobody has seen";
}

TEST_F(DirectoryViewTest, AnEmptyPlaceOffersWhatCanBeDoneThere) {
    const auto offered = [this] {
        mFrame.Window().grab();
        Settle();
        std::string labels;
        for (const auto* button : TreeWidget().findChildren<QPushButton*>())
            if (button->isVisible()) labels += button->text().toStdString() + '|';
        return labels;
    };
    OpenPanel();
    EXPECT_EQ(offered(), "Open Production…|");
    OpenProductionWith({"Trash/Old"});
    EXPECT_EQ(offered(), "New Project|Add Project…|");
    MakeProject("A");
    ASSERT_TRUE(Shows({"A", "Trash"}));
    EXPECT_EQ(offered(), "");
}

}  // namespace HandlerSharedProjects
