// What the user does in the tree: selection, opening rows, sorting and the columns.
#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/files/PathUtils.h"

namespace HandlerSharedProjects {

void SharedProjectsDirectoryView::OnRowSelectionChanged(const RowVec&) {
    BroadcastMessage(GetStationID(), DirectoryViewSelectionChangedMessage());
}

UTF16StringVec SharedProjectsDirectoryView::GetSelectedNonRedundantPaths() const {
    UTF16StringVec paths;
    for (const RowRef& row : Utils::GetNonRedundantRows(GetTree()->GetSelectedRows()))
        paths.push_back(GetRowPath(row.get()));
    return paths;
}

void SharedProjectsDirectoryView::SelectRowsByPaths(const UTF16StringVec& paths) {
    RowVec rows;
    for (const UTF16String& path : paths)
        if (RowRef row = GetRowFromPath(path)) rows.push_back(std::move(row));
    GetTree()->SelectRows(rows);
}

void SharedProjectsDirectoryView::SelectWhenShown(const UTF16StringVec& paths) {
    mAwaitedPaths = paths;
    mArrivedRows.clear();
    mSelectionBeforeArrival = GetTree()->GetSelectedRows();
    mFoldersToOpen.clear();
    for (const UTF16String& path : paths) NoteFoldersAbove(path);
    SelectAwaitedRows();
}

void SharedProjectsDirectoryView::NoteFoldersAbove(const UTF16String& path) {
    const UTF16String root = PathUtils::ToNormalizedPath(SharedProjectsHandler::GetRootDirectory());
    const auto folderOf = [](const UTF16String& item) {
        return PathUtils::ToNormalizedPath(PathUtils::GetFullDirectoryPart(item));
    };
    for (UTF16String folder = folderOf(PathUtils::ToNormalizedPath(path)); folder.size() > root.size();
         folder = folderOf(folder))
        if (!mFoldersToOpen.insert(folder).second) return;
}

void SharedProjectsDirectoryView::OpenNotedFolders() {
    std::erase_if(mFoldersToOpen, [this](const UTF16String& folder) {
        const RowRef row = GetRowFromPath(folder);
        if (row && !row->IsOpen()) GetTree()->OpenRow(row.get());
        return row != nullptr;
    });
}

void SharedProjectsDirectoryView::SelectAwaitedRows() {
    if (mAwaitedPaths.empty()) return;
    if (GetTree()->GetSelectedRows() != mSelectionBeforeArrival) return mAwaitedPaths.clear();
    OpenNotedFolders();
    const std::size_t countBefore = mArrivedRows.size();
    std::erase_if(mAwaitedPaths, [this](const UTF16String& path) {
        const RowRef row = GetRowFromPath(path);
        if (row) mArrivedRows.push_back(row);
        return row != nullptr;
    });
    if (mArrivedRows.size() == countBefore) return;
    UI_MultiColumnTreeRow* row = mArrivedRows[countBefore].get();
    // One alone is also where the arrow keys go on.
    if (mArrivedRows.size() == 1)
        GetTree()->SelectRow(row, true, false, true);
    else
        GetTree()->SelectRows(mArrivedRows);
    GetTree()->ScrollRowIntoView(row, false, 0, true);
    mSelectionBeforeArrival = GetTree()->GetSelectedRows();
}

void SharedProjectsDirectoryView::SelectNextWhenSelectionHasGone() {
    mSelectionAfterRemoval.Expect(
        *GetTree(), [this](const RowRef& row) { return !Utils::IsInTrash(GetRowPath(row.get()), true); });
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
    if (!row) return;
    if (IsFileRow(row))
        Utils::OpenProjectOutsideTrash(GetRowPath(row.get()));
    else
        ToggleRow(row);
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
    return Columns::IsNameColumn(mHeaderRow, column) ? Columns::GetPathDisplayName(GetPathOfKind(row))
                                                     : UTF16String();
}

UTF16String SharedProjectsDirectoryView::GetCellAccessibleText(const RowRef& row, unsigned column) {
    return Columns::GetCellAccessibleText(mHeaderRow, column, GetPathOfKind(row), GetMetadata(row));
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
