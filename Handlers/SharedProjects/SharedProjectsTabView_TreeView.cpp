#include <utility>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"

namespace HandlerSharedProjects {

SharedProjectsTreeView::SharedProjectsTreeView(Commander* parent) : SubView(parent) {}

SharedProjectsTreeView::~SharedProjectsTreeView() {
    Destroy();
}

void SharedProjectsTreeView::Init(const std::shared_ptr<SharedProjectsTabView>& tabView,
                                  const std::shared_ptr<MediaBrowserContentManager>& contentManager) {
    mSearchResultsView = new SharedProjectsSearchResultsView(tabView);
    mDirectoryView =
        new SharedProjectsDirectoryView({}, contentManager, SharedProjectsHandler::GetRootDirectory(), tabView);
}

void SharedProjectsTreeView::FinishCreateSelf(const Rect& bounds) {
    SubView::FinishCreateSelf(bounds);
    GetToolkitContainer()->AddChild(mDirectoryView);
    GetToolkitContainer()->AddChild(mSearchResultsView);
    LayOutViews(bounds);
    SetView(TreeViewType::DirectoryView);
    GetToolkitContainer()->UI_SetNodeID("ZuProduction.TreeView");
}

void SharedProjectsTreeView::SetBoundsSelf(const Rect& bounds) {
    SubView::SetBoundsSelf(bounds);
    LayOutViews(bounds);
}

void SharedProjectsTreeView::LayOutViews(const Rect& bounds) {
    const RectT<float> local = Utils::ToToolkitRect({0, 0, bounds.width, bounds.height});
    if (mDirectoryView) mDirectoryView->UI_SetBounds(local);
    if (mSearchResultsView) mSearchResultsView->UI_SetBounds(local);
}

void SharedProjectsTreeView::SetView(TreeViewType type) {
    // A view that shows already has the columns as the user has set them meanwhile.
    const bool isSwitch = std::exchange(mViewType, type) != type;
    if (type == TreeViewType::SearchResultsView) {
        if (isSwitch) SyncTreeColumnProperties(*mDirectoryView);
        mSearchResultsView->UI_Show(true);
        mDirectoryView->UI_Show(false);
    } else if (type == TreeViewType::DirectoryView) {
        if (isSwitch) SyncTreeColumnProperties(*mSearchResultsView);
        mDirectoryView->UI_Show(true);
        mSearchResultsView->UI_Show(false);
        mDirectoryView->UpdateOpenRows();
    }
}

void SharedProjectsTreeView::SyncTreeColumnProperties(const UI_SubView& source) {
    const Columns::HeaderRowRef directory = mDirectoryView->GetHeaderRow();
    const Columns::HeaderRowRef searchResults = mSearchResultsView->GetHeaderRow();
    if (&source == mDirectoryView.get())
        Columns::SyncColumnProperties(directory, searchResults);
    else
        Columns::SyncColumnProperties(searchResults, directory);
}

SharedProjectsItemTree& SharedProjectsTreeView::GetShownItems() const {
    return mViewType == TreeViewType::SearchResultsView ? mSearchResultsView->GetItems()
                                                        : mDirectoryView->GetItems();
}

void SharedProjectsTreeView::SetPauseUpdates(bool pause) {
    mDirectoryView->SetPauseUpdates(pause);
    mSearchResultsView->SetPauseUpdates(pause);
}

std::uint32_t SharedProjectsTreeView::GetOpenedRowsCount() const {
    return static_cast<std::uint32_t>(GetShownItems().GetOpenedRowsCount());
}

/// The field is empty before the view goes, which may call back.
template <class TreeView>
void SharedProjectsTreeView::ReleaseView(RefPtr<TreeView>& field) {
    const RefPtr<TreeView> view = std::exchange(field, {});
    if (UI_Container* container = GetToolkitContainer()) container->RemoveChild(view.get());
}

void SharedProjectsTreeView::DestroySelf() {
    ReleaseView(mDirectoryView);
    ReleaseView(mSearchResultsView);
    SubView::DestroySelf();
}

}  // namespace HandlerSharedProjects
