#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "host/core/Geometry.h"
#include "host/core/Strings.h"
#include "host/toolkit/DataTransfer.h"
#include "host/toolkit/Drawbot.h"
#include "host/toolkit/UI_CellEditor.h"
#include "host/toolkit/UI_MultiColumnTreeHeaderRow.h"
#include "host/toolkit/UI_MultiColumnTreeRow.h"
#include "host/toolkit/UI_Node.h"

namespace host {

using RowVec = std::vector<RowRef>;

/// What the tree's scroll view shows: its position in the content and its size, in view units.
struct UI_ScrollView {
    RectT<float> mVisibleRect;
};

/// A button under the text of an empty tree.
struct UI_EmptyButton {
    /// Plain, localised.
    UTF16String mText;
    SharedFunction<void()> mPressed;
};

/// A tree with columns: rows that can be opened, selected, sorted and scrolled.
///
/// "Opened rows" are the rows that show because all rows above them are open, in display order, whether
/// they are scrolled into view or not; "visible rows" are those of them in the visible area. All rows have
/// one height. Rows are appended without being shown and then laid out in one step, sorted. Callbacks are
/// called on the UI thread, never from within the operation that caused them unless it says so.
class ZUHOST_API UI_MultiColumnTree : public UI_SubView {
public:
    /// The host library's half of the tree.
    struct TreeImpl;

    UI_MultiColumnTree();
    ~UI_MultiColumnTree() override;

    // Rows.

    /// Makes a row under `parent` (a top-level row when null). It is not shown, nor counted as an opened
    /// row, until `LayoutAfterAppendRow`.
    RowRef CreateAndAppendRow(UI_MultiColumnTreeRow* parent);
    /// Shows the rows that were appended under `parent` since the last call, each in its sorted place, in
    /// one step; rows that showed already keep selection, position and open state. With `areInNameOrder` those
    /// that were appended stand in the ascending order of their keys in the first column, and only the ends
    /// of that list are compared with others where that is the order of the tree or its reverse.
    void LayoutAfterAppendRow(UI_MultiColumnTreeRow* parent, bool areInNameOrder = false);
    /// Removes rows with everything below them, in one step.
    void RemoveRows(const RowVec& rows);
    void RemoveAllRows();
    /// The top-level rows as they are sorted, appended ones that were not laid out yet at the end.
    const std::vector<RowRef>& GetTopLevelRows() const;

    /// Sorts all rows by the sort column: asks each row's sort key once, then compares. Keeps selection,
    /// open rows and scroll position. Costs little when the order already holds. The keys of more than 16,384
    /// rows are asked for in parts over several turns of the event loop, anew when rows come or go or this is
    /// called again; the rows keep their order until all keys are there. Another sort column drops it.
    void SortTree();
    /// True while it is under way.
    bool IsSorting() const;
    /// The same when only the sort keys of `changed` may be others than they were when the rows were last
    /// sorted: a few rows of a folder go to their places, asking for their keys and those of the rows with
    /// which they are compared, some for each; of other folders nothing is asked. Where another is found out of
    /// order beside them, their folder is sorted whole. Rows that are not in the tree any more are passed over.
    void SortRows(const RowVec& changed);

    // Opening and closing.

    /// Opens a row that may have children; the row's open-state callback is called before it returns.
    void OpenRow(UI_MultiColumnTreeRow* row);
    /// The same for closing; selected rows below it are deselected, open ones below it stay open for when it is
    /// opened again. Nothing for a row that is closed.
    void CloseRow(UI_MultiColumnTreeRow* row);
    /// `UI_MultiColumnTreeRow::IsOpen`; false for null.
    bool IsRowOpen(const UI_MultiColumnTreeRow* row) const;
    /// Lets the row show a disclosure triangle although it has no child rows; false by default.
    void SetRowHasCustomChild(UI_MultiColumnTreeRow* row, bool hasCustomChild);
    /// Rows may have children at all; true by default.
    void SetAllowChildren(bool allow);
    /// Decides whether a row may have children (shows a triangle); without it, rows that have some may.
    void SetCanRowHaveChildrenFunction(SharedFunction<bool(const RowRef& row)> function);

    // Selection. Selecting by these operations calls the selection-changed callback once, later in the same
    // turn of the event loop.

    /// Selects `row`: alone with `deselectOthers`, and scrolled into view with `scrollIntoView`; with `notify`
    /// the selection-changed callback is called.
    void SelectRow(UI_MultiColumnTreeRow* row, bool deselectOthers, bool scrollIntoView, bool notify);
    /// Makes `rows` the selection; large numbers of rows are selected in one step.
    void SelectRows(const RowVec& rows);
    /// Makes those of the opened rows the selection for which `isMeant` holds; each is asked for once.
    void SelectOpenedRows(const std::function<bool(const RowRef& row)>& isMeant);
    /// Leaves no row selected; with `notify` the selection-changed callback is called.
    void DeselectAllRows(bool notify);
    /// The selected rows in the order in which they were selected. Makes a list of them: a hundred thousand
    /// take a millisecond or two.
    RowVec GetSelectedRows() const;
    /// How many they are, without looking at each.
    std::size_t CountSelectedRows() const;
    bool IsRowSelected(const UI_MultiColumnTreeRow* row) const;
    /// The selected row when there is exactly one; empty otherwise.
    RowRef GetOnlySelectedRow() const;
    /// Hands the selected rows to `visitor` in that order, until it answers false: at a time all those that
    /// stand one after another under one row. Makes no list: costs what `visitor` does, which changes nothing
    /// in the tree.
    void VisitSelectedRows(const std::function<bool(std::span<const RowRef> rows)>& visitor) const;
    /// The user may select several rows, by Ctrl, Shift and Select All; false by default.
    void SetSupportMultipleSelections(bool support);
    /// The user may deselect the last selected row; true by default.
    void SetSupportNoneSelected(bool support);
    /// A click beside the rows deselects all, if none may be selected; false by default.
    void SetSupportDeselectAllOnEmptyTreeClick(bool support);

    // Visibility and scrolling.

    /// The opened rows, in display order.
    RowVec GetOpenedRows() const;
    /// How many they are, without looking at each.
    std::size_t CountOpenedRows() const;
    /// The opened row at an index; empty when there is none.
    RowRef GetOpenedRow(int index) const;
    /// True when part of the row lies in the visible area and the tree is shown. Constant time.
    bool IsRowVisible(const UI_MultiColumnTreeRow* row) const;
    /// Index of the first and the last opened row of which part is visible; -1 when there is none.
    int GetFirstVisibleOpenedRowIndex() const;
    int GetLastVisibleOpenedRowIndex() const;
    /// Scrolls as little as needed to show the row wholly, `margin` view units from the edge; opens the rows
    /// above it when `openAncestors` is set; glides there with `animate`.
    void ScrollRowIntoView(UI_MultiColumnTreeRow* row, bool animate, float margin, bool openAncestors);
    /// What of the rows is in the visible area now.
    UI_ScrollView GetScrollView() const;
    /// The opened row at the top edge of the visible area, or where that will be when the tree is shown; empty
    /// when there are no rows.
    RowRef GetTopRow() const;
    /// Scrolls so that the row stands at the top edge of the visible area, or as near to it as the end of the
    /// rows allows; nothing for a row that is not opened. A tree that is not shown does so when it is.
    void ScrollRowToTop(UI_MultiColumnTreeRow* row);

    /// The rectangle of a cell in view units of the tree, as the callbacks' points are; `column` is a position.
    /// Empty (all 0) for a row that is not opened, an unknown column, and while the tree is not shown. May lie
    /// outside the visible area.
    RectT<float> GetCellRect(const UI_MultiColumnTreeRow* row, unsigned column) const;

    // The keyboard, and editing.

    /// With false the tree leaves all keys alone, as while a name is edited; true by default.
    void EnableKeyboardEvents(bool enable);
    /// What `EnableKeyboardEvents` has set.
    bool AreKeyboardEventsEnabled() const;
    /// Gives the tree the keyboard; nothing while it does not show.
    void TakeKeyboard();
    /// The tree's editor of cells; lives as long as the tree.
    UI_CellEditor& GetCellEditor() const;

    // Dragging.

    /// Lets drags come over the tree (`SetDropSupportCallback`); off by default.
    void SetSupportDragOverRow(bool support);
    /// Says where the drag that hovers would be dropped: `destination` lights up, the whole tree for null, and
    /// the pointer shows that the drop is welcome; with `show` false nothing lights up, and the pointer shows
    /// the forbidden sign. Only from within the drop-support callback; it begins with false each time.
    void ShowDragFeedback(UI_MultiColumnTreeRow* destination, bool show);

    // Appearance.

    /// What `SetRowHeight` has set; 25 at first.
    float GetRowHeight() const;
    /// Row height in view units; also the measure of indentation, triangles and header text. Keeps the first
    /// visible row in place.
    void SetRowHeight(float height);
    /// Empty until one is set.
    RefPtr<UI_MultiColumnTreeHeaderRow> GetHeaderRow() const;
    /// Gives the tree its columns, by a header row that was made for it; the cells of the columns before are
    /// gone.
    void SetHeaderRow(RefPtr<UI_MultiColumnTreeHeaderRow> headerRow);
    /// Lines below rows and beside columns; at first only those below rows.
    void SetDrawGridLines(bool horizontal, bool vertical);
    /// Where the busy spinner stands: 0 in the top right corner, 1 in the centre.
    void SetSpinnerAlignment(int alignment);
    /// Shows the busy spinner while the count of `BeginBusy` calls exceeds that of `EndBusy` calls; a busy
    /// time under 150 ms shows none.
    void BeginBusy();
    void EndBusy();
    /// Text in the middle of an empty tree; plain, localised. It does not show while the tree is busy.
    void SetEmptyText(const UTF16String& text);
    /// Buttons under that text, which show while it does, from the top down.
    void SetEmptyButtons(const std::vector<UI_EmptyButton>& buttons);
    /// With `count` opened rows or fewer the tree counts as empty; 0 by default.
    void SetRowsOfEmptyTree(std::size_t count);
    /// The name of the tree for assistive technology.
    void SetAccessibleName(const UTF16String& name);
    /// Draws the visible cells of a row anew.
    void RedrawRow(const UI_MultiColumnTreeRow* row);

    // Callbacks, each set once.

    /// Draws a cell that has no nodes in it.
    void SetDrawCellOfRowCallback(
        SharedFunction<void(Drawbot&, const RowRef&, unsigned column, const RectT<float>& cell)> callback);
    /// What a cell says to assistive technology.
    void SetCellAccessibleTextFunction(SharedFunction<UTF16String(const RowRef&, unsigned column)> function);
    /// A cell's tip, plain and localised. Without the function, and where it answers nothing, a cell whose text
    /// is cut tells what it says to assistive technology.
    void SetCellToolTipFunction(SharedFunction<UTF16String(const RowRef&, unsigned column)> function);
    /// A cell's sort key. Called once for each row when the tree sorts, and for rows whose keys are equal once
    /// more: they stand in the order of their keys in the first column that was appended, ascending.
    void SetCellSortDataFunction(SharedFunction<UTF16String(const RowRef&, unsigned column)> function);
    /// The same for rows that stand under one row, in one call: a key for each, in their order. With it the
    /// other function is asked only for single rows: those with which new ones are compared, and those with
    /// equal keys while the order by the first column is not known. A row's key in the first column must never
    /// change: the tree keeps the order by it.
    void SetRowsSortDataFunction(
        SharedFunction<UTF16StringVec(std::span<const RowRef> rows, unsigned column)> function);
    /// Likewise as numbers, for each row of such a column: where there are numbers they alone decide, and no
    /// key is asked for, which would cost ten times as much. Empty where the column's keys are not the like.
    void SetRowsSortNumbersFunction(
        SharedFunction<std::vector<std::uint64_t>(std::span<const RowRef> rows, unsigned column)> function);
    /// A sorting that took several turns has ended.
    void SetRowsSortedCallback(SharedFunction<void()> callback);
    /// The user has moved a column.
    void SetColumnMovedCallback(SharedFunction<void(unsigned from, unsigned to)> callback);
    /// The user has changed a column's width.
    void SetColumnResizedCallback(SharedFunction<void(unsigned column, float width)> callback);
    /// A right click or the menu key, on a row or on none; `point` in view units of the tree. Returns true
    /// when it was handled.
    void SetRowContextMenuCallback(SharedFunction<bool(const RowRef&, Point point)> callback);
    /// The left mouse button has gone down on a row without modifier keys, and up again; the row of the second
    /// may be another one, or none. Down is called before the click changes the selection. Not called for a
    /// triangle, for the second press of a double click and its release, for a press that gives the tree the
    /// keyboard (such a click is meant for the panel), and up not after a drag. `point` in view units of the
    /// tree.
    void SetRowSingleClickDownCallback(SharedFunction<void(const RowRef&, Point point)> callback);
    void SetRowSingleClickUpCallback(SharedFunction<void(const RowRef&, Point point)> callback);
    /// The user has double-clicked a row, or pressed Return while it was selected.
    void SetRowDoubleClickedCallback(SharedFunction<void(const RowRef&, Point point)> callback);
    /// A row has been opened or closed, by whatever means.
    void SetRowOpenStateChangedCallback(SharedFunction<void(const RowRef&, bool open)> callback);
    /// The user has opened or closed a row, by a click on its triangle or a key; with `kModKey_Alt`
    /// (`GetCurrentModKeys`) that is meant for all below it too, and the row may have been open or closed
    /// before. Without this callback the tree then opens or closes what rows there are.
    void SetRowDisclosureChangedCallback(SharedFunction<void(const RowRef&, bool open)> callback);
    /// A row has come into the visible area or left it: by scrolling, resizing, showing, opening, closing or a
    /// change of rows. Called before the row is painted. The cells of a row that left have been emptied.
    void SetRowVisibilityChangedCallback(SharedFunction<void(const RowRef&)> callback);
    /// The selection has changed.
    void SetRowsSelectionChangedCallback(SharedFunction<void(const RowVec& selected)> callback);
    /// The colour of selected rows, by the host's colour table; an empty callback is the theme's own.
    void SetRowSelectionColorCallback(SharedFunction<int(const RowRef&)> callback);

    /// The user drags the selected rows: the left button went down on one of them without ending on a triangle,
    /// 150 ms ago or more, and the pointer has gone the system's drag distance. Returns what the drag returned
    /// (`OS_SendData::DoDragAndDrop`), during which this tree may go. Called as well when the user cuts them.
    void SetSelectedRowsDraggedCallback(SharedFunction<bool(const UI_MouseEvent& event)> callback);
    /// A drag is over the tree (`kDropAction_...`): once when it comes, then whenever the row under the pointer
    /// is another one, when it leaves, and when it is dropped. Returns true when the action is one that it
    /// knows; a drop is welcome while feedback shows (`ShowDragFeedback`). The tree sees to the rest:
    /// - a closed folder opens after a second under the pointer, and near the edges the tree scrolls;
    /// - a drop on a destination that has been so for less than 200 ms does nothing, and the status bar says
    /// so;
    ///   one whose row has gone meanwhile neither;
    /// - rows and files that the user pastes are dropped on the selected row, or on none;
    /// - the drop itself is told later, when the drag has ended, and may take its time. Feedback is gone by
    /// then.
    void SetDropSupportCallback(SharedFunction<bool(int action, UI_DropData* data)> callback);

protected:
    explicit UI_MultiColumnTree(std::unique_ptr<UI_Node::Impl> impl);
    friend struct TreeImpl;
};

}  // namespace host
