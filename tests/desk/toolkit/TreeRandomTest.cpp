#include <map>
#include <random>
#include <ranges>
#include <set>

#include "tests/desk/toolkit/TreeFixture.h"

namespace {

/// What the tree should be: rows by their names, which are each other's in no two places.
struct ModelRow {
    bool mIsOpen = false;
    std::map<std::string, ModelRow> mChildren;
};
using ModelRows = std::map<std::string, ModelRow>;

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
    static bool IsFolder(const ModelRows::value_type& row) { return row.first.ends_with('/'); }
    int Pick(int count) { return std::uniform_int_distribution<>(0, count - 1)(mRandom); }

    /// A folder of the model and its row: the root, or one reached by random steps down.
    std::pair<ModelRows*, host::RowRef> PickFolder() {
        ModelRows* rows = &mRows;
        host::RowRef row;
        while (Pick(3) > 0) {
            std::vector<ModelRows::value_type*> folders;
            for (auto& each : *rows)
                if (IsFolder(each)) folders.push_back(&each);
            if (folders.empty()) break;
            auto& [name, folder] = *folders[std::size_t(Pick(int(folders.size())))];
            row = Find(name);
            rows = &folder.mChildren;
        }
        return {rows, row};
    }

    void AddShown(const ModelRows& rows, const std::string& indentation, Rows& shown) {
        const auto add = [&](const ModelRows::value_type& row) {
            shown.push_back(indentation + row.first);
            if (row.second.mIsOpen) AddShown(row.second.mChildren, indentation + "  ", shown);
        };
        if (mIsAscending) return void(std::ranges::for_each(rows, add));
        std::ranges::for_each(rows | std::views::reverse, add);
    }

    void AddRows() {
        const auto [rows, folder] = PickFolder();
        Rows names;
        for (int count = 1 + Pick(Pick(4) ? 6 : 60); count > 0; --count) {
            names.push_back("n" + std::to_string(mRandom() % 100000) + "_" + std::to_string(++mLastNumber) +
                            (Pick(3) ? "" : "/"));
            rows->try_emplace(names.back());
        }
        Add(folder.get(), names);
    }

    void RemoveRows() {
        host::RowVec doomed;
        std::erase_if(*PickFolder().first, [&](const auto& row) {
            if (Pick(3)) return false;
            doomed.push_back(Find(row.first));
            return true;
        });
        std::shuffle(doomed.begin(), doomed.end(), mRandom);
        mTree->RemoveRows(doomed);
        std::erase_if(mSelected, [this](const std::string& name) { return !Find(name); });
    }

    void ToggleRow() {
        ModelRows& rows = *PickFolder().first;
        if (rows.empty()) return;
        auto& row = *std::next(rows.begin(), Pick(int(rows.size())));
        const host::RowRef found = Find(row.first);
        if (IsFolder(row)) row.second.mIsOpen = !row.second.mIsOpen;
        if (!found->IsOpen()) return mTree->OpenRow(found.get());
        mTree->CloseRow(found.get());
        std::erase_if(mSelected, [&](const std::string& name) { return Find(name)->IsADescendent(*found); });
    }

    void SelectSome() {
        const host::RowVec opened = mTree->GetOpenedRows();
        host::RowVec chosen;
        std::sample(opened.begin(), opened.end(), std::back_inserter(chosen), 1 + Pick(20), mRandom);
        std::shuffle(chosen.begin(), chosen.end(), mRandom);
        mTree->SelectRows(chosen);
        mSelected = NamesOf(chosen);
    }

    void SelectMost() {
        const auto isMeant = [](const host::RowRef& row) {
            return DataOf(*row).mName.find('7') == std::string::npos;
        };
        mTree->SelectOpenedRows(isMeant);
        host::RowVec meant = mTree->GetOpenedRows();
        std::erase_if(meant, std::not_fn(isMeant));
        mSelected = NamesOf(meant);
    }

    /// As with Ctrl and the mouse, one after another.
    void ToggleSelected() {
        for (int count = Pick(4); count > 0; --count) {
            const int all = int(mTree->CountOpenedRows());
            QModelIndex index = View().model()->index(0, 0);
            for (int i = all > 0 ? Pick(all) : 0; i > 0; --i) index = View().indexBelow(index);
            View().selectionModel()->select(index, QItemSelectionModel::Toggle | QItemSelectionModel::Rows);
            if (!index.isValid()) return;
            const std::string name =
                DataOf(*static_cast<host::UI_MultiColumnTreeRow*>(index.internalPointer())).mName;
            if (std::erase(mSelected, name) == 0) mSelected.push_back(name);
        }
    }

    void TurnSorting() {
        mIsAscending = !mIsAscending;
        mHeader->SetSortDirection(mIsAscending);
        Settle();
    }

    void TakeStep() {
        constexpr void (TreeRandomTest::*kSteps[])() = {
            &TreeRandomTest::AddRows,    &TreeRandomTest::AddRows,    &TreeRandomTest::AddRows,
            &TreeRandomTest::RemoveRows, &TreeRandomTest::ToggleRow,  &TreeRandomTest::ToggleRow,
            &TreeRandomTest::SelectSome, &TreeRandomTest::SelectMost, &TreeRandomTest::ToggleSelected,
            &TreeRandomTest::TurnSorting};
        (this->*kSteps[Pick(int(std::size(kSteps)))])();
    }

    void Check() {
        Rows expected;
        AddShown(mRows, "", expected);
        ASSERT_EQ(Shown(), expected);
        ASSERT_EQ(mTree->CountOpenedRows(), expected.size());
        for (std::string& name : expected) name.erase(0, name.find_first_not_of(' '));
        ASSERT_EQ(ShownByView(), expected);
        ASSERT_EQ(NamesOf(mTree->GetSelectedRows()), mSelected);
        ASSERT_EQ(mTree->CountSelectedRows(), mSelected.size());
        const auto asSet = [](const Rows& rows) { return std::multiset(rows.begin(), rows.end()); };
        ASSERT_EQ(asSet(ShownByView(true)), asSet(mSelected));
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
    ModelRows mRows;
    Rows mSelected;
    bool mIsAscending = true;
    int mLastNumber = 0;
};

TEST_F(TreeRandomTest, FollowsASimpleModelThroughRandomSteps) {
    for (int step = 0; step < 300 && !HasFatalFailure(); ++step) {
        SCOPED_TRACE(step);
        TakeStep();
        if (Pick(3) == 0) ScrollBar().setValue(Pick(ScrollBar().maximum() + 1));
        if (Pick(4) == 0) mWindow.grab();
        if (Pick(9) == 0) mTree->UI_SetBounds({0, 0, 600, float(100 + Pick(500))});
        if (Pick(9) == 0) mTree->UI_Show(!mTree->UI_IsShown());
        if (Pick(2) == 0) CheckVisible();
        Check();
    }
}

}  // namespace
