#include <algorithm>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;
using Access = Row::Access;

void TreeImpl::SetOpen(Row& row, bool open) {
    if (!IsMine(&row) || row.IsOpen() == open || (open && !Access::MayHaveChildren(row))) return;
    const RowRef keptAlive(&row);
    BeginChange();
    Row* parent = Access::Parent(row);
    const bool isLaidOut = std::uint32_t(PositionOf(row)) < CountOfLaidOutChildren(parent);
    const auto below = static_cast<std::ptrdiff_t>(CountOfShownBelow(&row));
    Access::IsOpen(row) = open;
    if (isLaidOut) AddShown(parent, open ? below : -below);
    if (IsInModel(row)) {
        if (!open) DeselectBelow(row);
        mView->SetExpanded(mModel.IndexOf(&row), open);
    }
    desk::Call(mCallbacks.mOpenStateChanged, keptAlive, open);
}

void TreeImpl::ExpandInView(Row& row) {
    if (row.IsOpen() && Access::MayHaveChildren(row)) mView->SetExpanded(mModel.IndexOf(&row), true);
    const std::uint32_t count = CountOfLaidOutChildren(&row);
    for (std::uint32_t i = 0; i < count; ++i) ExpandInView(*row.GetChildRows()[i]);
}

void TreeImpl::DeselectBelow(Row& row) {
    if (Row* current = CurrentRow(); current && current->IsADescendent(row)) SetCurrentRow(&row);
    if (!IsAnySelectedBelow(row)) return;
    desk::SelectedRows kept = mSelected;
    kept.TakeBelow([&row](const RowRef& parent) { return parent == &row || parent->IsADescendent(row); });
    SetSelection(std::move(kept));
}

/// Looks at the rows below or at the runs of selected ones, whichever are fewer.
bool TreeImpl::IsAnySelectedBelow(const Row& row) const {
    if (mSelected.Runs().size() <= CountOfShownBelow(&row))
        return std::ranges::any_of(mSelected.Runs(), [&row](const auto& run) {
            return run.mParent && (run.mParent == &row || run.mParent->IsADescendent(row));
        });
    return std::ranges::any_of(row.GetChildRows(), [this](const RowRef& child) {
        return Access::IsSelected(*child) || IsAnySelectedBelow(*child);
    });
}

std::size_t TreeImpl::CountOfShownBelow(const Row* row) const {
    const Access::Children* children = Access::FindChildren(row ? *row : *mRoot);
    return children ? children->mCountOfShown : 0;
}

void TreeImpl::AddShown(Row* parent, std::ptrdiff_t count) {
    for (Row* row = parent; count != 0; row = Access::Parent(*row)) {
        std::uint32_t& shown = Access::ChildrenOf(row ? *row : *mRoot).mCountOfShown;
        shown = static_cast<std::uint32_t>(shown + count);
        if (!row || !row->IsOpen()) return;
        if (std::uint32_t(PositionOf(*row)) >= CountOfLaidOutChildren(Access::Parent(*row))) return;
    }
}

std::vector<Row*> TreeImpl::OpenedRange(std::size_t first, std::size_t count) const {
    std::vector<Row*> range;
    range.reserve(std::min(count, CountOfOpened() - std::min(first, CountOfOpened())));
    const auto add = [&](const auto& self, const Row* parent) -> void {
        const Access::Children* children = Access::FindChildren(parent ? *parent : *mRoot);
        if (!children) return;
        const std::uint32_t laidOut = children->mCountOfLaidOut;
        const bool isFlat = children->mCountOfShown == laidOut;
        std::uint32_t i = isFlat ? static_cast<std::uint32_t>(std::min<std::size_t>(first, laidOut)) : 0;
        if (isFlat) first -= i;
        for (; i < laidOut && range.size() < count; ++i) {
            Row* row = children->mRows[i].get();
            const std::size_t shown = isFlat ? 1 : CountOfShown(*row);
            if (first >= shown) {
                first -= shown;
                continue;
            }
            if (first > 0)
                --first;
            else
                range.push_back(row);
            if (shown > 1) self(self, row);
        }
    };
    add(add, nullptr);
    return range;
}

Row* TreeImpl::OpenedRow(std::size_t index) const {
    const std::vector<Row*> rows = OpenedRange(index, 1);
    return rows.empty() ? nullptr : rows.front();
}

int TreeImpl::IndexOfOpened(const Row* row) {
    if (!IsMine(row)) return -1;
    std::size_t index = 0;
    for (const Row* parent = nullptr; row; row = parent) {
        parent = Access::Parent(*row);
        const auto position = static_cast<std::size_t>(PositionOf(*row));
        if (position >= CountOfLaidOutChildren(parent) || (parent && !parent->IsOpen())) return -1;
        index += position + (parent ? 1 : 0);
        if (CountOfShownBelow(parent) == CountOfLaidOutChildren(parent)) continue;
        for (std::size_t i = 0; i < position; ++i) index += CountOfShown(*ChildrenOf(parent)[i]) - 1;
    }
    return static_cast<int>(index);
}

}  // namespace host
