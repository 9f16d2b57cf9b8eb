#include "tests/desk/toolkit/TreeFixture.h"

namespace {

class TreeCostTest : public TreeFixture {
protected:
    TreeCostTest() {
        // It asks for everything itself.
        mTester.reset();
        mTree->SetCanRowHaveChildrenFunction(Shared([this](const host::RowRef& row) {
            ++mCalls;
            return DataOf(*row).mName.ends_with('/');
        }));
        mTree->SetCellSortDataFunction(Shared([this](const host::RowRef& row, unsigned column) {
            ++mCalls;
            mSizeKeys += mHeader->GetColumnAt(column) == kSizeColumn;
            const NamedRow& data = DataOf(*row);
            return host::AsciiToUTF16(mHeader->GetColumnAt(column) == kSizeColumn ? data.mSize : data.mName);
        }));
        mTree->SetRowVisibilityChangedCallback(Shared([this](const host::RowRef&) { ++mCalls; }));
    }

    int TakeCalls() {
        Settle();
        mWindow.grab();
        return std::exchange(mCalls, 0);
    }

    bool IsSortedBySize(bool isAscending) {
        return std::ranges::is_sorted(mTree->GetOpenedRows(), [&](const auto& a, const auto& b) {
            const NamedRow &x = DataOf(*a), &y = DataOf(*b);
            if (x.mSize != y.mSize) return (x.mSize < y.mSize) == isAscending;
            return x.mName < y.mName;
        });
    }

    int mCalls = 0;
    int mSizeKeys = 0;
};

TEST_F(TreeCostTest, KeysOfManyRowsAreOneQuestionAndOfRowsInOrderNone) {
    int questions = 0;
    mTree->SetRowsSortDataFunction(Shared([&](std::span<const host::RowRef> rows, unsigned column) {
        ++questions;
        host::UTF16StringVec keys;
        for (const host::RowRef& row : rows)
            keys.push_back(host::AsciiToUTF16(
                mHeader->GetColumnAt(column) == kSizeColumn ? DataOf(*row).mSize : DataOf(*row).mName));
        return keys;
    }));
    for (const bool isAscending : {true, false}) {
        mTree->RemoveAllRows();
        mHeader->SetSortDirection(isAscending);
        for (int part = 0; part < 3; ++part) {
            TakeCalls();
            for (const std::string& name : Names("p", 100 * part, 100)) Append(nullptr, name);
            mTree->LayoutAfterAppendRow(nullptr, true);
            // Whether each may have children, which come to be seen, and the keys that the first one met.
            EXPECT_LE(TakeCalls(), 100 + 45 + 20);
        }
        EXPECT_TRUE(std::ranges::is_sorted(mTree->GetOpenedRows(), [&](const auto& a, const auto& b) {
            return (DataOf(*a).mName < DataOf(*b).mName) == isAscending && a != b;
        }));
    }
    EXPECT_EQ(questions, 0);
    TakeCalls();
    const Rows byName = Names("p", 0, 300);
    const auto sort = [&](host::ColumnID column, bool isAscending) {
        mHeader->SetSortColumn(column);
        mHeader->SetSortDirection(isAscending);
        Settle();
        Rows names;
        for (const host::RowRef& row : mTree->GetOpenedRows()) names.push_back(DataOf(*row).mName);
        return names;
    };
    // All have the same size: the names decide, whose order is known by now.
    EXPECT_EQ(sort(kSizeColumn, true), byName);
    EXPECT_EQ(sort(kSizeColumn, false), byName);
    EXPECT_EQ(sort(kNameColumn, true), byName);
    EXPECT_EQ(sort(kNameColumn, false), Rows(byName.rbegin(), byName.rend()));
    EXPECT_EQ(sort(kSizeColumn, false), byName);
    EXPECT_LE(questions, 4) << "of sizes alone";
    EXPECT_LE(std::exchange(mCalls, 0), 5 * 25) << "of rows that come to be seen";
    // Rows that come meanwhile find their places.
    sort(kSizeColumn, true);
    Add(nullptr, {"p00007x"});
    const Rows names = sort(kNameColumn, true);
    EXPECT_TRUE(std::ranges::is_sorted(names));
    EXPECT_EQ(names.size(), 301u);
}

TEST_F(TreeCostTest, EqualKeysAreSortedByNameAfterAnyOrder) {
    const host::RowVec rows = Add(nullptr, Names("p", 0, 300));
    for (std::size_t i = 0; i < rows.size(); ++i) DataOf(*rows[i]).mSize = std::to_string(i * 7 % 10);
    const auto sort = [&](host::ColumnID column, bool isAscending) {
        mHeader->SetSortColumn(column);
        mHeader->SetSortDirection(isAscending);
        mTree->SortTree();
    };
    const auto sizesOf = [&](std::span<const host::RowRef> asked, unsigned column) {
        std::vector<std::uint64_t> sizes;
        if (mHeader->GetColumnAt(column) != kSizeColumn) return sizes;
        for (const host::RowRef& row : asked) sizes.push_back(std::stoul(DataOf(*row).mSize));
        return sizes;
    };
    for (const auto& [isAscending, areNumbers] :
         {std::pair{true, false}, {false, false}, {true, true}, {false, true}}) {
        if (areNumbers) mTree->SetRowsSortNumbersFunction(Shared(sizesOf));
        // Names fall: rows of one size do not stand by their names before.
        for (const bool isAfterFallingNames : {false, true}) {
            sort(kNameColumn, !isAfterFallingNames);
            sort(kSizeColumn, isAscending);
            EXPECT_TRUE(IsSortedBySize(isAscending));
            // A row whose key changes goes to its place, and hardly any other is asked.
            TakeCalls();
            for (const std::size_t changed : {0u, 150u, 299u}) {
                DataOf(*rows[changed]).mSize = std::to_string(changed * 3 % 10 + isAscending);
                mTree->SortRows({rows[changed]});
                EXPECT_TRUE(IsSortedBySize(isAscending)) << changed;
            }
            EXPECT_LE(TakeCalls(), 3 * 20 + 2 * 21) << "with those that come to be seen";
            EXPECT_EQ(std::exchange(mSizeKeys, 0) == 0, areNumbers) << "numbers stand in for keys";
        }
    }
    // One that nobody has named has changed too, and leads astray whoever looks for a place.
    const auto opened = mTree->GetOpenedRows();
    DataOf(*opened[149]).mSize = "9";
    DataOf(*opened[298]).mSize = "8";
    mTree->SortRows({opened[298]});
    EXPECT_TRUE(IsSortedBySize(false)) << "with the other";
    DataOf(*rows[7]).mSize = "3";
    mTree->SortRows(rows);
    EXPECT_TRUE(IsSortedBySize(false)) << "all at once";
}

TEST_F(TreeCostTest, KeysOfVeryManyRowsComeInPartsAndTheLastChoiceHolds) {
    Add(nullptr, Names("p", 0, 40'000));
    std::size_t most = 0;
    std::function<void()> meanwhile;
    mTree->SetRowsSortNumbersFunction(Shared([&](std::span<const host::RowRef> asked, unsigned column) {
        most = std::max(most, asked.size());
        std::vector<std::uint64_t> numbers;
        if (mHeader->GetColumnAt(column) != kSizeColumn) return numbers;
        for (const host::RowRef& row : asked) numbers.push_back(std::stoul(DataOf(*row).mName.substr(1)) % 9);
        if (meanwhile) mMainThread.Post(std::exchange(meanwhile, {}));
        return numbers;
    }));
    for (const host::RowRef& row : mTree->GetTopLevelRows())
        DataOf(*row).mSize = std::to_string(std::stoul(DataOf(*row).mName.substr(1)) % 9);
    const auto sort = [&](bool isAscending) {
        mHeader->SetSortDirection(isAscending);
        mHeader->SetSortColumn(kSizeColumn);
        mTree->SortTree();
        EXPECT_TRUE(mTree->IsSorting());
        for (int i = 0; i < 20 && mTree->IsSorting(); ++i) Settle();
        EXPECT_FALSE(mTree->IsSorting() || meanwhile);
    };
    meanwhile = [&] { mTree->RemoveRows({mTree->GetOpenedRow(3), mTree->GetOpenedRow(20'000)}); };
    sort(true);
    EXPECT_TRUE(IsSortedBySize(true));
    EXPECT_LE(most, 8192u);
    meanwhile = [&] { mHeader->SetSortColumn(kNameColumn); };
    sort(false);
    EXPECT_TRUE(std::ranges::is_sorted(mTree->GetOpenedRows(), std::greater(),
                                       [](const auto& row) { return DataOf(*row).mName; }));
    meanwhile = [&] { mTree->RemoveAllRows(); };
    sort(true);
}

}  // namespace
