// From a search text to rows.
#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsSearchResultsView.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

namespace HandlerSharedProjects {

namespace {

/// True when nothing could be searched at all.
bool IsRootUnreadable(const FileSearch::Result& result) {
    const UTF16String root = PathUtils::ToNormalizedPath(SharedProjectsHandler::GetRootDirectory());
    return std::ranges::find(result.mUnreadable, root, &FileSearch::UnreadableFolder::mPath) !=
           result.mUnreadable.end();
}

}  // namespace

/// The rows that were made in one go, so that each parent's are laid out in one step.
class SharedProjectsSearchResultsView::NewRows {
public:
    /// To be called before a row is made under `parent` (empty for a top-level row).
    void Note(const RowRef& parent) {
        if (!mSeenParents.insert(parent).second) return;
        mParents.push_back(parent);
        if (parent && !parent->HasChild()) mFoldersToOpen.push_back(parent);
    }

    /// Shows the rows, with the folders open that had none before.
    void LayOut(UI_MultiColumnTree& tree) const {
        // A parent was noted before its children could be.
        for (const RowRef& parent : mParents) tree.LayoutAfterAppendRow(parent.get());
        for (const RowRef& folder : mFoldersToOpen) tree.OpenRow(folder.get());
    }

    /// The folder of the last hit and its row: hits come sorted, so the next one mostly shares it.
    UTF16String mLastFolder;
    RowRef mLastFolderRow;

private:
    std::vector<RowRef> mParents;
    std::set<RowRef> mSeenParents;
    std::vector<RowRef> mFoldersToOpen;
};

void SharedProjectsSearchResultsView::Find(const UTF16String& text) {
    mText = text;
    // The older search goes when the newer one has begun, which takes over what it has learnt.
    const std::unique_ptr<FileSearch::Request> older = std::move(mSearch);
    const UTF16String root = SharedProjectsHandler::GetRootDirectory();
    if (text.empty() || root.empty())
        ClearResults();
    else
        BeginSearch(root);
}

void SharedProjectsSearchResultsView::ClearResults() {
    EndSearch();
    mShownSearch.reset();
    mShownText.clear();
    RemoveAllRows();
    mTree->SetEmptyText({});
}

void SharedProjectsSearchResultsView::BeginSearch(const UTF16String& root) {
    if (!mIsSearching) mTree->BeginBusy();
    mIsSearching = true;
    FileSearch::Parameters parameters;
    parameters.mText = mText;
    parameters.mChanged = [this](const FileSearch::Changes& changes) { OnChanged(changes); };
    mSearch = FileSearch::FindFilesOrDirectories(
        root, std::move(parameters),
        [this, text = mText](const FileSearch::Result& result) { OnFound(text, result); });
    if (mRowToPath.empty()) mTree->SetEmptyText({});
}

void SharedProjectsSearchResultsView::EndSearch() {
    if (mIsSearching) mTree->EndBusy();
    mIsSearching = false;
}

void SharedProjectsSearchResultsView::OnFound(const UTF16String& text, const FileSearch::Result& result) {
    // A search that comes to an end late, when its production can be read again, may have a successor.
    if (text != mText) return;
    EndSearch();
    if (mSearch) mShownSearch = std::move(mSearch);
    mShownText = text;
    Populate(AddUnreadableHits(result));
    TellWhyEmpty(result);
    if (const auto tabView = mTabView.lock()) tabView->OnTreeChanged();
}

/// What was found, and of the hits that show those that stand in folders that could not be read now: they are
/// not gone.
UTF16StringVec SharedProjectsSearchResultsView::AddUnreadableHits(const FileSearch::Result& result) const {
    UTF16StringVec paths = result.mPaths;
    if (result.mUnreadable.empty()) return paths;
    const auto isUnreadable = [&](const UTF16String& path) {
        return std::ranges::any_of(result.mUnreadable, [&](const FileSearch::UnreadableFolder& folder) {
            return path.starts_with(PathUtils::AddTrailingSlash(folder.mPath));
        });
    };
    for (const auto& [row, path] : mRowToPath.left)
        if (FileSearch::IsMatch(path, mText) && isUnreadable(path)) paths.push_back(path);
    std::ranges::sort(paths);
    return paths;
}

void SharedProjectsSearchResultsView::TellWhyEmpty(const FileSearch::Result& result) {
    UTF16String text = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/NoSearchResults=No project or folder matches “@0”", {mText});
    if (!result.mUnreadable.empty()) {
        const FileSearch::UnreadableFolder& folder = result.mUnreadable.front();
        const UTF16String reason = DescribeSystemError(folder.mSystemError);
        if (IsRootUnreadable(result))
            text = ZString(
                "$$$/Vantor/Handlers/ZuProductionFolder/SearchCannotRead=This production cannot be searched: "
                "@0",
                {reason});
        else
            text = ZString(
                "$$$/Vantor/Handlers/ZuProductionFolder/NoSearchResultsUnreadable=No project or folder matches "
                "“@0”, but the folder “@1” cannot be read: @2",
                {mText, Columns::GetPathDisplayName(PathUtils::AddTrailingSlash(folder.mPath)), reason});
    }
    mTree->SetEmptyText(text);
}

void SharedProjectsSearchResultsView::Populate(const UTF16StringVec& paths) {
    RemoveAllRows();
    mRowToPath.right.rehash(paths.size());
    AddHits(paths);
}

void SharedProjectsSearchResultsView::RemoveAllRows() {
    mHeldChanges = {};
    mTree->RemoveAllRows();
    mRowToPath.clear();
    mItems.RemoveAllRows();
}

void SharedProjectsSearchResultsView::AddHits(const UTF16StringVec& paths) {
    const UTF16String root =
        PathUtils::AddTrailingSlash(PathUtils::ToNormalizedPath(SharedProjectsHandler::GetRootDirectory()));
    NewRows newRows;
    for (const UTF16String& path : paths) AddHit(root, path, newRows);
    newRows.LayOut(*mTree);
}

void SharedProjectsSearchResultsView::AddHit(const UTF16String& root, const UTF16String& hit,
                                             NewRows& newRows) {
    const UTF16String path = PathUtils::ToNormalizedPath(hit);
    if (!path.starts_with(root)) return;
    const char16_t separator = PathUtils::GetPathSeparator();
    const std::size_t folderSize = path.rfind(separator) + 1;
    if (newRows.mLastFolder.empty() || path.compare(0, folderSize, newRows.mLastFolder) != 0) {
        RowRef parent;
        for (std::size_t end = path.find(separator, root.size()); end != UTF16String::npos;
             end = path.find(separator, end + 1)) {
            const UTF16String folder = path.substr(0, end + 1);
            RowRef row = FindRow(folder);
            parent = row ? row : AddRow(parent, folder, newRows);
        }
        newRows.mLastFolder = path.substr(0, folderSize);
        newRows.mLastFolderRow = parent;
    }
    if (FindRow(path)) return;
    const bool isFolder = hit.ends_with(separator);
    AddRow(newRows.mLastFolderRow, isFolder ? PathUtils::AddTrailingSlash(path) : path, newRows);
}

RowRef SharedProjectsSearchResultsView::AddRow(const RowRef& parent, const UTF16String& key, NewRows& newRows) {
    newRows.Note(parent);
    RowRef row = mTree->CreateAndAppendRow(parent.get());
    mRowToPath.insert({row, key});
    SharedProjectsItemTree::AddRow(row, IsVantorProjectFile(key));
    return row;
}

RowRef SharedProjectsSearchResultsView::GetRowFromPath(const UTF16String& path) const {
    return FindRow(PathUtils::ToNormalizedPath(path));
}

RowRef SharedProjectsSearchResultsView::FindRow(const UTF16String& path) const {
    // A folder is keyed as a hit is, or with a separator when it only leads to hits or is called like a
    // project: it is one row either way.
    const auto& rows = mRowToPath.right;
    auto entry = rows.find(PathUtils::RemoveTrailingSlash(path));
    if (entry == rows.end()) entry = rows.find(PathUtils::AddTrailingSlash(path));
    return entry == rows.end() ? RowRef() : entry->second;
}

void SharedProjectsSearchResultsView::SetPauseUpdates(bool pause) {
    mPauseUpdates = pause;
    mItems.HoldUpdates(pause);
    if (!pause) OnChanged(std::exchange(mHeldChanges, {}));
}

/// Each path once, as it stood last.
void SharedProjectsSearchResultsView::HoldChanges(const FileSearch::Changes& changes) {
    const std::set<UTF16String> removed(changes.mRemovedPaths.begin(), changes.mRemovedPaths.end());
    const std::set<UTF16String> changed(changes.mPaths.begin(), changes.mPaths.end());
    std::erase_if(mHeldChanges.mPaths, [&](const UTF16String& path) {
        if (changed.contains(path)) return true;
        UTF16String item = PathUtils::RemoveTrailingSlash(path);
        while (item.size() > 1 && !removed.contains(item))
            item = PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(item));
        return item.size() > 1;
    });
    std::ranges::copy(changes.mPaths, std::back_inserter(mHeldChanges.mPaths));
    std::erase_if(mHeldChanges.mRemovedPaths, [&](const UTF16String& path) { return removed.contains(path); });
    std::ranges::copy(changes.mRemovedPaths, std::back_inserter(mHeldChanges.mRemovedPaths));
}

void SharedProjectsSearchResultsView::OnChanged(const FileSearch::Changes& changes) {
    if (mPauseUpdates) return HoldChanges(changes);
    RemoveHits(changes.mRemovedPaths);
    RemoveHits(FindHitsOfOtherKind(changes.mPaths));
    UTF16StringVec newHits;
    for (const UTF16String& path : changes.mPaths) {
        if (const RowRef row = FindRow(path))
            UpdateRow(row);
        else
            newHits.push_back(path);
    }
    if (!newHits.empty()) AddHits(newHits);
    mItems.OnRowsRemoved();
    if (const auto tabView = mTabView.lock()) tabView->OnTreeChanged();
}

/// Those whose names stand for a project now where they stood for a folder, or the other way round.
UTF16StringVec SharedProjectsSearchResultsView::FindHitsOfOtherKind(const UTF16StringVec& paths) const {
    UTF16StringVec others;
    for (const UTF16String& path : paths)
        if (const RowRef row = FindRow(path); row && IsFileRow(row) != IsVantorProjectFile(path))
            others.push_back(path);
    return others;
}

void SharedProjectsSearchResultsView::RemoveHits(const UTF16StringVec& paths) {
    RowVec rows;
    std::set<RowRef> removed;
    std::map<RowRef, std::size_t> removedChildren;
    for (const UTF16String& path : paths)
        if (const RowRef row = FindRow(path); row && removed.insert(row).second) rows.push_back(row);
    // Folders that led to these only, and do not match themselves, go with them.
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const RowRef parent = rows[i]->GetParentRow();
        if (!parent || ++removedChildren[parent] < parent->GetChildRows().size()) continue;
        if (!FileSearch::IsMatch(GetRowPath(parent), mShownText) && removed.insert(parent).second)
            rows.push_back(parent);
    }
    if (rows.empty()) return;
    for (const RowRef& row : rows) ForgetRow(row);
    mTree->RemoveRows(rows);
}

void SharedProjectsSearchResultsView::ForgetRow(const RowRef& row) {
    for (const RowRef& child : row->GetChildRows()) ForgetRow(child);
    mRowToPath.left.erase(row);
    mItems.RemoveRow(row);
}

}  // namespace HandlerSharedProjects
