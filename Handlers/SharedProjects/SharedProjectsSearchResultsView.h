#pragma once

#include <boost/bimap.hpp>
#include <boost/bimap/unordered_set_of.hpp>
#include <memory>

#include "Handlers/SharedProjects/SharedProjectsItemTree.h"
#include "host/files/FileSearch.h"
#include "host/mediabrowser/MediaBrowserMultiColumnTree.h"

namespace HandlerSharedProjects {

class SharedProjectsTabView;

/// The tree of the projects and folders whose names contain the search text, each under the folders that lead
/// to it. UI thread.
class SharedProjectsSearchResultsView final : public UI_SubView,
                                              public Listener,
                                              private SharedProjectsItemTree::Owner {
public:
    /// Only a weak reference to `tabView` is kept.
    explicit SharedProjectsSearchResultsView(const std::shared_ptr<SharedProjectsTabView>& tabView);
    ~SharedProjectsSearchResultsView() override;

    /// Searches the production for `text`, in the background; what was found before stays, and stays current,
    /// until `Populate`. From then on hits come and go as the volume changes. An empty text empties the view at
    /// once. A newer call drops an older one. Of folders that cannot be read, those of the hits before stay
    /// that the text matches; an empty tree says what could not be read, and why.
    void Find(const UTF16String& text);
    /// While paused, the hits stay as they are but for what a new search finds; what has changed comes when the
    /// pause ends.
    void SetPauseUpdates(bool pause);
    /// Shows the rows of the found paths, and no others, with their folders open.
    void Populate(const UTF16StringVec& paths);

    SharedProjectsItemTree& GetItems() { return mItems; }
    const SharedProjectsItemTree& GetItems() const { return mItems; }

    UI_MultiColumnTree* GetTree() const { return mTree.get(); }
    Columns::HeaderRowRef GetHeaderRow() const { return mItems.GetHeaderRow(); }
    void SetRowHeight(float height) { mItems.SetRowHeight(height); }
    bool IsFileRow(const RowRef& row) const { return mItems.IsFileRow(row); }
    std::size_t GetOpenedRowsCount() const { return mItems.GetOpenedRowsCount(); }
    /// Empty for a row that is not in the view. On-the-way folders have a separator at the end.
    UTF16String GetRowPath(const RowRef& row) const { return GetItemPath(row); }
    RowRef GetRowFromPath(const UTF16String& path) const override;

    /// The paths of the selected rows in the order in which they were selected: of all, or of projects only.
    UTF16StringVec GetSelectedPaths(bool includeAll) const;
    UTF16StringVec GetSelectedNonRedundantPaths() const { return mItems.GetSelectedNonRedundantPaths(); }
    void SelectRowsByPaths(const UTF16StringVec& paths) { mItems.SelectRowsByPaths(paths); }
    void SelectAllProjects();
    /// Selects the first row whose own name matches: not one of a folder that only leads to hits.
    void SelectFirstHit();
    void ToggleRow(const RowRef& row) { mItems.ToggleRow(row); }
    void DeselectAll() { mItems.DeselectAll(); }
    void MoveHome() { mItems.MoveHome(); }
    void MoveEnd() { mItems.MoveEnd(); }
    void MovePageUp() { mItems.MovePageUp(); }
    void MovePageDown() { mItems.MovePageDown(); }

    void UpdateRow(const RowRef& row) { mItems.UpdateRow(row); }
    void UpdateOpenRows() { mItems.UpdateOpenRows(); }
    void ListenToMessage(const Message& message) override;

protected:
    void UI_SizeChanged(const RectT<float>& localBounds) override;

private:
    /// Unique on both sides.
    using RowPathMap = boost::bimap<boost::bimaps::set_of<RowRef>,
                                    boost::bimaps::unordered_set_of<UTF16String, std::hash<UTF16String>>>;
    class NewRows;

    UTF16String GetItemPath(const RowRef& row) const override;
    UTF16String GetItemName(const RowRef& row) const override;
    void SortRows(const std::optional<RowVec>& changed) override {
        changed ? mTree->SortRows(*changed) : mTree->SortTree();
    }
    void OnRowsSorted() override {}
    void OnSortChosen() override {}
    std::function<bool(const RowRef&)> GetHitTest() const override;

    void SetupTree();
    void ClearResults();
    void BeginSearch(const UTF16String& root);
    void EndSearch();
    void OnFound(const UTF16String& text, const FileSearch::Result& result);
    void OnChanged(const FileSearch::Changes& changes);
    void HoldChanges(const FileSearch::Changes& changes);
    UTF16StringVec AddUnreadableHits(const FileSearch::Result& result) const;
    void TellWhyEmpty(const FileSearch::Result& result);
    void RemoveAllRows();
    void AddHits(const UTF16StringVec& paths);
    void AddHit(const UTF16String& root, const UTF16String& hit, NewRows& newRows);
    RowRef AddRow(const RowRef& parent, const UTF16String& key, NewRows& newRows);
    RowRef FindRow(const UTF16String& normalizedPath) const;
    UTF16StringVec FindHitsOfOtherKind(const UTF16StringVec& paths) const;
    void RemoveHits(const UTF16StringVec& paths);
    void ForgetRow(const RowRef& row);

    void OnRowDoubleClicked(const RowRef& row, Point point);
    void OnRowSelectionChanged(const RowVec& rows);
    bool OnRowContextMenu(const RowRef& row, Point point);
    void HandleContextMenuProject(Point point);

    std::weak_ptr<SharedProjectsTabView> mTabView;
    RefPtr<MediaBrowserMultiColumnTree> mTree;
    /// Lives as long as the view may be called back.
    std::shared_ptr<const void> mLifetime = std::make_shared<char>();
    SharedProjectsItemTree mItems;
    RowPathMap mRowToPath;
    /// The search whose hits show; it tells what changes.
    std::unique_ptr<FileSearch::Request> mShownSearch;
    UTF16String mShownText;
    /// The one under way.
    std::unique_ptr<FileSearch::Request> mSearch;
    UTF16String mText;
    bool mIsSearching = false;
    bool mPauseUpdates = false;
    /// What has changed since the pause began, or since what it shows was found.
    FileSearch::Changes mHeldChanges;
};

}  // namespace HandlerSharedProjects
