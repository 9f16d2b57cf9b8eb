#include <algorithm>
#include <map>
#include <unordered_set>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/CellEditorImpl.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;
using Access = Row::Access;

namespace {

/// More runs of rows than this are removed by way of the end: each removal is a pass over all indexes held.
constexpr std::size_t kMaximumRuns = 4;

struct Run {
    std::size_t mFirst;
    std::size_t mLast;
};

std::vector<Run> RunsOf(const std::vector<std::size_t>& sortedPositions) {
    std::vector<Run> runs;
    for (const std::size_t position : sortedPositions) {
        if (!runs.empty() && runs.back().mLast + 1 == position)
            runs.back().mLast = position;
        else
            runs.push_back({position, position});
    }
    return runs;
}

/// Lets go of a row that has left the tree, and of all below it.
void Detach(TreeImpl& tree, Row& row) {
    tree.mSortedKeys.erase(&row);
    for (const RowRef& child : row.GetChildRows()) Detach(tree, *child);
    Access::ForgetChildren(row);
    Access::CellsOf(row).reset();
    Access::Tree(row) = nullptr;
    Access::Parent(row) = nullptr;
    Access::IsVisible(row) = Access::IsSelected(row) = false;
}

}  // namespace

std::vector<RowRef>& TreeImpl::ChildrenOf(const Row* parent) {
    return Access::ChildrenOf(parent ? const_cast<Row&>(*parent) : *mRoot).mRows;
}

std::uint32_t TreeImpl::CountOfLaidOutChildren(const Row* parent) const {
    const Access::Children* children = Access::FindChildren(parent ? *parent : *mRoot);
    return children ? children->mCountOfLaidOut : 0;
}

int TreeImpl::PositionOf(const Row& row) {
    const Row* parent = Access::Parent(row);
    const std::vector<RowRef>& rows = ChildrenOf(parent);
    std::uint32_t& position = Access::Position(const_cast<Row&>(row));
    if (position >= rows.size() || rows[position] != &row) Renumber(parent, 0);
    return int(position);
}

void TreeImpl::Renumber(const Row* parent, std::size_t first) {
    ++mCountOfRowChanges;
    const std::vector<RowRef>& rows = ChildrenOf(parent);
    for (std::size_t i = first; i < rows.size(); ++i) Access::Position(*rows[i]) = std::uint32_t(i);
}

bool TreeImpl::IsMine(const Row* row) const {
    return row && Access::Tree(const_cast<Row&>(*row)) == mNode;
}

bool TreeImpl::IsInModel(const Row& row) {
    if (!IsMine(&row)) return false;
    for (const Row* each = &row; each; each = Access::Parent(*each))
        if (std::uint32_t(PositionOf(*each)) >= CountOfLaidOutChildren(Access::Parent(*each))) return false;
    return true;
}

void TreeImpl::UpdateMayHaveChildren(Row& row) {
    bool may = false;
    if (mAllowsChildren) {
        may = desk::IsSet(mCallbacks.mCanRowHaveChildren)
                  ? desk::Call(mCallbacks.mCanRowHaveChildren, RowRef(&row))
                  : row.HasChild();
        may = may || row.HasCustomChild() || row.HasChild();
    }
    Access::MayHaveChildren(row) = may;
    if (!may) return;
    Row* parent = Access::Parent(row);
    Access::ChildrenOf(parent ? *parent : *mRoot).mHoldsParents = true;
}

void TreeImpl::UpdateMayHaveChildrenOfAll() {
    std::vector<RowRef> rows = ChildrenOf(nullptr);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        UpdateMayHaveChildren(*rows[i]);
        const std::vector<RowRef>& children = rows[i]->GetChildRows();
        rows.insert(rows.end(), children.begin(), children.end());
    }
    BeginChange();
}

void TreeImpl::BeginChange() {
    HoldScrollPosition();
    if (mView) mView->ScheduleLayout();
    UpdateVisibleRowsLater();
}

RowRef TreeImpl::Append(Row* parent) {
    if (parent && !IsMine(parent)) return {};
    RowRef row = Access::Make();
    std::vector<RowRef>& rows = ChildrenOf(parent);
    Access::Tree(*row) = &Tree();
    Access::Parent(*row) = parent;
    Access::Position(*row) = std::uint32_t(rows.size());
    rows.push_back(row);
    return row;
}

void TreeImpl::LayOutAppended(Row* parent, bool areInNameOrder) {
    if (parent && !IsMine(parent)) return;
    const std::size_t before = CountOfLaidOutChildren(parent);
    const std::vector<RowRef>& rows = ChildrenOf(parent);
    if (before == rows.size()) return;
    for (std::size_t i = before; i < rows.size(); ++i) UpdateMayHaveChildren(*rows[i]);
    if (parent) UpdateMayHaveChildren(*parent);
    const RowVec added(rows.begin() + std::ptrdiff_t(before), rows.end());
    InsertSorted(parent, before, areInNameOrder);
    if (parent && !IsInModel(*parent)) return;
    if (parent && parent->IsOpen()) mView->SetExpanded(mModel.IndexOf(parent), true);
    for (const RowRef& row : added) ExpandInView(*row);
}

void TreeImpl::Remove(const RowVec& rows) {
    std::unordered_set<const Row*> doomed;
    for (const RowRef& row : rows)
        if (IsMine(row.get())) doomed.insert(row.get());
    if (doomed.empty()) return;
    const auto isDoomed = [&doomed](const Row* row) {
        for (; row; row = Access::Parent(*row))
            if (doomed.contains(row)) return true;
        return false;
    };
    std::map<Row*, std::vector<std::size_t>> byParent;
    for (const Row* row : doomed)
        if (!isDoomed(Access::Parent(*row)))
            byParent[Access::Parent(const_cast<Row&>(*row))].push_back(std::size_t(PositionOf(*row)));

    BeginChange();
    mView->ForgetHover();
    if (Row* current = CurrentRow(); isDoomed(current)) SetCurrentRow(FindSuccessor(*current, isDoomed));
    for (auto& [parent, positions] : byParent) {
        std::sort(positions.begin(), positions.end());
        RemoveChildren(parent, positions);
        if (parent) UpdateMayHaveChildren(*parent);
    }
    mSelected.TakeBelow([this](const RowRef& parent) { return !IsMine(parent.get()); });
}

Row* TreeImpl::FindSuccessor(const Row& row, const std::function<bool(const Row*)>& isDoomed) {
    const Row* top = &row;
    while (isDoomed(Access::Parent(*top))) top = Access::Parent(*top);
    const Row* parent = Access::Parent(*top);
    const std::vector<RowRef>& beside = ChildrenOf(parent);
    const auto count = std::ptrdiff_t(CountOfLaidOutChildren(parent));
    for (std::ptrdiff_t i = PositionOf(*top) + 1; i < count; ++i)
        if (!isDoomed(beside[std::size_t(i)].get())) return beside[std::size_t(i)].get();
    for (std::ptrdiff_t i = std::min<std::ptrdiff_t>(PositionOf(*top), count) - 1; i >= 0; --i)
        if (!isDoomed(beside[std::size_t(i)].get())) return beside[std::size_t(i)].get();
    return const_cast<Row*>(parent);
}

void TreeImpl::RemoveChildren(Row* parent, std::vector<std::size_t> positions) {
    const std::size_t laidOut = CountOfLaidOutChildren(parent);
    const bool isInModel = !parent || IsInModel(*parent);
    const auto firstHidden = std::lower_bound(positions.begin(), positions.end(), laidOut);
    std::vector<Run> runs = RunsOf({positions.begin(), firstHidden});
    if (runs.size() > kMaximumRuns) {
        MoveToEnd(parent, {positions.begin(), firstHidden}, isInModel);
        runs = {{laidOut - std::size_t(firstHidden - positions.begin()), laidOut - 1}};
    }
    // Rows that were not laid out yet go first, so that the positions before them hold.
    const std::vector<Run> hidden = RunsOf({firstHidden, positions.end()});
    for (auto run = hidden.rbegin(); run != hidden.rend(); ++run)
        TakeOut(parent, run->mFirst, run->mLast, false);
    for (auto run = runs.rbegin(); run != runs.rend(); ++run)
        TakeOut(parent, run->mFirst, run->mLast, isInModel);
}

void TreeImpl::MoveToEnd(Row* parent, const std::vector<std::size_t>& positions, bool tellModel) {
    std::vector<std::uint32_t> order;
    std::vector<std::uint32_t> last(positions.begin(), positions.end());
    std::size_t next = 0;
    for (std::uint32_t i = 0; i < CountOfLaidOutChildren(parent); ++i) {
        if (next < last.size() && last[next] == i)
            ++next;
        else
            order.push_back(i);
    }
    order.insert(order.end(), last.begin(), last.end());
    if (tellModel) BeginLayoutChange();
    Reorder(parent, order);
    if (tellModel) EndLayoutChange();
}

void TreeImpl::TakeOut(Row* parent, std::size_t first, std::size_t last, bool tellModel) {
    std::vector<RowRef>& rows = ChildrenOf(parent);
    const bool isLaidOut = first < CountOfLaidOutChildren(parent);
    if (tellModel) mModel.beginRemoveRows(mModel.IndexOf(parent), int(first), int(last));
    const auto begin = rows.begin() + std::ptrdiff_t(first);
    const auto end = rows.begin() + std::ptrdiff_t(last) + 1;
    const RowVec removed(std::make_move_iterator(begin), std::make_move_iterator(end));
    rows.erase(begin, end);
    if (isLaidOut) {
        Access::ChildrenOf(parent ? *parent : *mRoot).mCountOfLaidOut -= std::uint32_t(last - first + 1);
        std::ptrdiff_t shown = 0;
        for (const RowRef& row : removed) shown += static_cast<std::ptrdiff_t>(CountOfShown(*row));
        AddShown(parent, -shown);
        mSelected.RowsRemoved({RowRef(parent), std::uint32_t(first), std::uint32_t(last - first + 1)});
    }
    Renumber(parent, first);
    for (const RowRef& row : removed) Detach(*this, *row);
    if (tellModel) mModel.endRemoveRows();
    std::erase_if(mVisible, [this](const RowRef& row) { return !IsMine(row.get()); });
}

void TreeImpl::RemoveAll() {
    if (ChildrenOf(nullptr).empty()) return;
    const bool hadSelection = !mSelected.IsEmpty();
    mView->ForgetHover();
    mModel.beginResetModel();
    const RowVec removed = std::move(ChildrenOf(nullptr));
    Access::ForgetChildren(*mRoot);
    for (const RowRef& row : removed) Detach(*this, *row);
    mVisible.clear();
    mSelected.Clear();
    mSortedKeys.clear();
    ++mCountOfRowChanges;
    mHeldRow.reset();
    mHoldsScrollPosition = false;
    mScrollWhenShown.reset();
    mModel.endResetModel();
    mCellEditor.GetImpl().Follow();
    UpdateVisibleRowsLater();
    if (hadSelection) RunLater(mNotifyLater, &TreeImpl::NotifySelectionChanged);
}

}  // namespace host
