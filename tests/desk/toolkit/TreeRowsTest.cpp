#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeRowsTest : public TreeFixture {
protected:
    TreeRowsTest() {
        const auto note = [this](auto signal, const char* name) {
            QObject::connect(View().model(), signal, &mWindow, [this, name] { mHeard.push_back(name); });
        };
        note(&QAbstractItemModel::rowsInserted, "inserted");
        note(&QAbstractItemModel::rowsRemoved, "removed");
        note(&QAbstractItemModel::layoutChanged, "sorted");
        note(&QAbstractItemModel::modelReset, "reset");
    }
    /// What the model has told its views since the last call.
    Rows Heard() { return std::exchange(mHeard, {}); }

    Rows mHeard;
};

TEST_F(TreeRowsTest, InsertsInOneStepAndAsksFewKeys) {
    for (int part = 0; part < 5; ++part) {
        mCountOfKeys = 0;
        Add(nullptr, Names("p", part * 2000, 2000));
        EXPECT_LE(mCountOfKeys, 2001);
        EXPECT_EQ(Heard(), Rows{"inserted"});
    }
    mCountOfKeys = 0;
    Settle();
    Add(nullptr, {"a first"});
    Settle();
    EXPECT_LE(mCountOfKeys, 20) << "the others are searched, not all asked";
    EXPECT_EQ(Heard(), Rows{"inserted"});
    EXPECT_EQ(mTree->GetFirstVisibleOpenedRowIndex(), 0) << "shows though it stands above the view";
    Rows expected = Names("p", 0, 10000);
    expected.insert(expected.begin(), "a first");
    EXPECT_EQ(ShownByView(), expected);
}

TEST_F(TreeRowsTest, RemovedRowsGoInFewStepsAndAreNoLongerOfTheTree) {
    host::RowVec rows = Add(nullptr, Names("p", 0, 600));
    const host::RowRef folder = Add(nullptr, {"folder/"})[0];
    const host::RowRef inside = Add(folder.get(), {"x", "y"})[0];
    mTree->OpenRow(folder.get());
    host::RowVec doomed{folder, inside};
    for (std::size_t i = 0; i < 600; i += 3) doomed.push_back(rows[i]);
    mTree->SelectRows(doomed);
    Settle();
    Heard();
    mTree->RemoveRows(doomed);
    EXPECT_EQ(Heard(), (Rows{"sorted", "removed"}));
    EXPECT_FALSE(inside->GetParentRow());
    EXPECT_EQ(inside->GetCellView(0), nullptr);
    mTree->RemoveRows(doomed);
    EXPECT_EQ(mTree->CountOpenedRows(), 400u) << "removing them again is harmless";
    mTree->RemoveAllRows();
    Add(nullptr, {"again"});
    Append(nullptr, "not laid out");
    EXPECT_EQ(ShownByView(), Rows{"again"});
    mTree->RemoveRows(mTree->GetTopLevelRows());
    EXPECT_EQ(ShownByView(), Rows{}) << "the tree's own list was removed";
}

}  // namespace
