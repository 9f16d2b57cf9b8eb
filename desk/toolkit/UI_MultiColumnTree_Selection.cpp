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

constexpr auto kClearAndSelect = QItemSelectionModel::ClearAndSelect;

/// The row at a position of a selection range.
Row& RowOfRange(TreeImpl& tree, const QItemSelectionRange& range, int position) {
    const Row* parent = Access::Parent(*desk::TreeModel::RowOf(range.topLeft()));
    return *tree.ChildrenOf(parent)[std::size_t(position)];
}

}  // namespace

QItemSelection TreeImpl::RangesOf(const std::vector<Row*>& rows) {
    struct Place {
        const Row* mParent;
        int mPosition;
        auto operator<=>(const Place&) const = default;
    };
    std::vector<Place> places;
    places.reserve(rows.size());
    for (const Row* row : rows) places.push_back({Access::Parent(*row), PositionOf(*row)});
    if (!std::is_sorted(places.begin(), places.end())) std::sort(places.begin(), places.end());
    const int lastColumn = mModel.columnCount() - 1;
    QItemSelection selection;
    for (std::size_t i = 0; i < places.size();) {
        std::size_t end = i + 1;
        while (end < places.size() && places[end].mParent == places[i].mParent &&
               places[end].mPosition <= places[end - 1].mPosition + 1)
            ++end;
        const std::vector<RowRef>& beside = ChildrenOf(places[i].mParent);
        const QModelIndex first = mModel.IndexOf(beside[std::size_t(places[i].mPosition)].get());
        const QModelIndex last =
            mModel.IndexOf(beside[std::size_t(places[end - 1].mPosition)].get(), lastColumn);
        selection.append(QItemSelectionRange(first, last));
        i = end;
    }
    return selection;
}

void TreeImpl::Select(Row* row, bool deselectOthers, bool scrollIntoView, bool notify) {
    if (!row || !IsInModel(*row)) return;
    const bool notifiedBefore = std::exchange(mNotifiesSelection, notify);
    const bool isAlone = mSelected.size() == 1 && Access::IsSelected(*row);
    const bool isMultiple = mView->selectionMode() == QAbstractItemView::ExtendedSelection;
    if (!isAlone)
        mView->selectionModel()->select(
            RangesOf({row}), deselectOthers || !isMultiple ? kClearAndSelect : QItemSelectionModel::Select);
    SetCurrentRow(row);
    mNotifiesSelection = notifiedBefore;
    if (scrollIntoView) ScrollIntoView(*row, false, 0, false);
}

void TreeImpl::SelectRows(const RowVec& rows) {
    std::vector<Row*> wanted;
    RowVec inOrder;
    for (const RowRef& row : rows)
        if (row) Access::IsSelected(*row) = false;
    for (const RowRef& row : rows) {
        if (!row || !IsInModel(*row) || Access::IsSelected(*row)) continue;
        Access::IsSelected(*row) = true;
        wanted.push_back(row.get());
        inOrder.push_back(row);
    }
    for (const RowRef& row : inOrder) Access::IsSelected(*row) = false;
    if (mView->selectionMode() == QAbstractItemView::SingleSelection && wanted.size() > 1) {
        wanted.resize(1);
        inOrder.resize(1);
    }
    mIsSettingSelection = true;
    // Emptied first: Qt compares each old range with each new one.
    mView->selectionModel()->clearSelection();
    if (!wanted.empty()) mView->selectionModel()->select(RangesOf(wanted), QItemSelectionModel::Select);
    mIsSettingSelection = false;
    const bool changed = inOrder != mSelected;
    for (const RowRef& row : mSelected) Access::IsSelected(*row) = false;
    for (const RowRef& row : inOrder) Access::IsSelected(*row) = true;
    mSelected = std::move(inOrder);
    if (changed && mNotifiesSelection) RunLater(mNotifyLater, &TreeImpl::NotifySelectionChanged);
}

void TreeImpl::TakeKeyboardToSelection() {
    Row* current = CurrentRow();
    const bool isThere = current && Access::IsSelected(*current);
    if (!isThere && !mSelected.empty()) SetCurrentRow(mSelected.back().get());
}

void TreeImpl::DeselectAll(bool notify) {
    const bool notifiedBefore = std::exchange(mNotifiesSelection, notify);
    mView->selectionModel()->clearSelection();
    mNotifiesSelection = notifiedBefore;
}

void TreeImpl::SelectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    if (mIsSettingSelection) return;
    for (const QItemSelectionRange& range : deselected)
        if (range.isValid())
            for (int i = range.top(); i <= range.bottom(); ++i)
                Access::IsSelected(RowOfRange(*this, range, i)) = false;
    if (!deselected.isEmpty())
        std::erase_if(mSelected, [](const RowRef& row) { return !Access::IsSelected(*row); });
    for (const QItemSelectionRange& range : selected) {
        if (!range.isValid()) continue;
        for (int i = range.top(); i <= range.bottom(); ++i) {
            Row& row = RowOfRange(*this, range, i);
            if (std::exchange(Access::IsSelected(row), true)) continue;
            mSelected.emplace_back(&row);
        }
    }
    if (mNotifiesSelection) RunLater(mNotifyLater, &TreeImpl::NotifySelectionChanged);
}

void TreeImpl::NotifySelectionChanged() {
    const RowVec selected = mSelected;
    desk::Call(mCallbacks.mSelectionChanged, selected);
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
