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
    Access::IsOpen(row) = open;
    mIsOpenedStale = true;
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
    const auto isBelow = [&row](const RowRef& each) { return each->IsADescendent(row); };
    if (Row* current = CurrentRow(); current && current->IsADescendent(row)) SetCurrentRow(&row);
    if (std::none_of(mSelected.begin(), mSelected.end(), isBelow)) return;
    RowVec kept = mSelected;
    std::erase_if(kept, isBelow);
    SelectRows(kept);
}

const std::vector<Row*>& TreeImpl::Opened() {
    if (!mIsOpenedStale) return mOpened;
    mIsOpenedStale = false;
    mOpened.clear();
    mOpened.reserve(ChildrenOf(nullptr).size());
    const auto add = [this](const auto& self, const Row* parent) -> void {
        const std::vector<RowRef>& rows = ChildrenOf(parent);
        const std::uint32_t count = CountOfLaidOutChildren(parent);
        for (std::uint32_t i = 0; i < count; ++i) {
            Row* row = rows[i].get();
            mOpened.push_back(row);
            if (row->IsOpen() && row->HasChild()) self(self, row);
        }
    };
    add(add, nullptr);
    return mOpened;
}

int TreeImpl::IndexOfOpened(const Row* row) {
    const std::vector<Row*>& rows = Opened();
    const auto found = std::find(rows.begin(), rows.end(), row);
    return found == rows.end() ? -1 : int(found - rows.begin());
}

}  // namespace host
