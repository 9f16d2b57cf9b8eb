// Where everything in the panel stands. All numbers are tunables, read anew for each layout.
#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/DebugDatabase.h"

namespace HandlerSharedProjects {

namespace {

using IntTunable = CachedDatabaseValue<std::int32_t>;
using FloatTunable = CachedDatabaseValue<float>;

const IntTunable sPanelHeightMin{"SharedProjects.Stacked.PanelHeight.Min", 100};
const IntTunable sPanelHeightMax{"SharedProjects.Stacked.PanelHeight.Max", 600};
const IntTunable sSideMargins{"SharedProjects.Controls.SideMargins", 19};
const IntTunable sTopBarHeight{"SharedProjects.Controls.TopButtonBar.Height", 43};
const IntTunable sBottomBarTopMargin{"SharedProjects.Controls.BottomButtonBar.TopMargin", 6};
const IntTunable sBottomBarHeight{"SharedProjects.Controls.BottomButtonBar.Height", 38};
const IntTunable sSearchBoxWidthMin{"SharedProjects.Controls.SearchBox.Width.Min", 80};
const IntTunable sSearchBoxWidthMax{"SharedProjects.Controls.SearchBox.Width.Max", 200};
const IntTunable sSearchBoxHeight{"SharedProjects.Controls.SearchBox.Height", 20};
const IntTunable sMarginToRightOfSearchBox{"SharedProjects.Controls.MarginToRightOfSearchBox", 15};
const IntTunable sSelectionCountWidth{"SharedProjects.Controls.SelectionCount.Width", 130};
const IntTunable sSelectionCountHeight{"SharedProjects.Controls.SelectionCount.Height", 23};
const IntTunable sDirectoryMinHeight{"SharedProjects.Controls.Directory.MinHeight", 50};
const IntTunable sZoomWidth{"SharedProjects.Controls.Zoom.Width", 71};
const IntTunable sZoomHeight{"SharedProjects.Controls.Zoom.Height", 13};
const IntTunable sZoomThumbWidth{"SharedProjects.Controls.Zoom.Thumb.Width", 12};
const IntTunable sZoomThumbHeight{"SharedProjects.Controls.Zoom.Thumb.Height", 12};
const IntTunable sNewProjectButtonWidth{"SharedProjects.Controls.NewProjectPictureButton.Width", 30};
const IntTunable sNewProjectButtonHeight{"SharedProjects.Controls.NewProjectPictureButton.Height", 30};
const IntTunable sNewFolderButtonWidth{"SharedProjects.Controls.NewFolderPictureButton.Width", 30};
const IntTunable sNewFolderButtonHeight{"SharedProjects.Controls.NewFolderPictureButton.Height", 30};
const IntTunable sTrashButtonWidth{"SharedProjects.Controls.TrashPictureButton.Width", 30};
const IntTunable sTrashButtonHeight{"SharedProjects.Controls.TrashPictureButton.Height", 30};
const IntTunable sPictureButtonsSpacing{"SharedProjects.Controls.PictureButtons.Spacing", 0};
const FloatTunable sNewProjectImageScale{"SharedProjects.Controls.NewProject.ImageScale", 1.0f};
const FloatTunable sNewFolderImageScale{"SharedProjects.Controls.NewFolder.ImageScale", 1.0f};

constexpr int kSnapWidth = 360;
constexpr int kMarginToRightOfSelectionCount = 15;

struct Bar {
    int mTop;
    int mHeight;
};

Bar GetTopBar() {
    return {0, sTopBarHeight.Get()};
}

Bar GetBottomBar(const Rect& panel, const Rect& treeArea) {
    const int height = sBottomBarHeight.Get();
    return {std::max(panel.height - height, treeArea.Bottom() + sBottomBarTopMargin.Get()), height};
}

Rect GetRectForControlVerticallyCenteredInBar(int left, int width, int height, const Bar& bar) {
    return {left, bar.mTop + std::max(0, bar.mHeight - height) / 2, width, height};
}

}  // namespace

Rect SharedProjectsTabView::GetDirectoryViewBounds(const Rect& bounds) {
    const int margin = sSideMargins.Get();
    const int top = sTopBarHeight.Get();
    const int height = bounds.height - sBottomBarTopMargin.Get() - sBottomBarHeight.Get() - top;
    return {margin, top, bounds.width - 2 * margin, std::max(height, sDirectoryMinHeight.Get())};
}

Rect SharedProjectsTabView::GetTrashButtonBounds(const Rect& bounds) {
    const int width = sTrashButtonWidth.Get();
    return GetRectForControlVerticallyCenteredInBar(bounds.width - sSideMargins.Get() - width, width,
                                                    sTrashButtonHeight.Get(), GetTopBar());
}

Rect SharedProjectsTabView::GetNewFolderButtonBounds(const Rect& bounds) {
    const int width = sNewFolderButtonWidth.Get();
    const int left = GetTrashButtonBounds(bounds).x - sPictureButtonsSpacing.Get() - width;
    return GetRectForControlVerticallyCenteredInBar(left, width, sNewFolderButtonHeight.Get(), GetTopBar());
}

Rect SharedProjectsTabView::GetNewProjectButtonBounds(const Rect& bounds) {
    const int width = sNewProjectButtonWidth.Get();
    const int left = GetNewFolderButtonBounds(bounds).x - sPictureButtonsSpacing.Get() - width;
    return GetRectForControlVerticallyCenteredInBar(left, width, sNewProjectButtonHeight.Get(), GetTopBar());
}

Rect SharedProjectsTabView::GetSearchBoxBounds(const Rect& bounds) {
    const int left = sSideMargins.Get();
    const int available = GetNewProjectButtonBounds(bounds).x - sMarginToRightOfSearchBox.Get() - left;
    // Not std::clamp: overridden tunables may cross each other.
    const int width = std::max(std::min(available, sSearchBoxWidthMax.Get()), sSearchBoxWidthMin.Get());
    return GetRectForControlVerticallyCenteredInBar(left, width, sSearchBoxHeight.Get(), GetTopBar());
}

Rect SharedProjectsTabView::GetZoomSliderBounds(const Rect& bounds) {
    const int width = sZoomWidth.Get();
    return GetRectForControlVerticallyCenteredInBar(bounds.width - sSideMargins.Get() - width, width,
                                                    sZoomHeight.Get(),
                                                    GetBottomBar(bounds, GetDirectoryViewBounds(bounds)));
}

Rect SharedProjectsTabView::GetSelectionCountBounds(const Rect& bounds) {
    const int left = sSideMargins.Get();
    // Large numbers and other languages need more than the text's own width: it gets what is free beside it.
    const int available = GetZoomSliderBounds(bounds).x - kMarginToRightOfSelectionCount - left;
    return GetRectForControlVerticallyCenteredInBar(left, std::max(available, sSelectionCountWidth.Get()),
                                                    sSelectionCountHeight.Get(),
                                                    GetBottomBar(bounds, GetDirectoryViewBounds(bounds)));
}

void SharedProjectsTabView::SetBoundsSelf(const Rect& bounds) {
    TabView::SetBoundsSelf(bounds);
    if (AreTreeViewsCreated()) mTreeView->SetBounds(GetDirectoryViewBounds(bounds));
    mSearchBox.SetBounds(GetSearchBoxBounds(bounds));
    if (mSelectionCount) mSelectionCount->UI_SetBounds(Utils::ToToolkitRect(GetSelectionCountBounds(bounds)));
    if (mZoomSlider) mZoomSlider->UI_SetBounds(Utils::ToToolkitRect(GetZoomSliderBounds(bounds)));
    mNewProjectButton.SetBounds(GetNewProjectButtonBounds(bounds));
    mNewFolderButton.SetBounds(GetNewFolderButtonBounds(bounds));
    mTrashButton.SetBounds(GetTrashButtonBounds(bounds));
}

void SharedProjectsTabView::ApplySliderTunables() {
    if (!mZoomSlider) return;
    mZoomSlider->SetThumbSize(static_cast<float>(sZoomThumbWidth.Get()),
                              static_cast<float>(sZoomThumbHeight.Get()));
}

void SharedProjectsTabView::ApplyButtonTunables() {
    mNewProjectButton.SetScale(sNewProjectImageScale.Get());
    mNewFolderButton.SetScale(sNewFolderImageScale.Get());
}

bool SharedProjectsTabView::GetSnapSizesSelf(std::vector<Point>& sizes) const {
    if (!TabView::GetSnapSizesSelf(sizes)) return false;
    sizes.push_back({kSnapWidth, GetBounds().height});
    return true;
}

float SharedProjectsTabView::GetStackedDimensionHeight() const {
    return AreTreeViewsCreated() ? mTreeView->GetDirectoryView()->GetExactOpenedHeight() : 0;
}

int SharedProjectsTabView::GetStackedDimensionHeightMin() const {
    return sPanelHeightMin.Get();
}

int SharedProjectsTabView::GetStackedDimensionHeightMax() const {
    return sPanelHeightMax.Get();
}

}  // namespace HandlerSharedProjects
