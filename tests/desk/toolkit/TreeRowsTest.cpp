#include "tests/desk/toolkit/TreeFixture.h"

namespace {

/// Counts what the model tells its views.
struct ModelSignals {
    explicit ModelSignals(QAbstractItemModel& model) {
        mConnections = {
            QObject::connect(&model, &QAbstractItemModel::rowsInserted, &mContext, [this] { ++mInserted; }),
            QObject::connect(&model, &QAbstractItemModel::rowsRemoved, &mContext, [this] { ++mRemoved; }),
            QObject::connect(&model, &QAbstractItemModel::layoutChanged, &mContext,
                             [this] { ++mLayoutChanged; }),
            QObject::connect(&model, &QAbstractItemModel::modelReset, &mContext, [this] { ++mReset; })};
    }
    QObject mContext;
    std::vector<QMetaObject::Connection> mConnections;
    int mInserted = 0, mRemoved = 0, mLayoutChanged = 0, mReset = 0;
};

using TreeRowsTest = TreeFixture;

TEST_F(TreeRowsTest, AppendedRowsShowAfterLayoutSortedInOneStep) {
    const host::RowRef hidden = Append(nullptr, "b");
    Append(nullptr, "Trash/");
    Append(nullptr, "a");
    EXPECT_EQ(mTree->CountOpenedRows(), 0u);
    EXPECT_EQ(mTree->GetTopLevelRows().size(), 3u);
    mTree->SelectRow(hidden.get(), true, false, true);
    EXPECT_EQ(mTree->CountSelectedRows(), 0u) << "a row that is not laid out cannot be selected";

    ModelSignals heard(*View().model());
    mTree->LayoutAfterAppendRow(nullptr);
    EXPECT_EQ(Shown(), (Rows{"a", "b", "Trash/"}));
    EXPECT_EQ(ShownByView(), Shown());
    EXPECT_EQ(heard.mInserted, 1);
    EXPECT_EQ(heard.mReset + heard.mLayoutChanged + heard.mRemoved, 0);
    mTree->LayoutAfterAppendRow(nullptr);
    EXPECT_EQ(heard.mInserted, 1) << "nothing new, nothing told";
}

TEST_F(TreeRowsTest, PartsInOrderAreAppendedAndAskEachNewKeyOnce) {
    ModelSignals heard(*View().model());
    for (int part = 0; part < 5; ++part) {
        mCountOfKeys = 0;
        Add(nullptr, Names("p", part * 2000, 2000));
        EXPECT_LE(mCountOfKeys, 2001);
    }
    EXPECT_EQ(heard.mInserted, 5);
    EXPECT_EQ(heard.mLayoutChanged + heard.mReset, 0);
    EXPECT_EQ(NamesOf(mTree->GetOpenedRows()), Names("p", 0, 10000));
    EXPECT_EQ(ShownByView(), Names("p", 0, 10000));
}

TEST_F(TreeRowsTest, ScatteredRowsAreMergedIntoAScrolledTreeInPlace) {
    Add(nullptr, Names("p", 0, 1000, 2));
    const host::RowRef folder = Add(nullptr, {"p00500/"})[0];
    Add(folder.get(), {"inside"});
    mTree->OpenRow(folder.get());
    const host::RowRef selected = Find("p00800");
    mTree->SelectRow(selected.get(), true, false, false);
    ScrollTo(250 * 25 + 7);
    const host::RowRef top = mTree->GetOpenedRow(250);

    ModelSignals heard(*View().model());
    Add(nullptr, Names("p", 1, 1000, 2));
    Settle();
    EXPECT_EQ(heard.mInserted, 1);
    EXPECT_EQ(heard.mLayoutChanged, 1);
    EXPECT_EQ(heard.mReset, 0);
    Rows expected = Names("p", 0, 2000);
    expected.insert(expected.begin() + 501, {"p00500/", "  inside"});
    EXPECT_EQ(Shown(), expected);
    EXPECT_EQ(ShownByView().size(), expected.size());
    EXPECT_EQ(mTree->GetSelectedRows(), host::RowVec{selected});
    EXPECT_TRUE(folder->IsOpen());
    EXPECT_EQ(ScrollBar().value(), IndexOf(top) * 25 + 7) << "the first visible row stays in its place";
}

TEST_F(TreeRowsTest, OneRowAmongManyIsOneInsertAtTheTopOfTheViewToo) {
    Add(nullptr, Names("p", 1, 5000));
    Settle();
    ModelSignals heard(*View().model());
    mCountOfKeys = 0;
    Add(nullptr, {"a first"});
    Settle();
    EXPECT_EQ(heard.mInserted, 1);
    EXPECT_EQ(heard.mLayoutChanged + heard.mReset, 0);
    EXPECT_LE(mCountOfKeys, 20) << "the others are searched, not all asked";
    EXPECT_EQ(ScrollBar().value(), 0);
    EXPECT_EQ(mTree->GetFirstVisibleOpenedRowIndex(), 0);
    EXPECT_EQ(DataOf(*mTree->GetOpenedRow(0)).mName, "a first");
}

TEST_F(TreeRowsTest, RowsBelowOnesThatAreNotLaidOutShowWithThem) {
    const host::RowRef folder = Append(nullptr, "folder/");
    const host::RowRef inner = Append(folder.get(), "inner/");
    Append(inner.get(), "leaf");
    mTree->LayoutAfterAppendRow(inner.get());
    mTree->LayoutAfterAppendRow(folder.get());
    mTree->OpenRow(inner.get());
    mTree->OpenRow(folder.get());
    EXPECT_EQ(mTree->CountOpenedRows(), 0u);
    mTree->LayoutAfterAppendRow(nullptr);
    EXPECT_EQ(Shown(), (Rows{"folder/", "  inner/", "    leaf"}));
    EXPECT_EQ(ShownByView().size(), 3u);
}

TEST_F(TreeRowsTest, RemovedRowsGoInFewStepsAndTakeTheirSelectionAlong) {
    Add(nullptr, Names("p", 0, 600));
    const host::RowRef folder = Add(nullptr, {"folder/"})[0];
    Add(folder.get(), {"x", "y"});
    mTree->OpenRow(folder.get());
    const host::RowRef inside = Find("x");
    const host::RowRef last = Find("p00599");
    host::RowVec every3rd;
    for (int i = 0; i < 600; i += 3) every3rd.push_back(Find(Names("p", i, 1)[0]));
    host::RowVec selection = every3rd;
    selection.insert(selection.begin(), {last, inside});
    mTree->SelectRows(selection);
    Settle();

    ModelSignals heard(*View().model());
    host::RowVec doomed = every3rd;
    doomed.insert(doomed.end(), {folder, inside});
    mTree->RemoveRows(doomed);
    EXPECT_LE(heard.mRemoved, 2);
    EXPECT_EQ(heard.mReset, 0);
    EXPECT_EQ(mTree->GetSelectedRows(), host::RowVec{last});
    EXPECT_EQ(mTree->CountOpenedRows(), 400u);
    EXPECT_EQ(ShownByView(), NamesOf(mTree->GetOpenedRows()));
    EXPECT_EQ(folder->CountChildRows(), 0u);
    EXPECT_FALSE(inside->GetParentRow());
    EXPECT_EQ(inside->GetCellView(0), nullptr);
    EXPECT_FALSE(mTree->IsRowVisible(inside.get()));
    mTree->RemoveRows(doomed);
    EXPECT_EQ(mTree->CountOpenedRows(), 400u) << "removing them again is harmless";
}

TEST_F(TreeRowsTest, RemoveRowsTakesTheTreesOwnList) {
    Add(nullptr, {"a", "b", "c"});
    Append(nullptr, "not laid out");
    mTree->RemoveRows(mTree->GetTopLevelRows());
    EXPECT_TRUE(mTree->GetTopLevelRows().empty());
    EXPECT_EQ(ShownByView(), Rows{});
}

TEST_F(TreeRowsTest, RemoveAllRowsEmptiesAndTellsOfTheLostSelection) {
    int heard = 0;
    mTree->SetRowsSelectionChangedCallback(
        Shared<void(const host::RowVec&)>([&heard](const host::RowVec& rows) { heard += rows.empty(); }));
    const host::RowVec rows = Add(nullptr, Names("p", 0, 100));
    mTree->SelectRows({rows[3]});
    Settle();
    mTree->RemoveAllRows();
    Settle();
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(mTree->CountOpenedRows(), 0u);
    EXPECT_EQ(mTree->CountSelectedRows(), 0u);
    Add(nullptr, {"again"});
    EXPECT_EQ(ShownByView(), Rows{"again"});
}

TEST_F(TreeRowsTest, FoldersShowATriangleWithoutChildrenAndCallWhenOpened) {
    Rows heard;
    mTree->SetRowOpenStateChangedCallback(
        Shared<void(const host::RowRef&, bool)>([&heard, this](const host::RowRef& row, bool open) {
            heard.push_back((open ? "open " : "close ") + DataOf(*row).mName);
            EXPECT_EQ(row->IsOpen(), open);
        }));
    const host::RowVec rows = Add(nullptr, {"folder/", "project"});
    const QModelIndex folder = View().model()->index(0, 0);
    const QModelIndex project = View().model()->index(1, 0);
    EXPECT_TRUE(View().model()->hasChildren(folder));
    EXPECT_FALSE(View().model()->hasChildren(project));
    EXPECT_TRUE(project.flags() & Qt::ItemNeverHasChildren);

    mTree->OpenRow(rows[1].get());
    mTree->OpenRow(rows[0].get());
    mTree->OpenRow(rows[0].get());
    EXPECT_EQ(heard, Rows{"open folder/"});
    Add(rows[0].get(), {"b", "a"});
    EXPECT_EQ(Shown(), (Rows{"folder/", "  a", "  b", "project"}));
    EXPECT_EQ(ShownByView().size(), 4u);
    mTree->CloseRow(rows[0].get());
    EXPECT_EQ(Shown(), (Rows{"folder/", "project"}));
    EXPECT_EQ(heard, (Rows{"open folder/", "close folder/"}));
    EXPECT_EQ(ShownByView().size(), 2u);

    mTree->SetRowHasCustomChild(rows[1].get(), true);
    EXPECT_TRUE(View().model()->hasChildren(project)) << "a custom child shows a triangle";
    mTree->OpenRow(rows[1].get());
    EXPECT_TRUE(mTree->IsRowOpen(rows[1].get()));
    EXPECT_EQ(mTree->CountOpenedRows(), 2u) << "and nothing below it";
    mTree->SetAllowChildren(false);
    EXPECT_FALSE(View().model()->hasChildren(folder));
}

TEST_F(TreeRowsTest, ACallbackMayAppendRowsWhileItsRowOpens) {
    mTree->SetRowOpenStateChangedCallback(
        Shared<void(const host::RowRef&, bool)>([this](const host::RowRef& row, bool open) {
            if (open && !row->HasChild()) Add(row.get(), {"child"});
        }));
    const host::RowRef folder = Add(nullptr, {"folder/"})[0];
    ClickTriangle(folder);
    EXPECT_EQ(Shown(), (Rows{"folder/", "  child"}));
    EXPECT_EQ(ShownByView().size(), 2u);
    EXPECT_EQ(mTree->CountSelectedRows(), 0u) << "a click on the triangle selects nothing";
}

}  // namespace
