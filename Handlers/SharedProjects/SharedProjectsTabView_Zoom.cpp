// The zoom, the column widths that follow it, and the selection count.
#include <algorithm>
#include <cmath>

#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/DebugDatabase.h"
#include "host/core/Localizer.h"

namespace HandlerSharedProjects {

namespace {

const CachedDatabaseValue<std::int32_t> sRowHeightMin{"SharedProjects.Controls.RowHeight.Min", 25};
const CachedDatabaseValue<std::int32_t> sRowHeightMax{"SharedProjects.Controls.RowHeight.Max", 70};
const CachedDatabaseValue<double> sZoomStep{"SharedProjects.Controls.Zoom.Key.StepAmount", 0.25};

constexpr double kSmallestZoomStep = 0.001;
constexpr int kSelectionCountToolTipDelayMilliseconds = 400;

/// At least 1, whatever the tunable says: it is divided by.
float GetSmallestRowHeight() {
    return static_cast<float>(std::max(sRowHeightMin.Get(), 1));
}
float GetLargestRowHeight() {
    return static_cast<float>(std::max(sRowHeightMax.Get(), 1));
}
double GetZoomStep() {
    return std::max(sZoomStep.Get(), kSmallestZoomStep);
}

float GetRowHeightFromZoomFraction(double zoom) {
    const float smallest = GetSmallestRowHeight();
    return smallest + static_cast<float>(zoom) * (GetLargestRowHeight() - smallest);
}

const char* GetSelectionCountKey(std::size_t selected, std::size_t total) {
    if (selected == 0)
        return total == 1 ? "$$$/Vantor/Handlers/ZuProductionFolder/TotalItemsSingular=@0 item"
                            "#{@0 is the number of items, here 1}"
                          : "$$$/Vantor/Handlers/ZuProductionFolder/TotalItemsPlural=@0 items"
                            "#{@0 is the number of items}";
    return total == 1
               ? "$$$/Vantor/Handlers/ZuProductionFolder/SelectedAndTotalItemsSingular=@0 of @1 item selected"
                 "#{@0 is the number of selected items, @1 that of all items, here 1}"
               : "$$$/Vantor/Handlers/ZuProductionFolder/SelectedAndTotalItemsPlural=@0 of @1 items selected"
                 "#{@0 is the number of selected items, @1 that of all items}";
}

UTF16String GetSelectionCountText(std::size_t selected, std::size_t total) {
    const UTF16String totalText = NumberToString(static_cast<long long>(total));
    const char* key = GetSelectionCountKey(selected, total);
    return selected == 0 ? ZString(key, {totalText})
                         : ZString(key, {NumberToString(static_cast<long long>(selected)), totalText});
}

}  // namespace

float SharedProjectsTabView::GetColumnWidthScale() const {
    return (GetLargestRowHeight() / GetSmallestRowHeight() - 1.0f) * static_cast<float>(mZoomAmount) + 1.0f;
}

void SharedProjectsTabView::UpdateBaseColumnWidthMap(const Columns::HeaderRowRef& headerRow,
                                                     unsigned columnIndex) {
    const ColumnID column = headerRow->GetColumnAt(columnIndex);
    mColumnIDToBaseWidth[column] = headerRow->GetColumnWidth(column) / GetColumnWidthScale();
}

void SharedProjectsTabView::UpdateBaseColumnWidthMapForAllColumns(const Columns::HeaderRowRef& headerRow) {
    for (unsigned i = 0; i < headerRow->GetCountOfColumns(); ++i) UpdateBaseColumnWidthMap(headerRow, i);
}

void SharedProjectsTabView::UpdateViewsFromZoomAmount() {
    if (!AreTreeViewsCreated()) return;
    const float rowHeight = GetRowHeightFromZoomFraction(mZoomAmount);
    const float scale = GetColumnWidthScale();
    for (SharedProjectsItemTree* items :
         {&mTreeView->GetDirectoryView()->GetItems(), &mTreeView->GetSearchResultsView()->GetItems()}) {
        items->SetRowHeight(rowHeight);
        Columns::SetColumnWidths(items->GetHeaderRow(), mColumnIDToBaseWidth, scale);
    }
}

void SharedProjectsTabView::OnZoomSliderChanging(const UI_ChangeMessage&) {
    mZoomAmount = mZoomSlider->GetValue();
    UpdateViewsFromZoomAmount();
}

void SharedProjectsTabView::OnZoomSliderChanged(const UI_ChangeMessage&) {
    Utils::LogViewPropertyUsage("Zoom", GetViewPropertyLoggingData());
}

void SharedProjectsTabView::StepZoom(int direction) {
    const double step = GetZoomStep();
    const double steps = mZoomAmount / step;
    const double next = direction > 0 ? std::floor(steps) + 1 : std::ceil(steps) - 1;
    mZoomAmount = std::clamp(next * step, 0.0, 1.0);
    if (mZoomSlider) mZoomSlider->SetValue(mZoomAmount);
    UpdateViewsFromZoomAmount();
    Utils::LogViewPropertyUsage("Zoom", GetViewPropertyLoggingData());
}

Utils::ViewPropertyLoggingData SharedProjectsTabView::GetViewPropertyLoggingData() const {
    Utils::ViewPropertyLoggingData data;
    data.mRowHeight = GetRowHeightFromZoomFraction(mZoomAmount);
    if (const SharedProjectsItemTree* items = GetShownItems())
        data.mColumnIndices = Columns::GetViewPropertyLoggingColumnMap(items->GetHeaderRow());
    return data;
}

void SharedProjectsTabView::UpdateSelectionCount() {
    if (!AreTreeViewsCreated() || !mSelectionCount) return;
    const SharedProjectsItemTree& items = mTreeView->GetShownItems();
    const UTF16String text = GetSelectionCountText(items.CountSelectedRows(), items.GetOpenedRowsCount());
    mSelectionCount->SetValue(text);
    // Long texts are cut where the bar is narrow.
    mSelectionCount->SetToolTipText(text, kSelectionCountToolTipDelayMilliseconds);
}

}  // namespace HandlerSharedProjects
