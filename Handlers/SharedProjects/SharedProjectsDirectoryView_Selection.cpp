// What the user does in the tree: selection, opening rows, sorting and the columns.
#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"

namespace HandlerSharedProjects {

void SharedProjectsDirectoryView::OnRowSelectionChanged(const RowVec&) {
    BroadcastMessage(GetStationID(), DirectoryViewSelectionChangedMessage());
}

void SharedProjectsDirectoryView::SelectAll() {
    RowVec rows;
    for (const RowRef& row : GetTree()->GetOpenedRows())
        if (!Utils::IsInTrash(GetRowPath(row.get()), true)) rows.push_back(row);
    GetTree()->SelectRows(rows);
}

void SharedProjectsDirectoryView::DeselectAll() {
    GetTree()->DeselectAllRows(true);
}

void SharedProjectsDirectoryView::MoveHome() {
    Utils::MoveHome(GetTree());
}

void SharedProjectsDirectoryView::MoveEnd() {
    Utils::MoveEnd(GetTree());
}

void SharedProjectsDirectoryView::MovePageUp() {
    Utils::MovePageUp(GetTree());
}

void SharedProjectsDirectoryView::MovePageDown() {
    Utils::MovePageDown(GetTree());
}

void SharedProjectsDirectoryView::OnRowDoubleClicked(const RowRef& row, Point) {
    if (row && !IsFileRow(row)) ToggleRow(row);
}

void SharedProjectsDirectoryView::OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column,
                                                  const RectT<float>& cell) {
    if (!GetTree()->IsRowVisible(row.get())) return;
    if (const Columns::FileMetadata* metadata = GetMetadata(row))
        Columns::DrawMetadataCellOfRow(drawbot, *metadata, column, cell, mHeaderRow);
}

UTF16String SharedProjectsDirectoryView::GetCellSortDataAsString(const RowRef& row, unsigned column) {
    if (const Columns::FileMetadata* metadata = GetMetadata(row))
        return metadata->GetColumnDataAsSortableString(mHeaderRow->GetColumnAt(column));
    return Columns::IsNameColumn(mHeaderRow, column) ? Columns::GetPathDisplayName(GetRowPath(row.get()))
                                                     : UTF16String();
}

UTF16String SharedProjectsDirectoryView::GetCellAccessibleText(const RowRef& row, unsigned column) {
    return Columns::GetCellAccessibleText(mHeaderRow, column, GetRowPath(row.get()), GetMetadata(row));
}

bool SharedProjectsDirectoryView::ColumnSortStringIsLess(const UTF16String& a, const UTF16String& b) {
    return Columns::SortStringIsLess(a, b);
}

void SharedProjectsDirectoryView::OnSortChanged(ColumnID, bool) {
    // Rows in closed folders need the new column's fact when they come to be seen.
    for (auto& [row, request] : mRowToMetadata)
        if (!IsRowExposed(row)) request.mIsStale = true;
    UpdateOpenRows();
}

void SharedProjectsDirectoryView::OnColumnMoved(unsigned, unsigned) {
    const auto tabView = mTabView.lock();
    if (tabView && tabView->AreTreeViewsCreated())
        Utils::LogViewPropertyUsage("ColumnOrder", tabView->GetViewPropertyLoggingData());
}

void SharedProjectsDirectoryView::OnColumnResized(unsigned column, float) {
    const auto tabView = mTabView.lock();
    if (tabView && tabView->AreTreeViewsCreated()) tabView->UpdateBaseColumnWidthMap(mHeaderRow, column);
}

void SharedProjectsDirectoryView::ResizeColumns() {}

}  // namespace HandlerSharedProjects
