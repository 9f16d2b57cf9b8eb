#include "tests/desk/toolkit/TreeFixture.h"

namespace {

using TreeSortTest = TreeFixture;

TEST_F(TreeSortTest, AsksEachKeyOnceAndSaysNothingWhenTheOrderHolds) {
    const host::RowVec rows = Add(nullptr, Names("p", 0, 3000));
    Append(nullptr, "not laid out");
    int changes = 0;
    QObject::connect(View().model(), &QAbstractItemModel::layoutChanged, &mWindow, [&changes] { ++changes; });
    for (int i = 0; i < 3; ++i) {
        mCountOfKeys = 0;
        mTree->SortTree();
        EXPECT_EQ(mCountOfKeys, 3000);
    }
    EXPECT_EQ(changes, 0);
    ScrollTo(5003);
    DataOf(*rows[10]).mName = "z";
    mTree->SortTree();
    Settle();
    EXPECT_EQ(ScrollBar().value(), 5003);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(IndexOf(rows[10]), 2999);
    EXPECT_EQ(DataOf(*mTree->GetTopLevelRows().back()).mName, "not laid out");
}

TEST_F(TreeSortTest, RowsWithEqualKeysStandInTheOrderOfTheirNamesInBothDirections) {
    const host::RowVec rows = Add(nullptr, {"a", "b", "c", "d"});
    for (const host::RowRef& row : rows) DataOf(*row).mSize = DataOf(*row).mName == "c" ? "1" : "2";
    mHeader->SetSortColumn(kSizeColumn);
    EXPECT_EQ(Shown()[0], "a") << "sorts later, not at once";
    Settle();
    EXPECT_EQ(Shown(), (Rows{"c", "a", "b", "d"}));
    mHeader->SetSortDirection(false);
    Settle();
    EXPECT_EQ(Shown(), (Rows{"a", "b", "d", "c"}));
    Add(nullptr, {"Trash/"});
    EXPECT_EQ(Shown()[4], "Trash/") << "a new row goes to its place";
    // Whatever the order was before, and for rows that come later.
    for (int i = 0; i < 4; ++i) DataOf(*rows[std::size_t(i)]).mSize = std::to_string(i);
    mTree->SortTree();
    EXPECT_EQ(Shown()[0], "d");
    for (const host::RowRef& row : mTree->GetTopLevelRows()) DataOf(*row).mSize = "3";
    Append(nullptr, "bb");
    DataOf(*mTree->GetTopLevelRows().back()).mSize = "3";
    mTree->SortTree();
    mTree->LayoutAfterAppendRow(nullptr);
    EXPECT_EQ(Shown(), (Rows{"a", "b", "bb", "c", "d", "Trash/"}));
    // One that came before its key was known goes to its place when it is, though all keys are as they were.
    mTree->SortTree();
    mTree->RemoveRows({rows[0]});
    const host::RowVec late = Add(nullptr, {"cc"});
    EXPECT_EQ(Shown().back(), "cc");
    DataOf(*late[0]).mSize = "3";
    mTree->SortTree();
    EXPECT_EQ(Shown(), (Rows{"b", "bb", "c", "cc", "d", "Trash/"}));
    mHeader->SetSortColumn(0x3F3F3F3F);
    EXPECT_EQ(mHeader->GetSortColumn(), kSizeColumn) << "an unknown column changes nothing";
}

TEST_F(TreeSortTest, ClickingAHeaderTellsFirstThenSorts) {
    const host::RowVec rows = Add(nullptr, {"a", "b"});
    DataOf(*rows[0]).mSize = "2";
    DataOf(*rows[1]).mSize = "1";
    Rows heard;
    mHeader->SetUserChangedSortCallback(Shared([&](host::ColumnID column, bool ascending) {
        heard.push_back((column == kSizeColumn ? "size" : "name") + std::string(ascending ? "+ " : "- ") +
                        Shown()[0]);
    }));
    for (const int section : {1, 1, 0})
        QTest::mouseClick(View().header()->viewport(), Qt::LeftButton, {},
                          {View().header()->sectionViewportPosition(section) + 30, 10});
    mHeader->SetSortDirection(false);
    Settle();
    EXPECT_EQ(heard, (Rows{"size+ a", "size- b", "name+ a"})) << "what the program sets is not told";
}

}  // namespace
