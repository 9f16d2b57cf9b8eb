// What the user does in the tree: selection, opening rows and sorting.
#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionTrash.h"

namespace HandlerSharedProjects {

void SharedProjectsDirectoryView::OnRowSelectionChanged(const RowVec&) {
    mRestorer->OnSelectionChanged();
    BroadcastMessage(GetStationID(), DirectoryViewSelectionChangedMessage());
}

void SharedProjectsDirectoryView::SelectWhenShown(const UTF16StringVec& paths) {
    Await(paths);
    SelectAwaitedRows();
}

void SharedProjectsDirectoryView::OpenWhenShown(const UTF16String& folder) {
    Await({folder});
    mFoldersToOpen.insert(folder);
    SelectAwaitedRows();
}

void SharedProjectsDirectoryView::Await(const UTF16StringVec& paths) {
    mAwaitedPaths = paths;
    mArrivedRows.clear();
    mSelectionBeforeArrival = GetTree()->GetSelectedRows();
    mFoldersToOpen.clear();
    for (const UTF16String& path : paths)
        mFoldersToOpen.insert(
            PathUtils::ToNormalizedPath(PathUtils::GetFullDirectoryPart(PathUtils::ToNormalizedPath(path))));
    mWereFoldersTried = false;
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
    // Rows that have moved away are no choice of the user's.
    std::erase_if(mSelectionBeforeArrival, [this](const RowRef& row) { return GetRowPath(row.get()).empty(); });
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

void SharedProjectsDirectoryView::SelectAll() {
    const RowRef trash = GetRowFromPath(GetZuProductionTrashDirectoryPath());
    mItems.SelectOpenedRows(
        [&trash](const RowRef& row) { return !trash || (row != trash && !row->IsADescendent(*trash)); });
}

void SharedProjectsDirectoryView::OnRowDoubleClicked(const RowRef& row, Point) {
    CancelSlowSecondClick();
    if (row) mItems.OnRowDoubleClicked(row);
}

void SharedProjectsDirectoryView::OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column,
                                                  const RectT<float>& cell) {
    mItems.OnDrawCellOfRow(drawbot, row, column, cell);
}

void SharedProjectsDirectoryView::OnSortChosen() {
    mTopWhileSorting = {};
    mRestorer->ForgetTopRow();
}

void SharedProjectsDirectoryView::ResizeColumns() {}

}  // namespace HandlerSharedProjects
