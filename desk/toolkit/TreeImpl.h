#pragma once

#include <QItemSelection>
#include <QPointer>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "desk/core/work/Lifetime.h"
#include "desk/toolkit/NodeImpl.h"
#include "desk/toolkit/RowAccess.h"
#include "desk/toolkit/SelectedRows.h"
#include "desk/toolkit/TreeModel.h"
#include "host/toolkit/UI_MultiColumnTree.h"

namespace desk {

class BusySpinner;
class TreeView;

/// The callbacks of a tree, as its owner has set them.
struct TreeCallbacks {
    using Row = host::RowRef;
    template <class Signature>
    using Shared = host::SharedFunction<Signature>;

    Shared<bool(const Row&)> mCanRowHaveChildren;
    Shared<void(host::Drawbot&, const Row&, unsigned, const host::RectT<float>&)> mDrawCell;
    Shared<host::UTF16String(const Row&, unsigned)> mAccessibleText;
    Shared<host::UTF16String(const Row&, unsigned)> mToolTip;
    Shared<host::UTF16String(const Row&, unsigned)> mSortData;
    Shared<host::UTF16StringVec(std::span<const Row>, unsigned)> mRowsSortData;
    Shared<std::vector<std::uint64_t>(std::span<const Row>, unsigned)> mRowsSortNumbers;
    Shared<void()> mRowsSorted;
    Shared<void(unsigned, unsigned)> mColumnMoved;
    Shared<void(unsigned, float)> mColumnResized;
    Shared<bool(const Row&, host::Point)> mContextMenu;
    Shared<void(const Row&, host::Point)> mSingleClickDown;
    Shared<void(const Row&, host::Point)> mSingleClickUp;
    Shared<void(const Row&, host::Point)> mDoubleClicked;
    Shared<void(const Row&, bool)> mOpenStateChanged;
    Shared<void(const Row&, bool)> mDisclosureChanged;
    Shared<void(const Row&)> mVisibilityChanged;
    Shared<void(const host::RowVec&)> mSelectionChanged;
    Shared<int(const Row&)> mSelectionColor;
    Shared<bool(const host::UI_MouseEvent&)> mRowsDragged;
    Shared<bool(int, host::UI_DropData*)> mDropSupport;
};

}  // namespace desk

/// The desktop's half of a tree: its rows, and the model and view that show them. The rows are what counts;
/// model and view follow them. UI thread.
struct host::UI_MultiColumnTree::TreeImpl final : desk::ContainerImpl {
    using Row = UI_MultiColumnTreeRow;
    using Access = Row::Access;

    TreeImpl();
    ~TreeImpl() override;
    static TreeImpl& Of(const UI_MultiColumnTree& tree) { return static_cast<TreeImpl&>(tree.GetImpl()); }
    UI_MultiColumnTree& Tree() { return static_cast<UI_MultiColumnTree&>(*mNode); }

    void Realize(QWidget& parent) override;
    void Unrealize() override;
    void ApplyToWidget() override;
    void Paint(const desk::LightPaint&) override {}

    /// Runs a member later, once however often it is asked for meanwhile: in the same turn of the event loop,
    /// or after a delay.
    struct Later {
        bool mIsQueued = false;
    };
    void RunLater(Later& later, void (TreeImpl::*member)(), std::chrono::milliseconds delay = {});

    // Rows (UI_MultiColumnTree_Rows.cpp).

    RowRef Append(Row* parent);
    void LayOutAppended(Row* parent, bool areInNameOrder);
    void Remove(const RowVec& rows);
    void RemoveAll();
    /// Removes the rows at these positions (ascending) from under `parent`.
    void RemoveChildren(Row* parent, std::vector<std::size_t> positions);
    void MoveToEnd(Row* parent, const std::vector<std::size_t>& positions, bool tellModel);
    void TakeOut(Row* parent, std::size_t first, std::size_t last, bool tellModel);
    /// The row that becomes the current one when `row` goes; null when none is left.
    Row* FindSuccessor(const Row& row, const std::function<bool(const Row*)>& isDoomed);
    /// The rows at the top for null.
    std::vector<RowRef>& ChildrenOf(const Row* parent);
    std::uint32_t CountOfLaidOutChildren(const Row* parent) const;
    /// Position among the rows beside it.
    int PositionOf(const Row& row);
    /// True when the model knows the row: it and all above it have been laid out.
    bool IsInModel(const Row& row);
    bool IsMine(const Row* row) const;
    void Renumber(const Row* parent, std::size_t first);
    /// Finds out anew whether the row may have children.
    void UpdateMayHaveChildren(Row& row);
    void UpdateMayHaveChildrenOfAll();
    /// Something is about to change which rows show, or where.
    void BeginChange();

    // Opening (UI_MultiColumnTree_Open.cpp).

    void SetOpen(Row& row, bool open);
    /// Lets the view know the open rows among `row` and those below it, which have just come into the model.
    void ExpandInView(Row& row);
    void DeselectBelow(Row& row);
    bool IsAnySelectedBelow(const Row& row) const;
    // Each folder keeps how many rows it shows: finding a row takes a look at the rows beside it and beside
    // those above it, never at all rows.

    std::size_t CountOfOpened() const { return CountOfShownBelow(nullptr); }
    bool ShowsEmptyText() const {
        return CountOfOpened() <= mRowsOfEmptyTree && mBusy == 0 && !mEmptyText.isEmpty();
    }
    /// The rows that show below `row` when it is open; all opened rows for null.
    std::size_t CountOfShownBelow(const Row* row) const;
    /// The rows that show or go with a laid-out row: itself and those below it.
    std::size_t CountOfShown(const Row& row) const { return 1 + (row.IsOpen() ? CountOfShownBelow(&row) : 0); }
    /// More (or, negative, fewer) rows show directly or indirectly below `parent` when that is open.
    void AddShown(Row* parent, std::ptrdiff_t count);
    /// The opened rows from `first` on, `count` at most, in display order.
    std::vector<Row*> OpenedRange(std::size_t first, std::size_t count) const;
    std::vector<Row*> AllOpened() const { return OpenedRange(0, CountOfOpened()); }
    /// Null when there is none.
    Row* OpenedRow(std::size_t index) const;
    /// Index among the opened rows; -1 when the row is not among them.
    int IndexOfOpened(const Row* row);

    // Sorting (UI_MultiColumnTree_Sort.cpp).

    void Sort();
    /// The same after the keys of these rows alone have changed: each goes to its place.
    void SortRows(const RowVec& changed);
    void SortLater();
    void ForgetSortedKeys() { mSortedKeys.clear(); }
    bool IsSorted() const;
    /// By the first column.
    bool IsSortedByName() const;
    using Less = std::function<bool(const UTF16String&, const UTF16String&)>;
    /// The less-than of two sort keys. Only while something is sorted.
    Less SortOrder(bool isAscending) const;
    UTF16String SortKey(const Row& row) const;
    /// Of rows that stand under one row.
    UTF16StringVec SortKeysOf(std::span<const RowRef> rows) const;
    /// Likewise as numbers; none where the keys are not the like.
    std::vector<std::uint64_t> SortNumbersOf(std::span<const RowRef> rows) const;
    /// The key of the first column, by which rows with equal keys are sorted.
    UTF16String NameKey(const Row& row) const;
    /// Notes whether the order by name is known once the rows after the first `countBefore` have gone in.
    void UpdateNameOrder(Access::Children& children, std::size_t countBefore, bool areInNameOrder) const;
    /// The keys of rows in their order, if known: numbers, or else texts.
    struct KeysOfRows {
        std::vector<std::uint64_t> mNumbers;
        UTF16StringVec mKeys;
    };
    /// All under which rows stand, null first.
    std::vector<RowRef> FoldersToSort();
    /// Ends what is being sorted in parts, too.
    void SortAtOnce(const std::vector<RowRef>& folders, std::vector<KeysOfRows> keys = {});
    /// True when no key is needed to sort the folder's rows.
    bool IsOrderKnown(const Row* folder);
    /// Old positions, in the new order. `children` are those of `folder`.
    std::vector<std::uint32_t> OrderByKnownNames(const Row* folder, Access::Children& children);
    std::vector<std::uint32_t> OrderByKeys(const Row* folder, Access::Children& children, KeysOfRows known);
    /// Of a folder's rows: by their keys, or by what is known of their names.
    std::vector<std::uint32_t> OrderOf(const Row* folder, KeysOfRows keys = {});
    /// Gives each folder's rows the order beside it, in one change of the layout.
    void ReorderAll(std::vector<std::pair<const Row*, std::vector<std::uint32_t>>>& changes);
    /// Puts rows that have just been appended into the model, sorted in.
    void InsertSorted(Row* parent, std::size_t countBefore, bool areInNameOrder);
    /// Gives `parent`'s first rows the order that `order` names (old positions); within a layout change.
    void Reorder(const Row* parent, const std::vector<std::uint32_t>& order);
    void BeginLayoutChange();
    void EndLayoutChange();

    // Sorting of very many rows (UI_MultiColumnTree_SortInParts.cpp). The rows keep their order until all keys
    // have been fetched.

    /// So many rows are sorted in one turn.
    static constexpr std::size_t kMostRowsAtOnce = 16'384;
    /// Of more, so many keys are fetched in one turn, in which facts of others may be delivered too.
    static constexpr std::size_t kRowsPerTurn = 8192;
    struct Sorting {
        std::pair<ColumnID, bool> mSortedBy;
        int mAttempts = 1;
        std::vector<RowRef> mFolders;
        std::vector<KeysOfRows> mKeys;
        /// The folder whose keys are being fetched.
        std::size_t mNext = 0;
        std::uint64_t mRowChanges = 0;
    };
    /// Drops what has been fetched before.
    void BeginSortInParts(std::vector<RowRef> folders);
    void SortNextPart();
    /// False when there is none left.
    bool FetchNextKeys();

    // Selection (UI_MultiColumnTree_Selection.cpp).

    void Select(Row* row, bool deselectOthers, bool scrollIntoView, bool notify);
    void SelectRows(const RowVec& rows);
    /// Makes those of the opened rows the selection for which `isMeant` holds.
    void SelectOpened(const std::function<bool(const RowRef& row)>& isMeant);
    /// Keys go on from the selection: unless the current row is selected, the one that was selected last
    /// becomes it.
    void TakeKeyboardToSelection();
    void DeselectAll(bool notify);
    void SelectionChanged(const QItemSelection& selected, const QItemSelection& deselected);
    void NotifySelectionChanged();
    QItemSelection RangesOf(const std::vector<desk::SelectedRows::Run>& runs);
    std::span<const RowRef> RowsOf(const desk::SelectedRows::Run& run) {
        return std::span(ChildrenOf(run.mParent.get())).subspan(run.mFirst, run.mCount);
    }
    RowVec SelectedRowVec();
    /// The row that was selected last; null when none is.
    Row* LastSelected();
    desk::SelectedRows::Run RunOfRow(const Row& row);
    void SetSelection(desk::SelectedRows wanted);
    void MarkSelected(bool isSelected);
    /// Makes `row` the current one (the one the keyboard starts from) without selecting or scrolling.
    void SetCurrentRow(Row* row);
    Row* CurrentRow() const;

    // Visibility and scrolling (UI_MultiColumnTree_Visibility.cpp).

    struct Range {
        int mFirst = -1;
        int mLast = -1;
    };
    Range VisibleRange();
    void UpdateVisibleRows();
    /// Returns true when rows came or left.
    bool UpdateVisibleRowsOnce();
    /// Once a frame at most: who paints finds it out before.
    void UpdateVisibleRowsLater();
    void UpdateVisibleRowsIfPainting();
    bool IsRowVisible(const Row& row) const;
    /// Brings the view's layout up to date.
    void FlushLayout();
    /// Remembers what stands first in the visible area, to put it back there after the next layout.
    void HoldScrollPosition();
    void RestoreScrollPosition();
    void ScrollIntoView(Row& row, bool animate, float margin, bool openAncestors);
    void ScrollToTop(Row& row);
    Row* TopRow();
    void SetRowHeight(float height);
    void RedrawRow(const Row& row);

    // Columns and cells (UI_MultiColumnTree_Cells.cpp).

    void SetHeader(RefPtr<UI_MultiColumnTreeHeaderRow> header);
    void ColumnsChanged();
    int CountColumns() const;
    /// Columns by order of appending (the model's) and by position (the panel's).
    int ColumnAtPosition(unsigned position) const;
    int PositionOfColumn(int appended) const;
    /// Where the nodes or the text of a cell stand in the viewport, given the row's rectangle there.
    QRectF CellRect(const Row& row, int appended, const QRect& rowRect) const;
    /// In view units of the tree; all 0 where it has no place.
    RectT<float> CellRectInTree(const Row& row, unsigned position);
    QRectF TriangleRect(const Row& row, const QRect& rowRect) const;
    /// Gives a cell of a visible row its size.
    void FitCell(Row& row, int appended);
    int DepthOf(const Row& row) const;
    double IndentationWidth() const { return double(mIndentation) * mRowPixels; }
    UTF16String AccessibleText(const Row& row, int appended) const;
    /// The name by which the user finds the row with the keyboard.
    QString NameOf(const Row& row) const;
    /// Width that a cell's content needs, from the left edge of the column.
    double NaturalCellWidth(Row& row, int appended);
    /// True when a cell shows less than its whole text.
    bool IsCellCut(Row& row, int appended);
    void ShowBusy(bool busy);

    RowRef mRoot;
    RefPtr<UI_MultiColumnTreeHeaderRow> mHeader;
    desk::TreeCallbacks mCallbacks;
    desk::TreeModel mModel{*this};
    QPointer<desk::TreeView> mView;
    host::UI_CellEditor mCellEditor;

    /// Each of them is marked, too.
    desk::SelectedRows mSelected;
    bool mNotifiesSelection = true;
    bool mIsSettingSelection = false;

    RowVec mVisible;
    int mFirstVisible = 0;
    bool mIsUpdatingVisible = false;
    std::chrono::steady_clock::time_point mNextVisibleUpdate{};

    RowRef mHeldRow;
    double mHeldOffset = 0;
    bool mHoldsScrollPosition = false;
    /// Where to scroll when the tree is shown; with the row at the top, or just in view.
    RowRef mScrollWhenShown;
    bool mScrollsToTopWhenShown = false;

    /// What the keys of a folder's rows were when their order was last found right, hashed.
    std::unordered_map<const Row*, std::uint64_t> mSortedKeys;

    std::optional<Sorting> mSorting;
    /// Grows when rows come, go or change places.
    std::uint64_t mCountOfRowChanges = 0;

    float mRowHeight = 25;
    int mRowPixels = 25;
    float mIndentation = 0.62f;
    int mIndentationLevels = 0;
    bool mAllowsChildren = true;
    bool mHearsKeys = true;
    bool mSupportsNoneSelected = true;
    bool mDeselectsOnEmptyClick = false;
    bool mDrawsHorizontalLines = true;
    bool mDrawsVerticalLines = false;
    QString mEmptyText;
    std::size_t mRowsOfEmptyTree = 0;
    QString mAccessibleName;
    int mSpinnerAlignment = 0;
    int mBusy = 0;
    unsigned mBusyPeriod = 0;

    Later mSortLater;
    Later mSortPartLater;
    Later mNotifyLater;
    Later mVisibleLater;
    /// Gone when the tree is: what was queued for it then does nothing.
    desk::Lifetime mLifetime;
};
