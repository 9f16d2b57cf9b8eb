#include <QItemSelectionModel>
#include <algorithm>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;
using Access = Row::Access;

namespace {

using desk::SelectedRows;

constexpr auto kClearAndSelect = QItemSelectionModel::ClearAndSelect;
/// So many rows further on memory is asked for what will be looked at: rows lie anywhere in it.
constexpr std::uint32_t kRowsAhead = 8;

SelectedRows::Run RunOf(const QItemSelectionRange& range) {
    return {RowRef(Access::Parent(*desk::TreeModel::RowOf(range.topLeft()))), std::uint32_t(range.top()),
            std::uint32_t(range.height())};
}

std::vector<SelectedRows::Run> RunsOf(const QItemSelection& ranges) {
    std::vector<SelectedRows::Run> runs;
    for (const QItemSelectionRange& range : ranges)
        if (range.isValid()) runs.push_back(RunOf(range));
    return runs;
}

/// Appends the opened rows below `parent` for which `isMeant` holds to `selected`.
void AppendOpened(TreeImpl& tree, const RowRef& parent, const std::function<bool(const RowRef&)>& isMeant,
                  SelectedRows& selected) {
    const std::vector<RowRef>& rows = tree.ChildrenOf(parent.get());
    const std::uint32_t count = tree.CountOfLaidOutChildren(parent.get());
    for (std::uint32_t i = 0; i < count; ++i) {
        if (i + kRowsAhead < count) __builtin_prefetch(&Access::IsSelected(*rows[i + kRowsAhead]));
        if (isMeant(rows[i])) selected.Append({parent, i, 1});
        if (rows[i]->IsOpen()) AppendOpened(tree, rows[i], isMeant, selected);
    }
}

}  // namespace

QItemSelection TreeImpl::RangesOf(const std::vector<SelectedRows::Run>& runs) {
    const int lastColumn = mModel.columnCount() - 1;
    QItemSelection selection;
    for (const SelectedRows::Run& run : runs) {
        const std::span<const RowRef> rows = RowsOf(run);
        selection.append(QItemSelectionRange(mModel.IndexOf(rows.front().get()),
                                             mModel.IndexOf(rows.back().get(), lastColumn)));
    }
    return selection;
}

RowVec TreeImpl::SelectedRowVec() {
    RowVec rows;
    rows.reserve(mSelected.Count());
    for (const SelectedRows::Run& run : mSelected.Runs())
        std::ranges::copy(RowsOf(run), std::back_inserter(rows));
    return rows;
}

Row* TreeImpl::LastSelected() {
    return mSelected.IsEmpty() ? nullptr : RowsOf(mSelected.Runs().back()).back().get();
}

void TreeImpl::Select(Row* row, bool deselectOthers, bool scrollIntoView, bool notify) {
    if (!row || !IsInModel(*row)) return;
    const bool notifiedBefore = std::exchange(mNotifiesSelection, notify);
    const bool isAlone = mSelected.Count() == 1 && Access::IsSelected(*row);
    const bool isMultiple = mView->selectionMode() == QAbstractItemView::ExtendedSelection;
    if (!isAlone)
        mView->selectionModel()->select(RangesOf({RunOfRow(*row)}), deselectOthers || !isMultiple
                                                                        ? kClearAndSelect
                                                                        : QItemSelectionModel::Select);
    SetCurrentRow(row);
    mNotifiesSelection = notifiedBefore;
    if (scrollIntoView) ScrollIntoView(*row, false, 0, false);
}

SelectedRows::Run TreeImpl::RunOfRow(const Row& row) {
    return {RowRef(const_cast<Row*>(Access::Parent(row))), std::uint32_t(PositionOf(row)), 1};
}

void TreeImpl::MarkSelected(bool isSelected) {
    for (const SelectedRows::Run& run : mSelected.Runs())
        for (const RowRef& row : RowsOf(run)) Access::IsSelected(*row) = isSelected;
}

void TreeImpl::SelectRows(const RowVec& rows) {
    MarkSelected(false);
    SelectedRows wanted;
    for (const RowRef& row : rows)
        if (row && IsInModel(*row) && !std::exchange(Access::IsSelected(*row), true))
            wanted.Append(RunOfRow(*row));
    for (const RowRef& row : rows)
        if (row) Access::IsSelected(*row) = false;
    SetSelection(std::move(wanted));
}

void TreeImpl::SelectOpened(const std::function<bool(const RowRef& row)>& isMeant) {
    SelectedRows wanted;
    AppendOpened(*this, {}, isMeant, wanted);
    SetSelection(std::move(wanted));
}

void TreeImpl::SetSelection(SelectedRows wanted) {
    if (mView->selectionMode() == QAbstractItemView::SingleSelection) wanted.KeepFirst();
    mIsSettingSelection = true;
    // Emptied first: Qt compares each old range with each new one.
    mView->selectionModel()->clearSelection();
    if (!wanted.IsEmpty())
        mView->selectionModel()->select(RangesOf(wanted.RunsByPlace()), QItemSelectionModel::Select);
    mIsSettingSelection = false;
    const bool changed = wanted != mSelected;
    MarkSelected(false);
    mSelected = std::move(wanted);
    MarkSelected(true);
    if (changed && mNotifiesSelection) RunLater(mNotifyLater, &TreeImpl::NotifySelectionChanged);
}

void TreeImpl::TakeKeyboardToSelection() {
    Row* current = CurrentRow();
    const bool isThere = current && Access::IsSelected(*current);
    if (!isThere && !mSelected.IsEmpty()) SetCurrentRow(LastSelected());
}

void TreeImpl::DeselectAll(bool notify) {
    const bool notifiedBefore = std::exchange(mNotifiesSelection, notify);
    mView->selectionModel()->clearSelection();
    mNotifiesSelection = notifiedBefore;
}

void TreeImpl::SelectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    if (mIsSettingSelection) return;
    std::vector<SelectedRows::Run> gone = RunsOf(deselected);
    for (const SelectedRows::Run& run : gone)
        for (const RowRef& row : RowsOf(run)) Access::IsSelected(*row) = false;
    if (!gone.empty()) mSelected.Take(std::move(gone));
    for (const SelectedRows::Run& run : RunsOf(selected))
        for (std::uint32_t i = run.mFirst; i < run.End(); ++i)
            if (!std::exchange(Access::IsSelected(*ChildrenOf(run.mParent.get())[i]), true))
                mSelected.Append({run.mParent, i, 1});
    if (mNotifiesSelection) RunLater(mNotifyLater, &TreeImpl::NotifySelectionChanged);
}

void TreeImpl::NotifySelectionChanged() {
    desk::Call(mCallbacks.mSelectionChanged, SelectedRowVec());
}

void TreeImpl::SetCurrentRow(Row* row) {
    // Qt would scroll to it, opening what is closed above it.
    mView->setAutoScroll(false);
    mView->selectionModel()->setCurrentIndex(mModel.IndexOf(row), QItemSelectionModel::NoUpdate);
    mView->setAutoScroll(true);
}

Row* TreeImpl::CurrentRow() const {
    return desk::TreeModel::RowOf(mView->selectionModel()->currentIndex());
}

}  // namespace host
