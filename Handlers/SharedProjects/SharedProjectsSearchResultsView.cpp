#include "Handlers/SharedProjects/SharedProjectsSearchResultsView.h"

#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/core/UserNotice.h"
#include "host/files/PathUtils.h"
#include "host/project/OpenProjects.h"

namespace HandlerSharedProjects {

namespace {

constexpr int kAllLevelsIndented = 0;
/// Width of one level of folders, as a fraction of the row height; the same as in the directory view.
constexpr float kIndentation = 0.62f;

}  // namespace

SharedProjectsSearchResultsView::SharedProjectsSearchResultsView(
    const std::shared_ptr<SharedProjectsTabView>& tabView)
    : mTabView(tabView),
      mTree(new MediaBrowserMultiColumnTree(kAllLevelsIndented, kIndentation)),
      mItems(*this, mTree, tabView, mLifetime) {
    UI_SetNodeID("Handlers.SharedProjects.SharedProjectsSearchResultsView");
    AddChild(mTree);
    SetupTree();
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
    tree.SetAccessibleName(Localizer::Get()->Localize(
        "$$$/Vantor/Handlers/ZuProductionFolder/Accessible/SearchResults=Search results"));
    using Items = SharedProjectsItemTree;
    tree.SetDrawCellOfRowCallback(Utils::BindCallback(&mItems, &Items::OnDrawCellOfRow, mLifetime));
    tree.SetRowOpenStateChangedCallback(Utils::BindCallback(&mItems, &Items::OnRowOpenStateChanged, mLifetime));
    tree.SetRowDoubleClickedCallback(Utils::BindCallback(this, &View::OnRowDoubleClicked, mLifetime));
    tree.SetRowContextMenuCallback(Utils::BindCallback(this, &View::OnRowContextMenu, mLifetime));
    tree.SetRowsSelectionChangedCallback(Utils::BindCallback(this, &View::OnRowSelectionChanged, mLifetime));
}

void SharedProjectsSearchResultsView::UI_SizeChanged(const RectT<float>& localBounds) {
    mTree->UI_SetBounds(localBounds);
}

UTF16String SharedProjectsSearchResultsView::GetItemPath(const RowRef& row) const {
    const auto entry = mRowToPath.left.find(row);
    return entry == mRowToPath.left.end() ? UTF16String() : entry->second;
}

UTF16String SharedProjectsSearchResultsView::GetItemName(const RowRef& row) const {
    const auto entry = mRowToPath.left.find(row);
    if (entry == mRowToPath.left.end()) return {};
    const UTF16String& path = entry->second;
    const std::size_t size = path.size() - path.ends_with(PathUtils::GetPathSeparator());
    const std::size_t begin = path.rfind(PathUtils::GetPathSeparator(), size - 1) + 1;
    return path.substr(begin, size - begin);
}

UTF16StringVec SharedProjectsSearchResultsView::GetSelectedPaths(bool includeAll) const {
    UTF16StringVec paths;
    for (const RowRef& row : mTree->GetSelectedRows())
        if (includeAll || IsFileRow(row)) paths.push_back(mItems.GetPath(row));
    return paths;
}

void SharedProjectsSearchResultsView::SelectAllProjects() {
    mItems.SelectOpenedRows([this](const RowRef& row) { return IsFileRow(row); });
}

std::function<bool(const RowRef&)> SharedProjectsSearchResultsView::GetHitTest() const {
    return [this](const RowRef& row) { return FileSearch::IsMatch(GetItemPath(row), mShownText); };
}

void SharedProjectsSearchResultsView::SelectFirstHit() {
    const RowVec rows = mTree->GetOpenedRows();
    const auto hit = std::ranges::find_if(rows, GetHitTest());
    if (hit == rows.end()) return;
    mTree->SelectRow(hit->get(), true, true, true);
}

void SharedProjectsSearchResultsView::OnRowDoubleClicked(const RowRef& row, Point) {
    if (!row || !PathUtils::ExistsOnDisk(GetItemPath(row), true)) return;
    const auto tabView = mTabView.lock();
    // A folder without hits below it has nothing to open here.
    if (tabView && !IsFileRow(row) && !row->HasChild())
        tabView->ShowFolder(mItems.GetPath(row));
    else
        mItems.OnRowDoubleClicked(row);
}

void SharedProjectsSearchResultsView::OnRowSelectionChanged(const RowVec&) {
    if (const auto tabView = mTabView.lock()) tabView->OnSelectionChanged();
}

bool SharedProjectsSearchResultsView::OnRowContextMenu(const RowRef& row, Point point) {
    mItems.SelectForContextMenu(row);
    const int types = row ? mItems.GetSelectedTypes() : 0;
    if ((types & ~Utils::kPathTypeFolder) == Utils::kPathTypeFile)
        HandleContextMenuProject(point);
    else if (row)
        TellInStatusBar(ZString(
            "$$$/Vantor/Handlers/ZuProductionFolder/NoMenuForHit=Among search results only projects outside the trash "
            "have a menu. Press Escape in the tree to see the folders again."));
    return true;
}

void SharedProjectsSearchResultsView::HandleContextMenuProject(Point point) {
    mItems.TrackContextMenu("HandlerSharedProjects_SearchResults_Context_Menu_Project", point);
}

void SharedProjectsSearchResultsView::ListenToMessage(const Message& message) {
    mItems.ListenToMessage(message);
}

}  // namespace HandlerSharedProjects
