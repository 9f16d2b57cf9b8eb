#include "host/toolkit/UI_MultiColumnTreeRow.h"

#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/RowAccess.h"
#include "desk/toolkit/TreeImpl.h"

namespace desk {

void CellImpl::ContentChanged() {
    if (!mRow) return;
    if (host::UI_MultiColumnTree* tree = host::UI_MultiColumnTreeRow::Access::Tree(*mRow))
        tree->RedrawRow(mRow);
}

void CellImpl::Fit(float width, float height) {
    SetBounds({0, 0, width, height});
    for (const auto& child : mChildren) child->UI_SetBounds({0, 0, width, height});
}

void CellImpl::ChildAdded(host::UI_Node& child) {
    if (mHasBounds) child.UI_SetBounds({0, 0, mBounds.width, mBounds.height});
}

}  // namespace desk

namespace host {

UI_MultiColumnTreeRow::UI_MultiColumnTreeRow() = default;
UI_MultiColumnTreeRow::~UI_MultiColumnTreeRow() = default;

UI_MultiColumnTreeRow::Cells::~Cells() {
    for (const auto& cell : mContainers)
        if (cell) desk::ImplOf(*cell).mRow = nullptr;
}

bool UI_MultiColumnTreeRow::IsADescendent(const UI_MultiColumnTreeRow& ancestor) const {
    for (const UI_MultiColumnTreeRow* row = mParent; row; row = row->mParent)
        if (row == &ancestor) return true;
    return false;
}

UI_Container* UI_MultiColumnTreeRow::GetCellView(unsigned column) const {
    if (!mTree) return nullptr;
    auto& tree = UI_MultiColumnTree::TreeImpl::Of(*mTree);
    const int appended = tree.ColumnAtPosition(column);
    if (appended < 0) return nullptr;
    auto& row = const_cast<UI_MultiColumnTreeRow&>(*this);
    desk::CellContainer& cell = Access::Cell(row, static_cast<unsigned>(appended));
    tree.FitCell(row, appended);
    return &cell;
}

desk::CellContainer& UI_MultiColumnTreeRow::Access::Cell(Row& row, unsigned column) {
    if (!row.mCells) row.mCells = std::make_unique<Cells>();
    auto& containers = row.mCells->mContainers;
    if (containers.size() <= column) containers.resize(column + 1);
    if (!containers[column]) containers[column] = RefPtr<desk::CellContainer>(new desk::CellContainer(row));
    return *containers[column];
}

desk::CellContainer* UI_MultiColumnTreeRow::Access::FindCellWithNodes(const Row& row, unsigned column) {
    if (!row.mCells || column >= row.mCells->mContainers.size()) return nullptr;
    desk::CellContainer* cell = row.mCells->mContainers[column].get();
    return cell && !cell->GetChildren().empty() ? cell : nullptr;
}

}  // namespace host
