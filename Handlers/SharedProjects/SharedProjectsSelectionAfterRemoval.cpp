#include "Handlers/SharedProjects/SharedProjectsSelectionAfterRemoval.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace HandlerSharedProjects {

namespace {

/// Siblings before the folders above, these before all others.
auto RankBeside(const RowRef& leaving) {
    std::vector<RowRef> above;
    for (RowRef row = leaving->GetParentRow(); row; row = row->GetParentRow()) above.push_back(row);
    return [parent = leaving->GetParentRow(), above](const RowRef& row) {
        if (row->GetParentRow() == parent) return 0;
        return std::ranges::find(above, row) != above.end() ? 1 : 2;
    };
}

}  // namespace

void SelectionAfterRemoval::Expect(const UI_MultiColumnTree& tree, const RowTest& mayBeSelected, Order order) {
    const RowVec selected = tree.GetSelectedRows();
    mLeaving = {selected.begin(), selected.end()};
    const auto findLeaving = [this](RowRef row) {
        while (row && !mLeaving.contains(row)) row = row->GetParentRow();
        return row;
    };
    const auto isLeaving = [&](const RowRef& row) { return findLeaving(row) != nullptr; };
    const RowVec rows = tree.GetOpenedRows();
    const auto lastLeaving = std::find_if(rows.rbegin(), rows.rend(), isLeaving);
    RowVec candidates(lastLeaving.base(), rows.end());
    std::copy_if(lastLeaving, rows.rend(), std::back_inserter(candidates), std::not_fn(isLeaving));
    std::erase_if(candidates, std::not_fn(mayBeSelected));
    if (order == Order::FolderFirst && lastLeaving != rows.rend())
        std::ranges::stable_sort(candidates, {}, RankBeside(findLeaving(*lastLeaving)));
    mCandidates = std::move(candidates);
}

void SelectionAfterRemoval::OnRowsRemoved(UI_MultiColumnTree& tree, const RowTest& isThere) {
    if (mLeaving.empty()) return;
    std::erase_if(mLeaving, std::not_fn(isThere));
    const RowVec selected = tree.GetSelectedRows();
    const bool isUntouched = std::set<RowRef>(selected.begin(), selected.end()) == mLeaving;
    if (isUntouched && !mLeaving.empty()) return;
    const auto candidate = std::ranges::find_if(mCandidates, isThere);
    // The arrow keys and Return go on from there.
    if (isUntouched && candidate != mCandidates.end()) {
        tree.SelectRow(candidate->get(), true, false, true);
        tree.ScrollRowIntoView(candidate->get(), false, 0, false);
    }
    mLeaving.clear();
    mCandidates.clear();
}

}  // namespace HandlerSharedProjects
