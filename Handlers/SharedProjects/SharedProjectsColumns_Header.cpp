#include <algorithm>
#include <set>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "host/core/DebugDatabase.h"
#include "host/core/Localizer.h"

namespace HandlerSharedProjects::Columns {

namespace {

const CachedDatabaseValue<float> sColumnMinWidthDBValue{"SharedProjects.Columns.MinWidth", 50.0f};
const CachedDatabaseValue<float> sColumnWidthDBValue{"SharedProjects.Columns.Width", 200.0f};

/// Of a column, in view units; wider ones have come from nobody who looked at them.
constexpr float kWidestColumn = 10'000;

struct ColumnTitle {
    ColumnID mColumnID;
    const char* mTitle;
};

constexpr ColumnTitle kColumnTitles[] = {
    {kNameColumnID, "$$$/Vantor/Handlers/ZuProductionFolder/Columns/Name=Name"},
    {kLockedColumnID, "$$$/Vantor/Handlers/ZuProductionFolder/Columns/ProjectLocked=Project Locked"},
    {kModifiedDateColumnID, "$$$/Vantor/Handlers/ZuProductionFolder/Columns/ModDate=Date Modified"},
    {kCreationDateColumnID, "$$$/Vantor/Handlers/ZuProductionFolder/Columns/CreationDate=Date Created"},
    {kSizeColumnID, "$$$/Vantor/Handlers/ZuProductionFolder/Columns/Size=Size"},
};

/// Puts a column at a position; harmless when it stands there.
void PlaceColumn(UI_MultiColumnTreeHeaderRow& headerRow, ColumnID column, int index) {
    if (headerRow.GetIndexOfColumn(column) != index) headerRow.MoveColumn(column, index, true);
}

}  // namespace

void SetupHeaderRow(const HeaderRowRef& headerRow,
                    const SharedFunction<bool(const UTF16String&, const UTF16String&)>& sortLess,
                    const SharedFunction<void(ColumnID, bool)>& userChangedSort) {
    for (const ColumnTitle& column : kColumnTitles)
        headerRow->AppendColumn(Localizer::Get()->Localize(column.mTitle), column.mColumnID);
    SetColumnMinimumWidths(headerRow);
    for (unsigned i = 0; i < headerRow->GetCountOfColumns(); ++i)
        headerRow->SetColumnWidth(headerRow->GetColumnAt(i), sColumnWidthDBValue.Get());
    headerRow->SetColumnAlignment(kSizeColumnID, UI_Alignment::Right);
    headerRow->SetAllowColumnMovingByUser(true, false);
    headerRow->ShowSortIndicator(true);
    if (sortLess && *sortLess) headerRow->SetStringSortingCallback(sortLess);
    if (userChangedSort && *userChangedSort) headerRow->SetUserChangedSortCallback(userChangedSort);
}

void SetColumnMinimumWidths(const HeaderRowRef& headerRow) {
    for (unsigned i = 0; i < headerRow->GetCountOfColumns(); ++i)
        headerRow->SetColumnAllowedMinimumWidth(headerRow->GetColumnAt(i), sColumnMinWidthDBValue.Get());
}

bool IsNameColumn(const HeaderRowRef& headerRow, unsigned index) {
    return headerRow && headerRow->GetColumnAt(index) == kNameColumnID;
}

void SetColumnWidths(const HeaderRowRef& headerRow, const ColumnWidths& widths, float scale) {
    for (const auto& [column, width] : widths) headerRow->SetColumnWidth(column, width * scale);
}

void SyncColumnProperties(const HeaderRowRef& from, const HeaderRowRef& to) {
    if (!from || !to) return;
    to->SetSortColumn(from->GetSortColumn());
    to->SetSortDirection(from->IsSortDirectionAscending());
    for (unsigned i = 0; i < from->GetCountOfColumns(); ++i) {
        const ColumnID column = from->GetColumnAt(i);
        if (to->GetIndexOfColumn(column) < 0) continue;
        to->SetColumnWidth(column, from->GetColumnWidth(column));
        PlaceColumn(*to, column, static_cast<int>(i));
    }
}

HeaderRowData GetHeaderRowData(const HeaderRowRef& headerRow, const ColumnWidths& baseWidths) {
    HeaderRowData data;
    if (!headerRow) return data;
    for (unsigned i = 0; i < headerRow->GetCountOfColumns(); ++i) {
        const ColumnID column = headerRow->GetColumnAt(i);
        const auto width = baseWidths.find(column);
        data.mColumnDataList.push_back(
            {column, width == baseWidths.end() ? sColumnWidthDBValue.Get() : width->second});
    }
    data.mSortColumnID = headerRow->GetSortColumn();
    data.mSortAscending = headerRow->IsSortDirectionAscending();
    return data;
}

void SetUpHeaderRowFromData(const HeaderRowRef& headerRow, const HeaderRowData& data, float scale) {
    if (!headerRow) return;
    int position = 0;
    for (const ColumnData& column : data.mColumnDataList) {
        if (headerRow->GetIndexOfColumn(column.mColumnID) < 0) continue;
        headerRow->SetColumnWidth(column.mColumnID, column.mWidth * scale);
        PlaceColumn(*headerRow, column.mColumnID, position++);
    }
    headerRow->SetSortColumn(data.mSortColumnID);
    headerRow->SetSortDirection(data.mSortAscending);
}

void MakeUsable(HeaderRowData& data) {
    std::set<ColumnID> seen;
    std::erase_if(data.mColumnDataList, [&seen](const ColumnData& column) {
        const bool isKnown = std::ranges::count(kColumnTitles, column.mColumnID, &ColumnTitle::mColumnID) > 0;
        return !isKnown || !seen.insert(column.mColumnID).second;
    });
    for (ColumnData& column : data.mColumnDataList)
        if (!(column.mWidth >= 1 && column.mWidth <= kWidestColumn)) column.mWidth = sColumnWidthDBValue.Get();
}

std::map<std::string_view, int> GetViewPropertyLoggingColumnMap(const HeaderRowRef& headerRow) {
    // "modifed" stands so in all recorded events.
    return {{"locked_column_index", headerRow->GetIndexOfColumn(kLockedColumnID)},
            {"modifed_date_column_index", headerRow->GetIndexOfColumn(kModifiedDateColumnID)},
            {"creation_date_column_index", headerRow->GetIndexOfColumn(kCreationDateColumnID)},
            {"size_column_index", headerRow->GetIndexOfColumn(kSizeColumnID)}};
}

}  // namespace HandlerSharedProjects::Columns
