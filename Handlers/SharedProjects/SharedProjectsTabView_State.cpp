// What is remembered of the panel for each production, and when.
#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Logging.h"

namespace HandlerSharedProjects {

SharedProjectsTabView::StateData SharedProjectsTabView::GetCurrentStateData() const {
    StateData state;
    if (!AreTreeViewsCreated()) return state;
    const SharedProjectsDirectoryView& directoryView = *mTreeView->GetDirectoryView();
    if (mTreeView->GetViewType() == TreeViewType::SearchResultsView)
        mTreeView->SyncTreeColumnProperties(*mTreeView->GetSearchResultsView());
    else
        mTreeView->SyncTreeColumnProperties(directoryView);
    state.mDirectoryViewData = directoryView.GetCurrentStateData();
    state.mZoom = static_cast<float>(mZoomAmount);
    state.mDockedInMainWindow = IsDockedInMainWindow();
    state.mFloatingWindowGlobalRect = GetFloatingWindowGlobalRect();
    state.mSearchText = mSearchBox.GetText();
    return state;
}

void SharedProjectsTabView::UpdateFromStateData(const StateData& state) {
    if (!AreTreeViewsCreated()) return;
    mZoomAmount = state.mZoom;
    if (mZoomSlider) mZoomSlider->SetValue(mZoomAmount);
    for (const Columns::ColumnData& column : state.mDirectoryViewData.mHeaderRowData.mColumnDataList)
        mColumnIDToBaseWidth[column.mColumnID] = column.mWidth;
    // The widths are scaled by the zoom, and given to both trees.
    UpdateViewsFromZoomAmount();
    mTreeView->GetDirectoryView()->UpdateFromStateData(state.mDirectoryViewData, true);
    // All zero where nobody could tell: then the panel stays where it stands.
    if (state.mDockedInMainWindow || state.mFloatingWindowGlobalRect != Rect())
        SetPlace(state.mDockedInMainWindow, state.mFloatingWindowGlobalRect);
    mSearchBox.SetText(state.mSearchText);
    OnEditTextValueChanged();
}

void SharedProjectsTabView::SaveGlobalStateData() {
    SharedProjectsHandler* handler = SharedProjectsHandler::GetHandler();
    if (handler && AreTreeViewsCreated())
        handler->SaveStateDataForProduction(mShownProduction, GetCurrentStateData());
}

void SharedProjectsTabView::LoadGlobalStateData() {
    mShownProduction = SharedProjectsHandler::GetRootDirectory();
    SharedProjectsHandler* handler = SharedProjectsHandler::GetHandler();
    StateData state;
    if (handler && handler->LoadStateDataForProduction(mShownProduction, state)) UpdateFromStateData(state);
}

void SharedProjectsTabView::LeaveClosedProduction() {
    if (mShownProduction.empty() || mShownProduction == SharedProjectsHandler::GetRootDirectory()) return;
    // What it may wait for must not come between the production and who else hears of its end.
    if (auto giveName = EndEdit()) AsyncCallFromMainThread(std::move(giveName), 0);
    SaveGlobalStateData();
    mShownProduction.clear();
}

}  // namespace HandlerSharedProjects
