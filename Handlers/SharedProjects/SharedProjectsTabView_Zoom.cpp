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
    SharedProjectsDirectoryView& directoryView = *mTreeView->GetDirectoryView();
    SharedProjectsSearchResultsView& searchResultsView = *mTreeView->GetSearchResultsView();
    directoryView.SetRowHeight(rowHeight);
    searchResultsView.SetRowHeight(rowHeight);
    Columns::SetColumnWidths(directoryView.GetHeaderRow(), mColumnIDToBaseWidth, scale);
    Columns::SetColumnWidths(searchResultsView.GetHeaderRow(), mColumnIDToBaseWidth, scale);
}

void SharedProjectsTabView::OnZoomSliderChanging(const UI_ChangeMessage&) {
    mZoomAmount = mZoomSlider->GetValue();
    UpdateViewsFromZoomAmount();
}

void SharedProjectsTabView::OnZoomSliderChanged(const UI_ChangeMessage&) {
    Utils::LogViewPropertyUsage("Zoom", GetViewPropertyLoggingData());
}

bool SharedProjectsTabView::OnZoomInCommand(const Command&) {
    const double step = GetZoomStep();
    SetZoomFromCommand((std::floor(mZoomAmount / step) + 1) * step);
    return true;
}

bool SharedProjectsTabView::OnZoomOutCommand(const Command&) {
    const double step = GetZoomStep();
    SetZoomFromCommand((std::ceil(mZoomAmount / step) - 1) * step);
    return true;
}

void SharedProjectsTabView::SetZoomFromCommand(double zoom) {
    mZoomAmount = std::clamp(zoom, 0.0, 1.0);
    if (mZoomSlider) mZoomSlider->SetValue(mZoomAmount);
    UpdateViewsFromZoomAmount();
    Utils::LogViewPropertyUsage("Zoom", GetViewPropertyLoggingData());
}

Utils::ViewPropertyLoggingData SharedProjectsTabView::GetViewPropertyLoggingData() const {
    Utils::ViewPropertyLoggingData data;
    data.mRowHeight = GetRowHeightFromZoomFraction(mZoomAmount);
    if (AreTreeViewsCreated())
        data.mColumnIndices =
            Columns::GetViewPropertyLoggingColumnMap(mTreeView->GetViewType() == TreeViewType::SearchResultsView
                                                         ? mTreeView->GetSearchResultsView()->GetHeaderRow()
                                                         : mTreeView->GetDirectoryView()->GetHeaderRow());
    return data;
}

void SharedProjectsTabView::UpdateSelectionCount() {
    if (!AreTreeViewsCreated() || !mSelectionCount) return;
    const std::size_t selected = mTreeView->GetViewType() == TreeViewType::SearchResultsView
                                     ? mTreeView->GetSearchResultsView()->CountSelectedRows()
                                     : mTreeView->GetDirectoryView()->GetTree()->CountSelectedRows();
    const UTF16String text = GetSelectionCountText(selected, mTreeView->GetOpenedRowsCount());
    mSelectionCount->SetValue(text);
    // Long texts are cut where the bar is narrow.
    mSelectionCount->SetToolTipText(text, kSelectionCountToolTipDelayMilliseconds);
}

}  // namespace HandlerSharedProjects
