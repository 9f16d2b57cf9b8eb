#include <random>
#include <set>

#include "tests/desk/toolkit/TreeFixture.h"

namespace {

/// What the tree should be: names in sorted folders.
struct ModelRow {
    std::string mName;
    bool mIsOpen = false;
    std::vector<ModelRow> mChildren;
};

class TreeRandomTest : public TreeFixture {
protected:
    TreeRandomTest() {
        mTree->SetRowVisibilityChangedCallback(Shared([this](const host::RowRef& row) {
            if (!mTree->IsRowVisible(row.get()))
                mVisible.erase(row);
            else
                EXPECT_TRUE(mVisible.insert(row).second) << "told once";
        }));
    }
    bool IsFolder(const ModelRow& row) const { return row.mName.ends_with('/'); }
    int Pick(int count) { return std::uniform_int_distribution<>(0, count - 1)(mRandom); }

    /// A folder of the model and its row: the root, or one reached by random steps down.
    std::pair<std::vector<ModelRow>*, host::RowRef> PickFolder() {
        std::vector<ModelRow>* rows = &mRows;
        host::RowRef row;
        while (Pick(3) > 0) {
            std::vector<ModelRow*> folders;
            for (ModelRow& each : *rows)
                if (IsFolder(each)) folders.push_back(&each);
            if (folders.empty()) break;
            ModelRow* folder = folders[std::size_t(Pick(int(folders.size())))];
            row = FindBelow(row ? row->GetChildRows() : mTree->GetTopLevelRows(), folder->mName);
            rows = &folder->mChildren;
        }
        return {rows, row};
    }

    void SortRows(std::vector<ModelRow>& rows) {
        std::stable_sort(rows.begin(), rows.end(), [this](const ModelRow& a, const ModelRow& b) {
            return mIsAscending ? a.mName < b.mName : b.mName < a.mName;
        });
        for (ModelRow& row : rows) SortRows(row.mChildren);
    }

    void AddShown(const std::vector<ModelRow>& rows, const std::string& indentation, Rows& shown) {
        for (const ModelRow& row : rows) {
            shown.push_back(indentation + row.mName);
            if (row.mIsOpen) AddShown(row.mChildren, indentation + "  ", shown);
        }
    }

    void AddRows() {
        const auto [rows, folder] = PickFolder();
        Rows names;
        for (int count = 1 + Pick(Pick(4) ? 6 : 60); count > 0; --count) {
            names.push_back("n" + std::to_string(mRandom() % 100000) + "_" + std::to_string(++mLastNumber) +
                            (Pick(3) ? "" : "/"));
            rows->push_back({names.back(), false, {}});
        }
        SortRows(*rows);
        Add(folder.get(), names);
    }

    void RemoveRows() {
        const auto [rows, folder] = PickFolder();
        host::RowVec doomed;
        std::erase_if(*rows, [&, folder = folder](const ModelRow& row) {
            if (Pick(3)) return false;
            doomed.push_back(FindBelow(folder ? folder->GetChildRows() : mTree->GetTopLevelRows(), row.mName));
            return true;
        });
        std::shuffle(doomed.begin(), doomed.end(), mRandom);
        mTree->RemoveRows(doomed);
        std::erase_if(mSelected, [this](const std::string& name) { return !Find(name); });
    }

    void ToggleRow() {
        const auto [rows, folder] = PickFolder();
        if (rows->empty()) return;
        ModelRow& row = (*rows)[std::size_t(Pick(int(rows->size())))];
        const host::RowRef found = Find(row.mName);
        if (IsFolder(row)) row.mIsOpen = !row.mIsOpen;
        if (found->IsOpen()) {
            mTree->CloseRow(found.get());
            std::erase_if(mSelected,
                          [&](const std::string& name) { return Find(name)->IsADescendent(*found); });
        } else {
            mTree->OpenRow(found.get());
        }
    }

    void SelectSome() {
        const host::RowVec opened = mTree->GetOpenedRows();
        host::RowVec chosen;
        std::sample(opened.begin(), opened.end(), std::back_inserter(chosen), 1 + Pick(20), mRandom);
        std::shuffle(chosen.begin(), chosen.end(), mRandom);
        mTree->SelectRows(chosen);
        mSelected = NamesOf(chosen);
    }

    void TurnSorting() {
        mIsAscending = !mIsAscending;
        SortRows(mRows);
        mHeader->SetSortDirection(mIsAscending);
        Settle();
    }

    void Check() {
        Rows expected;
        AddShown(mRows, "", expected);
        ASSERT_EQ(Shown(), expected);
        ASSERT_EQ(mTree->CountOpenedRows(), expected.size());
        for (std::string& name : expected) name.erase(0, name.find_first_not_of(' '));
        ASSERT_EQ(ShownByView(), expected);
        ASSERT_EQ(NamesOf(mTree->GetSelectedRows()), mSelected);
        Rows selected = ShownByView(true);
        Rows wanted = mSelected;
        std::sort(selected.begin(), selected.end());
        std::sort(wanted.begin(), wanted.end());
        ASSERT_EQ(selected, wanted);
    }

    /// The rows that the tree has told to be visible are those that the view shows.
    void CheckVisible() {
        Settle();
        std::erase_if(mVisible, [](const host::RowRef& row) { return !row->GetCellView(0); });
        std::set<host::RowRef> expected;
        const int bottom = ScrollBar().value() + View().viewport()->height() - 1;
        const int last = std::min(bottom / 25, int(mTree->CountOpenedRows()) - 1);
        for (int i = ScrollBar().value() / 25; i <= last && mTree->UI_IsShown(); ++i)
            expected.insert(mTree->GetOpenedRow(i));
        ASSERT_EQ(mVisible, expected);
        ASSERT_EQ(mTree->GetLastVisibleOpenedRowIndex(), expected.empty() ? -1 : last);
    }

    std::set<host::RowRef> mVisible;
    std::mt19937 mRandom{20261121};
    std::vector<ModelRow> mRows;
    Rows mSelected;
    bool mIsAscending = true;
    int mLastNumber = 0;
};

TEST_F(TreeRandomTest, FollowsASimpleModelThroughRandomSteps) {
    for (int step = 0; step < 300 && !HasFatalFailure(); ++step) {
        SCOPED_TRACE(step);
        const int kind = Pick(8);
        if (kind < 3)
            AddRows();
        else if (kind < 4)
            RemoveRows();
        else if (kind < 6)
            ToggleRow();
        else if (kind < 7)
            SelectSome();
        else
            TurnSorting();
        if (Pick(3) == 0) ScrollBar().setValue(Pick(ScrollBar().maximum() + 1));
        if (Pick(4) == 0) mWindow.grab();
        if (Pick(9) == 0) mTree->UI_SetBounds({0, 0, 600, float(100 + Pick(500))});
        if (Pick(9) == 0) mTree->UI_Show(!mTree->UI_IsShown());
        if (Pick(2) == 0) CheckVisible();
        Check();
    }
}

}  // namespace
