// What is selected, for commands and menus.
#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsItemTree.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/files/PathUtils.h"
#include "host/framework/MenuUtils.h"
#include "host/project/KnownProjects.h"
#include "host/project/ProductionTrash.h"

namespace HandlerSharedProjects {

UTF16StringVec SharedProjectsItemTree::GetSelectedPaths() const {
    UTF16StringVec paths;
    for (const RowRef& row : mTree->GetSelectedRows())
        if (UTF16String path = GetPath(row); !path.empty()) paths.push_back(std::move(path));
    return paths;
}

UTF16StringVec SharedProjectsItemTree::GetSelectedNonRedundantPaths() const {
    UTF16StringVec paths;
    for (const RowRef& row : Utils::GetNonRedundantRows(mTree->GetSelectedRows()))
        paths.push_back(GetPath(row));
    return paths;
}

bool SharedProjectsItemTree::VisitSelected(const std::function<bool(const RowRef& row)>& visitor) const {
    bool goesOn = true;
    mTree->VisitSelectedRows([&](std::span<const RowRef> rows) {
        for (auto row = rows.begin(); goesOn && row != rows.end(); ++row) goesOn = visitor(*row);
        return goesOn;
    });
    return goesOn;
}

bool SharedProjectsItemTree::IsAnySelected(const std::function<bool(const UTF16String& path)>& isSought) const {
    return !VisitSelected([&](const RowRef& row) {
        const UTF16String path = GetPath(row);
        return path.empty() || !isSought(path);
    });
}

/// What stands beside each other is in the trash together: of each kind one is asked for.
int SharedProjectsItemTree::GetSelectedTypes() const {
    const RowRef trash = mOwner.GetRowFromPath(GetZuProductionTrashDirectoryPath());
    UTF16StringVec samples;
    mTree->VisitSelectedRows([&](std::span<const RowRef> rows) {
        using RowTest = std::function<bool(const RowRef&)>;
        const auto isProject = [](const RowRef& row) { return IsFileRow(row); };
        const auto isTrash = [&trash](const RowRef& row) { return row == trash; };
        const auto isFolder = [&](const RowRef& row) { return !isProject(row) && !isTrash(row); };
        for (const auto& isOfKind : std::initializer_list<RowTest>{isProject, isTrash, isFolder})
            if (const auto row = std::ranges::find_if(rows, isOfKind); row != rows.end())
                samples.push_back(GetPath(*row));
        return true;
    });
    return Utils::GetPathTypes(std::move(samples));
}

std::vector<ProjectRef> SharedProjectsItemTree::FindSelectedOpenProjects() const {
    std::vector<ProjectRef> projects = GetOpenProjectList();
    std::erase_if(projects, [this](const ProjectRef& project) {
        const auto isSelected = [this](const UTF16String& path) {
            return mTree->IsRowSelected(mOwner.GetRowFromPath(path).get());
        };
        return !isSelected(project->GetProjectPath()) && !isSelected(Utilities::GetRealProjectPath(project));
    });
    return projects;
}

UTF16String SharedProjectsItemTree::DescribeWhySelectionStays() const {
    UTF16String reason;
    const auto mayGo = [&](const RowRef& row) {
        if (const UTF16String path = GetPath(row); !path.empty()) reason = Utils::DescribeWhyNotDeleted({path});
        return reason.empty();
    };
    // Many parts of a selection may stand under one row.
    std::unordered_map<const UI_MultiColumnTreeRow*, std::optional<RowSet>> lockedBelow;
    mTree->VisitSelectedRows([&](std::span<const RowRef> rows) {
        const auto [below, isNew] = lockedBelow.try_emplace(rows.front()->GetParentRow().get());
        std::optional<RowSet>& locked = below->second;
        if (isNew) locked = FindLockedRowsBeside(rows.front());
        // What stands beside each other is in the trash together.
        if (isNew && !mayGo(rows.front())) return false;
        const auto isFree = [&](const RowRef& row) {
            return IsFileRow(row) && locked && (locked->empty() || !locked->contains(row.get()));
        };
        return std::ranges::all_of(rows, [&](const RowRef& row) { return isFree(row) || mayGo(row); });
    });
    return reason;
}

/// The rows of projects with a lock among `row` and those beside it; absent when nothing is known of them.
std::optional<SharedProjectsItemTree::RowSet> SharedProjectsItemTree::FindLockedRowsBeside(
    const RowRef& row) const {
    const UTF16String folder = PathUtils::GetFullDirectoryPart(GetPath(row));
    const std::optional<UTF16StringVec> names = GetKnownLockedNames(PathUtils::ToNormalizedPath(folder));
    if (!names) return std::nullopt;
    RowSet rows;
    for (const UTF16String& name : *names) rows.insert(mOwner.GetRowFromPath(folder + name).get());
    return rows;
}

void SharedProjectsItemTree::SelectRowsByPaths(const UTF16StringVec& paths) {
    RowVec rows;
    for (const UTF16String& path : paths)
        if (RowRef row = mOwner.GetRowFromPath(path)) rows.push_back(std::move(row));
    // One alone is also where the arrow keys go on.
    if (rows.size() == 1)
        mTree->SelectRow(rows.front().get(), true, false, true);
    else
        mTree->SelectRows(rows);
}

void SharedProjectsItemTree::SelectOpenedRows(const std::function<bool(const RowRef& row)>& isMeant) {
    mTree->SelectOpenedRows(isMeant);
}

void SharedProjectsItemTree::SelectForContextMenu(const RowRef& row) {
    if (!row)
        mTree->DeselectAllRows(true);
    else if (!mTree->IsRowSelected(row.get()))
        mTree->SelectRow(row.get(), true, false, true);
    // The menu asks for the status of commands before the tree tells of its selection.
    if (const auto tabView = mTabView.lock()) tabView->OnSelectionChanged();
}

void SharedProjectsItemTree::TrackContextMenu(const char* menuID, Point point) {
    MenuUtils::TrackContextMenu(Menu::Load(menuID), *mTree, point);
}

void SharedProjectsItemTree::SelectNextWhenSelectionHasGone() {
    using Order = SelectionAfterRemoval::Order;
    const auto isHit = mOwner.GetHitTest();
    const auto mayBeSelected = [&](const RowRef& row) {
        return !Utils::IsInTrash(GetPath(row), true) && (!isHit || isHit(row));
    };
    mSelectionAfterRemoval.Expect(*mTree, mayBeSelected, isHit ? Order::AsShown : Order::FolderFirst);
}

void SharedProjectsItemTree::OnRowsRemoved() {
    mSelectionAfterRemoval.OnRowsRemoved(*mTree, [this](const RowRef& row) { return !GetPath(row).empty(); });
}

}  // namespace HandlerSharedProjects
