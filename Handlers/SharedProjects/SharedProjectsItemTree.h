#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "Handlers/SharedProjects/SharedProjectsSelectionAfterRemoval.h"
#include "host/core/MainThread.h"
#include "host/core/Messaging.h"
#include "host/project/OpenProjects.h"

namespace HandlerSharedProjects {

class SharedProjectsTabView;

/// What the panel's two trees have in common: rows that stand for projects and folders, what is known of the
/// projects, cells, columns and selection. Each view owns one, for the tree control that it shows. UI thread;
/// nothing here waits for the volume.
class SharedProjectsItemTree {
public:
    /// What the view does for it.
    class Owner {
    public:
        /// The normalised path of a row's item; a folder's may have a separator at its end. Empty for a row
        /// that is not in the view.
        virtual UTF16String GetItemPath(const RowRef& row) const = 0;
        /// The last component of that path, without a separator.
        virtual UTF16String GetItemName(const RowRef& row) const = 0;
        /// The row of a path in any spelling; empty when there is none.
        virtual RowRef GetRowFromPath(const UTF16String& path) const = 0;
        /// Sort keys have changed, those of `changed` alone where these are named: sorts the tree.
        virtual void SortRows(const std::optional<RowVec>& changed) = 0;
        /// A sorting that took a while has ended.
        virtual void OnRowsSorted() = 0;
        /// The user has chosen the sort column or its direction.
        virtual void OnSortChosen() = 0;
        /// In a view of hits: says of a row whether it is one, or only leads there. Empty in a view of all
        /// there is.
        virtual std::function<bool(const RowRef& row)> GetHitTest() const { return {}; }

    protected:
        ~Owner() = default;
    };

    /// Gives `tree` the panel's columns, cells and ways of selecting. `owner` outlives this; it is called back
    /// while `lifetime` lives. Only a weak reference to `tabView` is kept.
    SharedProjectsItemTree(Owner& owner, Utils::TreeRef tree,
                           const std::shared_ptr<SharedProjectsTabView>& tabView,
                           std::weak_ptr<const void> lifetime);

    UI_MultiColumnTree& GetTree() const { return *mTree; }
    const Columns::HeaderRowRef& GetHeaderRow() const { return mHeaderRow; }
    /// True when the user has moved, resized or sorted columns of this tree.
    bool IsHeaderChanged() const { return mIsHeaderChanged; }
    void SetRowHeight(float height) { mTree->SetRowHeight(height); }
    /// The number of rows that show, scrolled into view or not.
    std::size_t GetOpenedRowsCount() const { return mTree->CountOpenedRows(); }

    // Rows. A row is exposed when all rows above it are open.

    static bool IsRowExposed(const RowRef& row);
    /// Takes on a new row: a project's, whose facts are kept while it is visible, or a folder's.
    static void AddRow(const RowRef& row, bool isProject);
    /// Forgets a row. True when it was a project's.
    bool RemoveRow(const RowRef& row);
    void RemoveAllRows() { mRowToMetadata.clear(); }
    /// True for a project's row, false for a folder's.
    static bool IsFileRow(const RowRef& row) { return (row->GetMarks() & kIsProject) != 0; }
    /// The normalised path of a row's item; empty for a row that is not in the view.
    UTF16String GetPath(const RowRef& row) const;
    /// The same as `Columns` takes it: a folder's with a separator at the end.
    UTF16String GetPathOfKind(const RowRef& row) const;

    /// There is news of a row: brings its cells and facts up to date when it is visible; other rows need nothing
    /// until they are. If the order may hang on it, an exposed row goes to its place later.
    void UpdateRow(const RowRef& row) { UpdateRow(row, IsRowExposed(row)); }
    void UpdateRow(const RowRef& row, bool exposed);
    /// Brings the opened rows in view up to date.
    void UpdateOpenRows();
    std::size_t CountRowsInView() const;
    /// Facts of many projects under open rows have changed: brings what is in view up to date, and has the tree
    /// sorted later if the order may hang on them.
    void OnFactsChanged();
    /// The facts that were asked for have come: a sorting that waits for more need not wait.
    void OnFactsComplete();
    /// Opens a closed folder's row, closes an open one.
    void ToggleRow(const RowRef& row);
    /// True for messages about open projects; their rows are then up to date.
    bool ListenToMessage(const Message& message);
    /// With true, messages about projects wait, and rows keep their order, until the next call with false.
    void HoldUpdates(bool hold);

    // Selection. Paths are normalised, in the order in which their rows were selected.

    UTF16StringVec GetSelectedPaths() const;
    /// Those but what lies inside another selected row's folder.
    UTF16StringVec GetSelectedNonRedundantPaths() const;
    std::size_t CountSelectedRows() const { return mTree->CountSelectedRows(); }
    /// True when one of those paths is the one that is sought. No path behind it is composed.
    bool IsAnySelected(const std::function<bool(const UTF16String& path)>& isSought) const;
    /// The kinds of the selected items, as `Utils::GetPathTypes` tells them.
    int GetSelectedTypes() const;
    /// The open projects whose rows are selected, in no order.
    std::vector<ProjectRef> FindSelectedOpenProjects() const;
    /// `Utils::DescribeWhyNotDeleted` of the selected items. Asks only of those that anything is known of which
    /// could keep them: folders, and projects with a lock.
    UTF16String DescribeWhySelectionStays() const;
    /// Makes the rows of `paths` the selection; paths without a row are passed over.
    void SelectRowsByPaths(const UTF16StringVec& paths);
    /// Makes those of the opened rows the selection for which `isMeant` holds.
    void SelectOpenedRows(const std::function<bool(const RowRef& row)>& isMeant);
    void DeselectAll() { mTree->DeselectAllRows(true); }
    /// The selected rows are about to be moved away: when they have gone and nothing else has been selected,
    /// the row that follows them is, or else the one before, but nothing in the trash.
    void SelectNextWhenSelectionHasGone();
    /// Rows have gone.
    void OnRowsRemoved();
    /// Nothing is to be selected any more in place of what goes.
    void ForgetRemovals() { mSelectionAfterRemoval = {}; }

    /// Selects the row that a context menu is for, alone, unless it is selected; none for an empty row.
    void SelectForContextMenu(const RowRef& row);
    /// Shows a menu of the host's resources; `point` in view units of the tree.
    void TrackContextMenu(const char* menuID, Point point);

    // Moves of the selection by the keyboard's page keys; see `Utils`.

    void MoveHome() { Utils::MoveHome(mTree); }
    void MoveEnd() { Utils::MoveEnd(mTree); }
    void MovePageUp() { Utils::MovePageUp(mTree); }
    void MovePageDown() { Utils::MovePageDown(mTree); }

    // What the tree control asks and tells; the owner hands on what its base receives.

    /// Opens the project, unless it lies in the trash, or opens or closes the folder.
    void OnRowDoubleClicked(const RowRef& row);
    void OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column, const RectT<float>& cell);
    void OnRowOpenStateChanged(const RowRef& row, bool open);

private:
    using Clock = std::chrono::steady_clock;
    /// Marks of rows.
    static constexpr unsigned kIsProject = 1;

    void SetupTree();
    void SetupHeaderRow();
    using RowSet = std::unordered_set<const UI_MultiColumnTreeRow*>;
    std::optional<RowSet> FindLockedRowsBeside(const RowRef& row) const;
    /// In their order, until `visitor` answers false; false then.
    bool VisitSelected(const std::function<bool(const RowRef& row)>& visitor) const;
    /// Null for a row that is not visible.
    const Columns::FileMetadata* GetMetadata(const RowRef& row) const;
    void UpdateCellsOfRow(const RowRef& row);
    void UpdateMetadataForRow(const RowRef& row);
    /// True when rows are sorted by what the volume tells of projects.
    bool IsSortedByFacts() const;
    UTF16String GetNameKey(const RowRef& row) const;
    void AddNameCellView(const RowRef& row);
    void UpdateRowOfProject(const ProjectRef& project);
    /// The keys of all rows may have changed, or those of these rows alone.
    void SortLater();
    void SortLater(const std::vector<RowRef>& changed);
    void SortBelowLater(const RowRef& row);
    void BeginSortLater();
    void SortWhenDue();
    void SortOrOwe();
    void NoteEndOfSort();
    void OnRowsSorted();

    bool ColumnSortStringIsLess(const UTF16String& a, const UTF16String& b);
    UTF16String GetCellSortDataAsString(const RowRef& row, unsigned column);
    UTF16StringVec GetRowsSortData(std::span<const RowRef> rows, unsigned column);
    std::vector<std::uint64_t> GetRowsSortNumbers(std::span<const RowRef> rows, unsigned column);
    /// What is known of the projects of rows that stand under one row; nothing of folders.
    std::vector<KnownProject> GetKnownProjectsOf(std::span<const RowRef> rows, KnownLocks locks) const;
    UTF16String GetCellAccessibleText(const RowRef& row, unsigned column);
    UTF16String GetCellToolTip(const RowRef& row, unsigned column);
    void OnSortChanged(ColumnID column, bool ascending);
    void OnColumnMoved(unsigned from, unsigned to);
    void OnColumnResized(unsigned column, float width);
    void OnRowVisibilityChanged(const RowRef& row);

    Owner& mOwner;
    const Utils::TreeRef mTree;
    const std::weak_ptr<SharedProjectsTabView> mTabView;
    const std::weak_ptr<const void> mLifetime;
    Columns::HeaderRowRef mHeaderRow;
    /// Of projects whose rows are visible, by their rows' identity. What is known of the others is the host's
    /// to keep.
    std::map<RowRef, Columns::FileMetadata> mRowToMetadata;
    RefPtr<QueueOnlyOnce> mQueuedSort;
    /// From the first changed key until the tree has been sorted, and since that was last looked at.
    bool mIsSortAwaited = false;
    bool mHasSortKeyChanged = false;
    /// The rows whose keys have, unless it may be those of all.
    std::optional<RowVec> mChangedRows = RowVec();
    Clock::time_point mSortDue{};
    /// No sooner, unless all facts have come.
    Clock::time_point mEarliestSort{};
    std::optional<Clock::time_point> mBeginOfSort;
    Clock::time_point mEndOfLastSort{};
    Clock::duration mLastSortDuration{};
    SelectionAfterRemoval mSelectionAfterRemoval;
    bool mIsHeaderChanged = false;
    bool mIsHolding = false;
    /// What has waited: a sort, and rows of projects.
    bool mIsSortOwed = false;
    UTF16StringVec mHeldProjectPaths;
};

}  // namespace HandlerSharedProjects
