// How the user has left the view, and how it is put back.
#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"

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
    StateData state;
    state.mOpenFolderPaths = GetDeepestOpenFolderPaths();
    state.mSelectedRowPaths = GetSelectedPaths();
    const auto tabView = mTabView.lock();
    state.mHeaderRowData = Columns::GetHeaderRowData(
        mHeaderRow, tabView ? tabView->GetColumnIDToBaseWidthMap() : Columns::ColumnWidths());
    state.mTopVisibleRowPath = GetRowPath(GetTree()->GetTopRow().get());
    return state;
}

}  // namespace HandlerSharedProjects
