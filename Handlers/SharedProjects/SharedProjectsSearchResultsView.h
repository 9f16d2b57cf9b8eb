#pragma once

#include <boost/bimap.hpp>
#include <boost/bimap/unordered_set_of.hpp>
#include <map>
#include <memory>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "Handlers/SharedProjects/SharedProjectsSelectionAfterRemoval.h"
#include "host/core/MainThread.h"
#include "host/core/Messaging.h"
#include "host/files/FileSearch.h"
#include "host/mediabrowser/MediaBrowserMultiColumnTree.h"
#include "host/project/OpenProjects.h"

namespace HandlerSharedProjects {

class SharedProjectsTabView;

/// The tree of the projects and folders whose names contain the search text, each under the folders that lead
/// to it. UI thread.
class SharedProjectsSearchResultsView final : public UI_SubView, public Listener {
public:
    /// Only a weak reference to `tabView` is kept.
    explicit SharedProjectsSearchResultsView(const std::shared_ptr<SharedProjectsTabView>& tabView);
    ~SharedProjectsSearchResultsView() override;

    /// Searches the production for `text`, in the background; what was found before stays, and stays current,
    /// until `Populate`. From then on hits come and go as the volume changes. An empty text empties the view at
    /// once. A newer call drops an older one. Of folders that cannot be read, those of the hits before stay
    /// that the text matches; an empty tree says what could not be read, and why.
    void Find(const UTF16String& text);
    /// Shows the rows of the found paths, and no others, with their folders open.
    void Populate(const UTF16StringVec& paths);

    UI_MultiColumnTree* GetTree() const { return mTree.get(); }
    Columns::HeaderRowRef GetHeaderRow() const { return mHeaderRow; }
    void SetRowHeight(float height);
    /// True when the user has moved, resized or sorted columns of this view.
    bool IsHeaderChanged() const { return mIsHeaderChanged; }

    /// True for a project's row, false for a folder's.
    bool IsFileRow(const RowRef& row) const;
    /// Empty for a row that is not in the view. On-the-way folders have a separator at the end.
    UTF16String GetRowPath(const RowRef& row) const;
    /// The row of a path in any spelling; empty when there is none.
    RowRef GetRowFromPath(const UTF16String& path) const;
    std::size_t GetOpenedRowsCount() const;

    /// The paths of the selected rows in the order in which they were selected: of all, or of projects only.
    UTF16StringVec GetSelectedPaths(bool includeAll) const;
    /// The paths of the selected rows but those inside another selected row's folder, normalised, in the order
    /// in which they were selected.
    UTF16StringVec GetSelectedNonRedundantPaths() const;
    std::size_t CountSelectedRows() const;
    /// Makes the rows of `paths` the selection; paths without a row are passed over.
    void SelectRowsByPaths(const UTF16StringVec& paths);
    /// The selected rows are about to be moved away: when they have gone and nothing else has been selected,
    /// the row that follows them is, or else the one before, but nothing in the trash.
    void SelectNextWhenSelectionHasGone();
    void SelectAllProjects();
    void DeselectAll();
    void ToggleRow(const RowRef& row);
    void MoveHome();
    void MoveEnd();
    void MovePageUp();
    void MovePageDown();

    void UpdateRow(const RowRef& row);
    void UpdateOpenRows();
    /// Takes what the host knows of a project's row: all facts if it is visible, else that of the sort column.
    /// Sorts later if the order hangs on it.
    void UpdateMetadataForRow(const RowRef& row);
    void ListenToMessage(const Message& message) override;

protected:
    void UI_SizeChanged(const RectT<float>& localBounds) override;

private:
    /// Unique on both sides.
    using RowPathMap =
        boost::bimap<boost::bimaps::set_of<RowRef>, boost::bimaps::unordered_set_of<UTF16String>>;
    class NewRows;

    void SetupTree();
    void SetupHeaderRow();
    void ClearResults();
    void BeginSearch(const UTF16String& root);
    void EndSearch();
    void OnFound(const UTF16String& text, const FileSearch::Result& result);
    void OnChanged(const FileSearch::Changes& changes);
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
    void AddNameCellView(const RowRef& row);

    bool ColumnSortStringIsLess(const UTF16String& a, const UTF16String& b);
    void OnSortChanged(ColumnID column, bool ascending);
    void OnColumnMoved(unsigned from, unsigned to);
    void OnColumnResized(unsigned column, float width);
    void OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column, const RectT<float>& cell);
    UTF16String GetCellSortDataAsString(const RowRef& row, unsigned column);
    UTF16String GetCellAccessibleText(const RowRef& row, unsigned column);
    void OnRowDoubleClicked(const RowRef& row, Point point);
    void OnOpenStateChanged(const RowRef& row, bool open);
    void OnRowSelectionChanged(const RowVec& rows);
    void OnRowVisibilityChanged(const RowRef& row);
    void OnProjectOpened(const ProjectRef& project);
    void OnProjectClosed(const ProjectRef& project);
    void UpdateRowOfProject(const ProjectRef& project);

    std::weak_ptr<SharedProjectsTabView> mTabView;
    RefPtr<MediaBrowserMultiColumnTree> mTree;
    Columns::HeaderRowRef mHeaderRow;
    RowPathMap mRowToPath;
    std::map<RowRef, Columns::FileMetadata> mRowToMetadata;
    RefPtr<QueueOnlyOnce> mQueuedSort;
    SelectionAfterRemoval mSelectionAfterRemoval;
    /// The search whose hits show; it tells what changes.
    std::unique_ptr<FileSearch::Request> mShownSearch;
    UTF16String mShownText;
    /// The one under way.
    std::unique_ptr<FileSearch::Request> mSearch;
    UTF16String mText;
    bool mIsSearching = false;
    bool mIsHeaderChanged = false;
    /// Lives as long as the view may be called back.
    std::shared_ptr<const void> mLifetime = std::make_shared<char>();
};

}  // namespace HandlerSharedProjects
