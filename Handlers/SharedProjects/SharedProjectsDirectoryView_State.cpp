// Opening folders with all below them, how the user has left the view, and how that is put back.
#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/toolkit/UI_KeyboardEvent.h"

namespace HandlerSharedProjects {

namespace {

/// Appends the deepest open rows of the sub-tree of `row`.
void AppendDeepestOpenRows(const RowRef& row, RowVec& rows) {
    if (!row->IsOpen()) return;
    const std::size_t countBefore = rows.size();
    for (const RowRef& child : row->GetChildRows()) AppendDeepestOpenRows(child, rows);
    if (rows.size() == countBefore) rows.push_back(row);
}

}  // namespace

UTF16StringVec SharedProjectsDirectoryView::GetDeepestOpenFolderPaths() const {
    RowVec rows;
    for (const RowRef& row : GetTree()->GetTopLevelRows()) AppendDeepestOpenRows(row, rows);
    UTF16StringVec paths;
    for (const RowRef& row : rows) paths.push_back(GetRowPath(row.get()));
    return paths;
}

SharedProjectsDirectoryView::StateData SharedProjectsDirectoryView::GetCurrentStateData() const {
    StateData state = mRestorer->GetCurrentState();
    const auto tabView = mTabView.lock();
    state.mHeaderRowData = Columns::GetHeaderRowData(
        GetHeaderRow(), tabView ? tabView->GetColumnIDToBaseWidthMap() : Columns::ColumnWidths());
    return state;
}

void SharedProjectsDirectoryView::UpdateFromStateData(const StateData& state, bool waitForRoot) {
    const auto tabView = mTabView.lock();
    if (tabView && tabView->IsCreated()) {
        Columns::SetUpHeaderRowFromData(GetHeaderRow(), state.mHeaderRowData, tabView->GetColumnWidthScale());
        UpdateOpenRows();
    }
    mRestorer->Restore(state, waitForRoot);
}

void SharedProjectsDirectoryView::SortRows(const std::optional<RowVec>& changed) {
    mTopWhileSorting = mRestorer->FindTopRow();
    changed ? GetTree()->SortRows(*changed) : GetTree()->SortTree();
    if (!GetTree()->IsSorting()) OnRowsSorted();
}

void SharedProjectsDirectoryView::OnRowsSorted() {
    if (const RowRef top = std::exchange(mTopWhileSorting, {})) GetTree()->ScrollRowToTop(top.get());
}

/// What has waited for the opener, or for content, goes on.
void SharedProjectsDirectoryView::GoOnWithWhatWaits() {
    mRestorer->GoOn();
    SelectAwaitedRows();
}

void SharedProjectsDirectoryView::OnRowDisclosureChanged(const RowRef& row, bool opened) {
    const bool isDeep = (GetCurrentModKeys() & kModKey_Alt) != 0;
    if (!opened) mRestorer->OnFolderClosed(GetRowPath(row.get()));
    if (isDeep && opened)
        OpenSubTree(row, true);
    else if (isDeep)
        CloseSubTree(row);
    else if (!opened)
        mFolderOpener.LeaveOut(GetRowPath(row.get()));
}

void SharedProjectsDirectoryView::OpenSubTree(const RowRef& row, bool waitForOwnContent) {
    if (!row || (!row->HasCustomChild() && !row->HasChild())) return;
    const UTF16String path = GetRowPath(row.get());
    FolderOpener::Paths awaitedPaths;
    if (waitForOwnContent && IsContentAwaited(row)) awaitedPaths.insert(path);
    mFolderOpener.OpenAllFoldersInDirectory(path, std::move(awaitedPaths), [this] { GoOnWithWhatWaits(); });
}

void SharedProjectsDirectoryView::CloseSubTree(const RowRef& row) {
    if (!row) return;
    mRestorer->Stop();
    // At once for all: each folder that closes would take its own out of the selection.
    RowVec selected = GetTree()->GetSelectedRows();
    if (std::erase_if(selected, [&](const RowRef& each) { return each->IsADescendent(*row); }) > 0)
        GetTree()->SelectRows(selected);
    CloseSubTreeRecursion(row);
}

void SharedProjectsDirectoryView::CloseSubTreeRecursion(const RowRef& row) {
    for (const RowRef& child : row->GetChildRows()) CloseSubTreeRecursion(child);
    if (row->IsOpen()) GetTree()->CloseRow(row.get());
}

}  // namespace HandlerSharedProjects
