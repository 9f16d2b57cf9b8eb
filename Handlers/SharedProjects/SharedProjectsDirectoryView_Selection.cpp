// What the user does in the tree: selection, opening rows, sorting and the columns.
#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/files/PathUtils.h"

namespace HandlerSharedProjects {

void SharedProjectsDirectoryView::OnRowSelectionChanged(const RowVec&) {
    mRestorer->OnSelectionChanged();
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
    for (const UTF16String& path : paths)
        mFoldersToOpen.insert(
            PathUtils::ToNormalizedPath(PathUtils::GetFullDirectoryPart(PathUtils::ToNormalizedPath(path))));
    mWereFoldersTried = false;
    SelectAwaitedRows();
}

/// At first all, for the folders above them may be closed; then those whose rows have come since. Each is
/// opened once: the user may close it again.
void SharedProjectsDirectoryView::OpenFoldersOfAwaitedItems() {
    if (!mFolderOpener.IsIdle()) return;
    UTF16StringVec folders;
    for (const UTF16String& folder : mFoldersToOpen)
        if (!mWereFoldersTried || GetRowFromPath(folder)) folders.push_back(folder);
    if (folders.empty()) return;
    mWereFoldersTried = true;
    mFolderOpener.OpenFolders(std::move(folders), {}, [this] {
        std::erase_if(mFoldersToOpen,
                      [this](const UTF16String& path) { return GetRowFromPath(path) != nullptr; });
        GoOnWithWhatWaits();
    });
}

void SharedProjectsDirectoryView::SelectAwaitedRows() {
    if (mAwaitedPaths.empty()) return;
    if (GetTree()->GetSelectedRows() != mSelectionBeforeArrival) {
        mAwaitedPaths.clear();
        mFoldersToOpen.clear();
        return;
    }
    OpenFoldersOfAwaitedItems();
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

/// Rows whose keys are equal stand by their names, also those that nobody has seen, whose facts have no name
/// yet.
UTF16String SharedProjectsDirectoryView::GetCellSortDataAsString(const RowRef& row, unsigned column) {
    UTF16String key;
    if (const Columns::FileMetadata* metadata = GetMetadata(row))
        key = metadata->GetColumnDataAsSortableString(mHeaderRow->GetColumnAt(column));
    const bool isNameMissing = key.empty() && Columns::IsNameColumn(mHeaderRow, column);
    return isNameMissing ? Columns::GetPathDisplayName(GetPathOfKind(row)) : key;
}

UTF16String SharedProjectsDirectoryView::GetCellAccessibleText(const RowRef& row, unsigned column) {
    return Columns::GetCellAccessibleText(mHeaderRow, column, GetPathOfKind(row), GetMetadata(row));
}

bool SharedProjectsDirectoryView::ColumnSortStringIsLess(const UTF16String& a, const UTF16String& b) {
    return Columns::SortStringIsLess(a, b);
}

void SharedProjectsDirectoryView::OnSortChanged(ColumnID, bool) {
    mRestorer->ForgetTopRow();
    UpdateOpenRows();
}

/// Rows in closed folders need the sort column's fact when they come to be seen, whoever has chosen the column.
void SharedProjectsDirectoryView::UpdateStaleMarks() {
    const ColumnID column = mHeaderRow->GetSortColumn();
    if (std::exchange(mStaleMarksColumn, column) == column) return;
    for (auto& [row, request] : mRowToMetadata)
        if (!IsRowExposed(row)) request.mIsStale = true;
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
