#include "Handlers/SharedProjects/SharedProjectsSearchResultsView.h"

#include <set>

#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects {

namespace {

constexpr int kSpinnerInCentre = 1;
constexpr int kAllLevelsIndented = 0;
/// Width of one level of folders, as a fraction of the row height; the same as in the directory view.
constexpr float kIndentation = 0.62f;

}  // namespace

SharedProjectsSearchResultsView::SharedProjectsSearchResultsView(
    const std::shared_ptr<SharedProjectsTabView>& tabView)
    : mTabView(tabView), mTree(new MediaBrowserMultiColumnTree(kAllLevelsIndented, kIndentation)) {
    UI_SetNodeID("Handlers.SharedProjects.SharedProjectsSearchResultsView");
    AddChild(mTree);
    SetupTree();
    SetupHeaderRow();
    mQueuedSort =
        new QueueOnlyOnce(GetRegisteredMainThread(), [this, lifetime = std::weak_ptr<const void>(mLifetime)] {
            if (!lifetime.expired()) mTree->SortTree();
        });
    AddListener(kBackendProjectActivationStationID, this);
}

SharedProjectsSearchResultsView::~SharedProjectsSearchResultsView() {
    mLifetime.reset();
    try {
        RemoveListener(kBackendProjectActivationStationID, this);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void SharedProjectsSearchResultsView::SetupTree() {
    using View = SharedProjectsSearchResultsView;
    UI_MultiColumnTree& tree = *mTree;
    tree.UI_SetNodeID("ZuProduction.SearchResultsView.MediaBrowserMultiColumnTree");
    tree.SetAllowChildren(true);
    tree.SetDrawGridLines(false, false);
    tree.SetSupportMultipleSelections(true);
    tree.SetSupportNoneSelected(true);
    tree.SetSupportDeselectAllOnEmptyTreeClick(true);
    tree.SetSpinnerAlignment(kSpinnerInCentre);
    tree.SetAccessibleName(Localizer::Get()->Localize(
        "$$$/Vantor/Handlers/ZuProductionFolder/Accessible/SearchResults=Search results"));
    tree.SetDrawCellOfRowCallback(Utils::BindCallback(this, &View::OnDrawCellOfRow, mLifetime));
    tree.SetCellSortDataFunction(Utils::BindCallback(this, &View::GetCellSortDataAsString, mLifetime));
    tree.SetCellAccessibleTextFunction(Utils::BindCallback(this, &View::GetCellAccessibleText, mLifetime));
    tree.SetRowDoubleClickedCallback(Utils::BindCallback(this, &View::OnRowDoubleClicked, mLifetime));
    tree.SetRowOpenStateChangedCallback(Utils::BindCallback(this, &View::OnOpenStateChanged, mLifetime));
    tree.SetRowsSelectionChangedCallback(Utils::BindCallback(this, &View::OnRowSelectionChanged, mLifetime));
    tree.SetRowVisibilityChangedCallback(Utils::BindCallback(this, &View::OnRowVisibilityChanged, mLifetime));
    tree.SetColumnMovedCallback(Utils::BindCallback(this, &View::OnColumnMoved, mLifetime));
    tree.SetColumnResizedCallback(Utils::BindCallback(this, &View::OnColumnResized, mLifetime));
}

void SharedProjectsSearchResultsView::SetupHeaderRow() {
    using View = SharedProjectsSearchResultsView;
    mHeaderRow = new UI_MultiColumnTreeHeaderRow(*mTree);
    mTree->SetHeaderRow(mHeaderRow);
    Columns::SetupHeaderRow(mHeaderRow, Utils::BindCallback(this, &View::ColumnSortStringIsLess, mLifetime),
                            Utils::BindCallback(this, &View::OnSortChanged, mLifetime));
}

void SharedProjectsSearchResultsView::UI_SizeChanged(const RectT<float>& localBounds) {
    mTree->UI_SetBounds(localBounds);
}

void SharedProjectsSearchResultsView::SetRowHeight(float height) {
    mTree->SetRowHeight(height);
}

bool SharedProjectsSearchResultsView::IsFileRow(const RowRef& row) const {
    const auto entry = mRowToPath.left.find(row);
    return entry != mRowToPath.left.end() && IsVantorProjectFile(entry->second);
}

UTF16String SharedProjectsSearchResultsView::GetRowPath(const RowRef& row) const {
    const auto entry = mRowToPath.left.find(row);
    return entry == mRowToPath.left.end() ? UTF16String() : entry->second;
}

std::size_t SharedProjectsSearchResultsView::GetOpenedRowsCount() const {
    return mTree->CountOpenedRows();
}

UTF16StringVec SharedProjectsSearchResultsView::GetSelectedPaths(bool includeAll) const {
    UTF16StringVec paths;
    for (const RowRef& row : mTree->GetSelectedRows())
        if (includeAll || IsFileRow(row)) paths.push_back(GetRowPath(row));
    return paths;
}

UTF16StringVec SharedProjectsSearchResultsView::GetSelectedNonRedundantPaths() const {
    UTF16StringVec paths;
    for (const RowRef& row : Utils::GetNonRedundantRows(mTree->GetSelectedRows()))
        paths.push_back(PathUtils::ToNormalizedPath(GetRowPath(row)));
    return paths;
}

void SharedProjectsSearchResultsView::SelectRowsByPaths(const UTF16StringVec& paths) {
    RowVec rows;
    for (const UTF16String& path : paths)
        if (RowRef row = GetRowFromPath(path)) rows.push_back(std::move(row));
    mTree->SelectRows(rows);
}

std::size_t SharedProjectsSearchResultsView::CountSelectedRows() const {
    return mTree->CountSelectedRows();
}

void SharedProjectsSearchResultsView::SelectNextWhenSelectionHasGone() {
    mSelectionAfterRemoval.Expect(
        *mTree, [this](const RowRef& row) { return !Utils::IsInTrash(GetRowPath(row), true); });
}

void SharedProjectsSearchResultsView::SelectAllProjects() {
    RowVec rows;
    for (const RowRef& row : mTree->GetOpenedRows())
        if (IsFileRow(row)) rows.push_back(row);
    mTree->SelectRows(rows);
}

void SharedProjectsSearchResultsView::DeselectAll() {
    mTree->DeselectAllRows(false);
    OnRowSelectionChanged({});
}

void SharedProjectsSearchResultsView::ToggleRow(const RowRef& row) {
    if (mTree->IsRowOpen(row.get()))
        mTree->CloseRow(row.get());
    else
        mTree->OpenRow(row.get());
}

void SharedProjectsSearchResultsView::MoveHome() {
    Utils::MoveHome(mTree);
}

void SharedProjectsSearchResultsView::MoveEnd() {
    Utils::MoveEnd(mTree);
}

void SharedProjectsSearchResultsView::MovePageUp() {
    Utils::MovePageUp(mTree);
}

void SharedProjectsSearchResultsView::MovePageDown() {
    Utils::MovePageDown(mTree);
}

void SharedProjectsSearchResultsView::UpdateRow(const RowRef& row) {
    mTree->RedrawRow(row.get());
    UpdateMetadataForRow(row);
    AddNameCellView(row);
}

void SharedProjectsSearchResultsView::UpdateOpenRows() {
    for (const RowRef& row : mTree->GetOpenedRows()) UpdateRow(row);
}

void SharedProjectsSearchResultsView::UpdateMetadataForRow(const RowRef& row) {
    const auto entry = mRowToMetadata.find(row);
    if (entry == mRowToMetadata.end() || !IsFileRow(row)) return;
    if (entry->second.Update(mTree->IsRowVisible(row.get()), mHeaderRow->GetSortColumn())) mQueuedSort->Queue();
}

void SharedProjectsSearchResultsView::AddNameCellView(const RowRef& row) {
    if (!mTree->IsRowVisible(row.get())) return;
    Columns::AddNameCellView(*mTree, row, GetRowPath(row), mRowToMetadata[row].GetLockState());
}

void SharedProjectsSearchResultsView::OnRowVisibilityChanged(const RowRef& row) {
    if (mTree->IsRowVisible(row.get())) UpdateRow(row);
}

bool SharedProjectsSearchResultsView::ColumnSortStringIsLess(const UTF16String& a, const UTF16String& b) {
    return Columns::SortStringIsLess(a, b);
}

void SharedProjectsSearchResultsView::OnSortChanged(ColumnID, bool) {
    mIsHeaderChanged = true;
    for (const auto& [row, metadata] : mRowToMetadata) UpdateMetadataForRow(row);
}

void SharedProjectsSearchResultsView::OnColumnMoved(unsigned, unsigned) {
    mIsHeaderChanged = true;
    const auto tabView = mTabView.lock();
    if (tabView && tabView->AreTreeViewsCreated())
        Utils::LogViewPropertyUsage("ColumnOrder", tabView->GetViewPropertyLoggingData());
}

void SharedProjectsSearchResultsView::OnColumnResized(unsigned column, float) {
    mIsHeaderChanged = true;
    const auto tabView = mTabView.lock();
    if (tabView && tabView->AreTreeViewsCreated()) tabView->UpdateBaseColumnWidthMap(mHeaderRow, column);
}

void SharedProjectsSearchResultsView::OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column,
                                                      const RectT<float>& cell) {
    if (!IsFileRow(row)) return;
    Columns::DrawMetadataCellOfRow(drawbot, mRowToMetadata[row], column, cell, mHeaderRow);
}

UTF16String SharedProjectsSearchResultsView::GetCellSortDataAsString(const RowRef& row, unsigned column) {
    if (IsFileRow(row))
        return mRowToMetadata[row].GetColumnDataAsSortableString(mHeaderRow->GetColumnAt(column));
    return Columns::IsNameColumn(mHeaderRow, column) ? Columns::GetPathDisplayName(GetRowPath(row))
                                                     : UTF16String();
}

UTF16String SharedProjectsSearchResultsView::GetCellAccessibleText(const RowRef& row, unsigned column) {
    return Columns::GetCellAccessibleText(mHeaderRow, column, GetRowPath(row),
                                          IsFileRow(row) ? &mRowToMetadata[row] : nullptr);
}

void SharedProjectsSearchResultsView::OnRowDoubleClicked(const RowRef& row, Point) {
    const UTF16String path = GetRowPath(row);
    if (!row || !PathUtils::ExistsOnDisk(path, true)) return;
    if (IsFileRow(row))
        Utils::OpenProjectOutsideTrash(path);
    else
        ToggleRow(row);
}

void SharedProjectsSearchResultsView::OnOpenStateChanged(const RowRef&, bool) {
    if (const auto tabView = mTabView.lock()) tabView->UpdateSelectionCount();
}

void SharedProjectsSearchResultsView::OnRowSelectionChanged(const RowVec&) {
    if (const auto tabView = mTabView.lock()) tabView->OnSelectionChanged();
}

void SharedProjectsSearchResultsView::ListenToMessage(const Message& message) {
    if (const auto* opened = MessageCast<ProjectOpenedMessage>(message))
        OnProjectOpened(opened->GetProject());
    else if (const auto* closed = MessageCast<ProjectClosedMessage>(message))
        OnProjectClosed(closed->GetProject());
    else if (const auto* readOnly = MessageCast<ReadOnlyStateChangedMessage>(message))
        UpdateRowOfProject(readOnly->GetProject());
}

void SharedProjectsSearchResultsView::OnProjectOpened(const ProjectRef& project) {
    UpdateRowOfProject(project);
}

void SharedProjectsSearchResultsView::OnProjectClosed(const ProjectRef& project) {
    UpdateRowOfProject(project);
}

void SharedProjectsSearchResultsView::UpdateRowOfProject(const ProjectRef& project) {
    // Whoever opened it through a link has it open under two names.
    for (const UTF16String& path :
         std::set{project->GetProjectPath(), Utilities::GetRealProjectPath(project)}) {
        if (!IsWithinCurrentZuProductionFolder(path)) continue;
        if (const RowRef row = GetRowFromPath(path)) UpdateRow(row);
    }
}

}  // namespace HandlerSharedProjects
