// Opening folders with all below them, how the user has left the view, and how that is put back.
#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/files/PathUtils.h"
#include "host/toolkit/UI_KeyboardEvent.h"

namespace HandlerSharedProjects {

namespace {

/// What says of a path whether it is `folder` or lies in it.
auto IsAtOrBelow(const UTF16String& folder) {
    return [below = PathUtils::AddTrailingSlash(folder)](const UTF16String& path) {
        return PathUtils::AddTrailingSlash(path).starts_with(below);
    };
}

void AppendMissing(UTF16StringVec& paths, const UTF16StringVec& more) {
    for (const UTF16String& path : more)
        if (std::ranges::find(paths, path) == paths.end()) paths.push_back(path);
}

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
    StateData state;
    if (const StateData* unfinished = mPendingState ? mPendingState.get() : mRestoredState.get()) {
        state = *unfinished;
    } else {
        state.mOpenFolderPaths = GetDeepestOpenFolderPaths();
        state.mSelectedRowPaths = GetSelectedPaths();
        state.mTopVisibleRowPath = GetRowPath(GetTree()->GetTopRow().get());
        AppendMissing(state.mOpenFolderPaths, mUnreachedState.mOpenFolderPaths);
        AppendMissing(state.mSelectedRowPaths, mUnreachedState.mSelectedRowPaths);
    }
    const auto tabView = mTabView.lock();
    state.mHeaderRowData = Columns::GetHeaderRowData(
        mHeaderRow, tabView ? tabView->GetColumnIDToBaseWidthMap() : Columns::ColumnWidths());
    return state;
}

void SharedProjectsDirectoryView::UpdateFromStateData(const StateData& state, bool waitForRoot) {
    const auto tabView = mTabView.lock();
    if (tabView && tabView->IsCreated()) {
        Columns::SetUpHeaderRowFromData(mHeaderRow, state.mHeaderRowData, tabView->GetColumnWidthScale());
        UpdateOpenRows();
    }
    const bool isRootAwaited = IsContentAwaited({});
    if (!mFolderOpener.IsIdle() || (waitForRoot && !isRootAwaited && !mIsRootListed)) {
        mPendingState = std::make_unique<StateData>(state);
        return;
    }
    FolderOpener::Paths awaitedPaths;
    if (waitForRoot && isRootAwaited)
        awaitedPaths.insert(PathUtils::ToNormalizedPath(SharedProjectsHandler::GetRootDirectory()));
    Restore(state, std::move(awaitedPaths));
}

void SharedProjectsDirectoryView::Restore(const StateData& state, FolderOpener::Paths awaitedPaths) {
    mPendingState.reset();
    mRestoredState = std::make_unique<StateData>(state);
    mFolderOpener.OpenFolders(
        state.mOpenFolderPaths, std::move(awaitedPaths),
        [this, selectedBefore = GetTree()->GetSelectedRows()] { FinishRestoring(selectedBefore); });
}

void SharedProjectsDirectoryView::FinishRestoring(const RowVec& selectedBefore) {
    const std::unique_ptr<const StateData> state = std::move(mRestoredState);
    // The production could not be listed after all; what is to be put back since then comes before it.
    if (!mIsRootListed) {
        if (!mPendingState) mPendingState = std::make_unique<StateData>(*state);
        return;
    }
    const bool hasUserSelected = GetTree()->GetSelectedRows() != selectedBefore;
    if (!hasUserSelected) SelectAndScrollTo(*state);
    KeepUnreached(*state);
    if (hasUserSelected) mUnreachedState.mSelectedRowPaths.clear();
    GoOnWithWhatWaits();
}

void SharedProjectsDirectoryView::NoteListing(const UTF16String& path, const ContentDelivery& delivery) {
    const bool isGone = delivery.mSystemError == ENOENT || delivery.mSystemError == ENOTDIR;
    if (delivery.mSystemError == 0 || isGone)
        mUnlistedFolders.erase(path);
    else
        mUnlistedFolders.insert(path);
}

/// True for what lies at or below a folder that the volume did not let be listed: it may be there.
bool SharedProjectsDirectoryView::IsUnreached(const UTF16String& path) const {
    return std::ranges::any_of(mUnlistedFolders,
                               [&](const UTF16String& folder) { return IsAtOrBelow(folder)(path); });
}

void SharedProjectsDirectoryView::KeepUnreached(const StateData& state) {
    const auto keep = [this](UTF16StringVec& kept, const UTF16StringVec& paths) {
        UTF16StringVec unreached;
        std::ranges::copy_if(paths, std::back_inserter(unreached),
                             [this](const UTF16String& path) { return IsUnreached(path); });
        AppendMissing(kept, unreached);
    };
    keep(mUnreachedState.mOpenFolderPaths, state.mOpenFolderPaths);
    keep(mUnreachedState.mSelectedRowPaths, state.mSelectedRowPaths);
}

/// Opens what has been kept of folders that have been listed after all. Their rows are not selected any more.
void SharedProjectsDirectoryView::OpenReachedFolders() {
    if (mUnreachedState == StateData() || !mFolderOpener.IsIdle()) return;
    const StateData before = std::exchange(mUnreachedState, {});
    KeepUnreached(before);
    UTF16StringVec folders = before.mOpenFolderPaths;
    std::erase_if(folders, [this](const UTF16String& path) { return IsUnreached(path); });
    if (folders.empty()) return;
    const auto keepAndGoOn = [this, folders] {
        StateData state;
        state.mOpenFolderPaths = folders;
        KeepUnreached(state);
        GoOnWithWhatWaits();
    };
    mFolderOpener.OpenFolders(folders, {}, keepAndGoOn);
}

void SharedProjectsDirectoryView::SelectAndScrollTo(const StateData& state) {
    SelectRowsByPaths(state.mSelectedRowPaths);
    mRestoredTopRow = GetRowFromPath(state.mTopVisibleRowPath);
    if (!state.mTopVisibleRowPath.empty())
        GetTree()->ScrollRowToTop(mRestoredTopRow.get());
    else if (!state.mSelectedRowPaths.empty())
        GetTree()->ScrollRowIntoView(GetRowFromPath(state.mSelectedRowPaths.front()).get(), false, 0, false);
}

/// The user, who scrolls or chooses an order, lets go of the top row that was put back.
void SharedProjectsDirectoryView::SortRows() {
    if (mRestoredTopRow && mRestoredTopRow != GetTree()->GetTopRow()) mRestoredTopRow.reset();
    GetTree()->SortTree();
    if (mRestoredTopRow) GetTree()->ScrollRowToTop(mRestoredTopRow.get());
}

/// What has waited for the opener, or for content, goes on.
void SharedProjectsDirectoryView::GoOnWithWhatWaits() {
    if (mPendingState && mIsRootListed && mFolderOpener.IsIdle()) Restore(StateData(*mPendingState), {});
    OpenReachedFolders();
    SelectAwaitedRows();
}

void SharedProjectsDirectoryView::StopOpening() {
    mFolderOpener.Stop();
    mPendingState.reset();
    mRestoredState.reset();
}

void SharedProjectsDirectoryView::OnRowDisclosureChanged(const RowRef& row, bool opened) {
    const bool isDeep = (GetCurrentModKeys() & kModKey_Alt) != 0;
    // The user has decided how this one is left.
    if (!opened) std::erase_if(mUnreachedState.mOpenFolderPaths, IsAtOrBelow(GetRowPath(row.get())));
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
    StopOpening();
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

bool SharedProjectsDirectoryView::UI_DoKeyboardEvent(UI_Node* node, const UI_KeyboardEvent& event) {
    if (event.GetCode() != kKey_Escape || mFolderOpener.IsIdle())
        return MediaBrowserDirectoryView::UI_DoKeyboardEvent(node, event);
    StopOpening();
    return true;
}

}  // namespace HandlerSharedProjects
