#include "Handlers/SharedProjects/SharedProjectsUtils.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <unordered_set>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "host/core/UsageLogger.h"
#include "host/files/PathUtils.h"
#include "host/project/OpenProjects.h"
#include "host/project/ProductionTrash.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects::Utils {

namespace {

constexpr int kAllPathTypes = kPathTypeFile | kPathTypeFolder | kPathTypeTrashFolder | kPathTypeInTrash;

int GetPathType(const UTF16String& path) {
    const bool isFolder = PathUtils::IsDirectory(path);
    if (isFolder && IsTheZuProductionTrashDirectory(path)) return kPathTypeTrashFolder;
    if (IsInZuProductionTrash(path, false)) return kPathTypeInTrash;
    return isFolder ? kPathTypeFolder : kPathTypeFile;
}

void MoveTo(const TreeRef& tree, const RowRef& row) {
    if (!row) return;
    tree->SelectRow(row.get(), true, false, true);
    tree->ScrollRowIntoView(row.get(), false, 0, true);
}

int CountRowsPerPage(const TreeRef& tree) {
    const float height = tree->GetScrollView().mVisibleRect.height;
    return static_cast<int>(std::floor(height / (tree->GetRowHeight() + 1.0f)));
}

bool IsTheOnlySelectedRow(const TreeRef& tree, const RowRef& row) {
    return tree->GetOnlySelectedRow() == row;
}

}  // namespace

void LogUsage(const char* category, const char* action) {
    if (UsageLogger* logger = UsageLogger::Get())
        logger->LogEvent(GetZuProductionLoggingCategory(), category, action);
}

void LogViewPropertyUsage(const char* property, const ViewPropertyLoggingData& data) {
    const std::string rowHeight = UTF16to8(NumberToString(static_cast<double>(data.mRowHeight), 2));
    UsageLogger* logger = UsageLogger::Get();
    if (!logger) return;
    const auto group = logger->CreateGroup(GetZuProductionLoggingCategory(), "PanelViewProperty",
                                           "zuproduction_view_properties");
    group->AddKeyValue("property_changed", property);
    group->AddKeyValue("row_height", rowHeight);
    for (const auto& [key, index] : data.mColumnIndices) group->AddKeyValue(key, std::to_string(index));
    group->Send();
}

bool IsAtOrBelow(const UTF16String& path, const UTF16String& folder) {
    return PathUtils::AddTrailingSlash(path).starts_with(PathUtils::AddTrailingSlash(folder));
}

bool IsRefreshable(const UTF16String& path) {
    ProjectRef project;
    return IsProjectOpen(path, project) && project->IsReadOnly() && Utilities::IsProjectOutOfDate(project);
}

int GetPathTypes(UTF16StringVec paths) {
    int types = 0;
    for (const UTF16String& path : paths) {
        types |= GetPathType(path);
        if (types == kAllPathTypes) break;
    }
    return types;
}

RowVec GetNonRedundantRows(const RowVec& rows) {
    std::unordered_set<const UI_MultiColumnTreeRow*> all;
    for (const RowRef& row : rows) all.insert(row.get());
    const auto isRedundant = [&all](const RowRef& row) {
        for (RowRef parent = row->GetParentRow(); parent; parent = parent->GetParentRow())
            if (all.contains(parent.get())) return true;
        return false;
    };
    RowVec kept;
    std::ranges::remove_copy_if(rows, std::back_inserter(kept), isRedundant);
    return kept;
}

void MoveHome(const TreeRef& tree) {
    MoveTo(tree, tree->GetOpenedRow(0));
}

void MoveEnd(const TreeRef& tree) {
    MoveTo(tree, tree->GetOpenedRow(static_cast<int>(tree->CountOpenedRows()) - 1));
}

void MovePageUp(const TreeRef& tree) {
    const int first = tree->GetFirstVisibleOpenedRowIndex();
    const RowRef row = tree->GetOpenedRow(first);
    if (!row) return;
    const bool turnsPage = IsTheOnlySelectedRow(tree, row);
    MoveTo(tree, turnsPage ? tree->GetOpenedRow(std::max(first - CountRowsPerPage(tree), 0)) : row);
}

void MovePageDown(const TreeRef& tree) {
    const int last = tree->GetLastVisibleOpenedRowIndex();
    const RowRef row = tree->GetOpenedRow(last);
    if (!row) return;
    const int end = static_cast<int>(tree->CountOpenedRows()) - 1;
    const bool turnsPage = IsTheOnlySelectedRow(tree, row);
    MoveTo(tree, turnsPage ? tree->GetOpenedRow(std::min(last + CountRowsPerPage(tree), end)) : row);
}

}  // namespace HandlerSharedProjects::Utils
