#include <set>

#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeVisibilityTest : public TreeFixture {
protected:
    TreeVisibilityTest() {
        mTree->SetRowVisibilityChangedCallback(
            Shared<void(const host::RowRef&)>([this](const host::RowRef& row) {
                ++mCalls;
                if (mTree->IsRowVisible(row.get()))
                    mVisible.insert(DataOf(*row).mName);
                else
                    mVisible.erase(DataOf(*row).mName);
            }));
    }

    /// What the callbacks told, what the rows say, and what scrolling and sizes amount to, must be one.
    void ExpectVisible(int first, int last) {
        Settle();
        std::set<std::string> expected;
        for (int i = first; i <= last; ++i) expected.insert(DataOf(*mTree->GetOpenedRow(i)).mName);
        EXPECT_EQ(mVisible, expected);
        EXPECT_EQ(mTree->GetFirstVisibleOpenedRowIndex(), expected.empty() ? -1 : first);
        EXPECT_EQ(mTree->GetLastVisibleOpenedRowIndex(), expected.empty() ? -1 : last);
        for (int i = 0; i < int(mTree->CountOpenedRows()); ++i)
            EXPECT_EQ(mTree->IsRowVisible(mTree->GetOpenedRow(i).get()), i >= first && i <= last) << i;
    }

    int RowsInView() { return View().viewport()->height() / 25; }

    std::set<std::string> mVisible;
    int mCalls = 0;
};

TEST_F(TreeVisibilityTest, FollowsScrollingResizingAndHiding) {
    Add(nullptr, Names("p", 0, 100));
    const int page = RowsInView();
    ASSERT_GT(page, 10);
    ASSERT_EQ(View().viewport()->height() % 25, 0) << "the fixture's window shows whole rows";
    ExpectVisible(0, page - 1);
    mCalls = 0;
    ScrollBar().setValue(25);
    ExpectVisible(1, page);
    EXPECT_EQ(mCalls, 2) << "one row left, one came";
    ScrollBar().setValue(26);
    ExpectVisible(1, page + 1);
    mTree->UI_SetBounds({0, 0, 600, 10 * 25});
    ExpectVisible(1, (26 + View().viewport()->height() - 1) / 25);
    mTree->UI_Show(false);
    ExpectVisible(0, -1);
    mTree->UI_Show(true);
    ExpectVisible(1, (26 + View().viewport()->height() - 1) / 25);
    mWindow.hide();
    ExpectVisible(0, -1);
}

TEST_F(TreeVisibilityTest, FollowsOpeningClosingAndChangesOfRows) {
    const host::RowRef folder = Add(nullptr, {"folder/"})[0];
    Add(nullptr, Names("p", 0, 100));
    Add(folder.get(), Names("x", 0, 5));
    const int page = RowsInView();
    ExpectVisible(0, page - 1);
    mTree->OpenRow(folder.get());
    ExpectVisible(0, page - 1);
    EXPECT_TRUE(mVisible.contains("x00004"));
    mTree->CloseRow(folder.get());
    ExpectVisible(0, page - 1);
    EXPECT_FALSE(mVisible.contains("x00004"));
    mTree->RemoveRows({mTree->GetOpenedRow(2)});
    mVisible.erase("p00001");
    ExpectVisible(0, page - 1);
    mHeader->SetSortDirection(false);
    ExpectVisible(0, page - 1);
    EXPECT_TRUE(mVisible.contains("p00099"));
    mTree->RemoveAllRows();
    Settle();
    EXPECT_EQ(mTree->GetFirstVisibleOpenedRowIndex(), -1);
}

TEST_F(TreeVisibilityTest, IsKnownBeforePaintingAndCallbacksMayFillCellsAndSort) {
    mTree->SetRowVisibilityChangedCallback(Shared<void(const host::RowRef&)>([this](const host::RowRef& row) {
        if (!mTree->IsRowVisible(row.get())) return;
        row->GetCellView(0)->AddChild(host::RefPtr<host::UI_Node>(new host::UI_StaticText(u"x")));
        mTree->SortTree();
        mTree->RedrawRow(row.get());
    }));
    const host::RowVec rows = Add(nullptr, Names("p", 0, 100));
    mWindow.grab();
    EXPECT_TRUE(mTree->IsRowVisible(rows[0].get()));
    EXPECT_EQ(rows[0]->GetCellView(0)->GetChildren().size(), 1u);
    ScrollBar().setValue(2000);
    mWindow.grab();
    EXPECT_EQ(rows[0]->GetCellView(0)->GetChildren().size(), 0u) << "the cells of rows that left are empty";
    EXPECT_EQ(rows[85]->GetCellView(0)->GetChildren().size(), 1u);
}

TEST_F(TreeVisibilityTest, CallbacksMayRemoveTheRowsTheyAreToldOf) {
    mTree->SetRowVisibilityChangedCallback(Shared<void(const host::RowRef&)>([this](const host::RowRef& row) {
        if (DataOf(*row).mName.ends_with('3')) mTree->RemoveRows({row});
    }));
    Add(nullptr, Names("p", 0, 50));
    mWindow.grab();
    Settle();
    for (int i = mTree->GetFirstVisibleOpenedRowIndex(); i <= mTree->GetLastVisibleOpenedRowIndex(); ++i)
        EXPECT_FALSE(DataOf(*mTree->GetOpenedRow(i)).mName.ends_with('3'));
    EXPECT_EQ(ShownByView(), NamesOf(mTree->GetOpenedRows()));
}

TEST_F(TreeVisibilityTest, ScrollsRowsIntoViewAndOpensWhatIsAbove) {
    Add(nullptr, Names("p", 0, 200));
    const host::RowRef folder = Add(nullptr, {"q/"})[0];
    const host::RowRef inner = Add(folder.get(), {"inner/"})[0];
    const host::RowRef leaf = Add(inner.get(), {"leaf"})[0];
    Add(nullptr, Names("r", 0, 200));
    const int height = View().viewport()->height();
    mTree->ScrollRowIntoView(mTree->GetOpenedRow(100).get(), false, 0, false);
    EXPECT_EQ(ScrollBar().value(), 101 * 25 - height) << "as little as needed";
    mTree->ScrollRowIntoView(mTree->GetOpenedRow(90).get(), false, 0, false);
    EXPECT_EQ(ScrollBar().value(), 101 * 25 - height) << "what shows wholly stays";
    mTree->ScrollRowIntoView(mTree->GetOpenedRow(50).get(), false, 10, false);
    EXPECT_EQ(ScrollBar().value(), 50 * 25 - 10);
    mTree->ScrollRowIntoView(leaf.get(), false, 0, false);
    EXPECT_EQ(ScrollBar().value(), 50 * 25 - 10) << "hidden, and asked not to open";
    mTree->ScrollRowIntoView(leaf.get(), false, 0, true);
    EXPECT_TRUE(inner->IsOpen());
    EXPECT_EQ(ScrollBar().value(), 203 * 25 - height);
    EXPECT_EQ(mTree->GetScrollView().mVisibleRect.y, float(ScrollBar().value()));
    EXPECT_EQ(mTree->GetScrollView().mVisibleRect.height, float(height));
}

TEST_F(TreeVisibilityTest, ARowAskedForWhileHiddenIsScrolledToWhenShown) {
    mWindow.hide();
    const host::RowVec rows = Add(nullptr, Names("p", 0, 200));
    mTree->SelectRow(rows[150].get(), true, true, false);
    Settle();
    mWindow.show();
    Settle();
    EXPECT_TRUE(mTree->IsRowVisible(rows[150].get()));
    EXPECT_EQ(ScrollBar().value(), 151 * 25 - View().viewport()->height());
}

TEST_F(TreeVisibilityTest, ZoomKeepsTheFirstVisibleRowInPlace) {
    Add(nullptr, Names("p", 0, 1000));
    ScrollTo(400 * 25 + 5);
    mTree->SetRowHeight(36.25f);
    EXPECT_EQ(mTree->GetRowHeight(), 36.25f);
    EXPECT_EQ(mTree->GetFirstVisibleOpenedRowIndex(), 400);
    EXPECT_EQ(ScrollBar().value(), 400 * 36 + 7);
    EXPECT_EQ(View().visualRect(View().model()->index(400, 0)).height(), 36);
    mTree->SetRowHeight(70);
    Settle();
    EXPECT_EQ(mTree->GetFirstVisibleOpenedRowIndex(), 400);
    EXPECT_EQ(DataOf(*mTree->GetOpenedRow(400)).mName, "p00400");
}

TEST_F(TreeVisibilityTest, ChangesAboveTheViewDoNotMoveWhatIsSeen) {
    const host::RowRef folder = Add(nullptr, {"a/"})[0];
    Add(folder.get(), Names("x", 0, 30));
    Add(nullptr, Names("p", 0, 300));
    ScrollTo(100 * 25 + 3);
    const host::RowRef top = mTree->GetOpenedRow(100);
    const auto expectTop = [&] {
        Settle();
        EXPECT_EQ(ScrollBar().value(), IndexOf(top) * 25 + 3);
    };
    mTree->OpenRow(folder.get());
    expectTop();
    mTree->RemoveRows({folder->GetChildRows()[3], folder->GetChildRows()[7]});
    expectTop();
    mTree->CloseRow(folder.get());
    expectTop();
}

TEST_F(TreeVisibilityTest, BusySpinnerShowsOnlyForLongWork) {
    auto* spinner = View().findChild<QWidget*>(QStringLiteral("BusySpinner"));
    ASSERT_TRUE(spinner);
    using std::chrono::milliseconds;
    mTree->BeginBusy();
    mMainThread.Advance(milliseconds(100));
    mTree->EndBusy();
    mTree->BeginBusy();
    mTree->BeginBusy();
    mMainThread.Advance(milliseconds(149));
    EXPECT_FALSE(spinner->isVisible()) << "a new busy time counts anew";
    mMainThread.Advance(milliseconds(1));
    EXPECT_TRUE(spinner->isVisible());
    mTree->EndBusy();
    EXPECT_TRUE(spinner->isVisible());
    mTree->EndBusy();
    EXPECT_FALSE(spinner->isVisible());
    EXPECT_EQ(mMainThread.CountDelayed(), 0u) << "no timer runs on";
}

}  // namespace
