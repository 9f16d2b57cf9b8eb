#pragma once

#include <cstdint>
#include <memory>

#include "host/core/Strings.h"
#include "host/toolkit/SharedFunction.h"
#include "host/toolkit/UI_Node.h"
#include "host/toolkit/UI_StaticText.h"

namespace host {

class UI_MultiColumnTree;

/// Names a column: a four-character code, its ASCII letters packed big-endian.
using ColumnID = std::uint32_t;

/// The header row of a tree: its columns, their order and widths, and by which of them it is sorted.
/// Positions count from 0 at the left, as displayed. The first column appended is the sort column,
/// ascending, until another is set. UI thread.
class ZUHOST_API UI_MultiColumnTreeHeaderRow : public RefCounted {
public:
    struct Impl;

    /// For `tree`, whose `SetHeaderRow` it is then given to. Without columns at first.
    explicit UI_MultiColumnTreeHeaderRow(UI_MultiColumnTree& tree);
    ~UI_MultiColumnTreeHeaderRow() override;

    /// Adds a column at the right end; an ID that stands already is ignored. `title` is localised.
    void AppendColumn(const UTF16String& title, ColumnID column);
    unsigned GetCountOfColumns() const;
    /// The column at a position; 0 when there is none.
    ColumnID GetColumnAt(unsigned index) const;
    /// The position of a column; -1 when there is none.
    int GetIndexOfColumn(ColumnID column) const;

    /// Displayed width in view units; 0 for an unknown column.
    float GetColumnWidth(ColumnID column) const;
    /// Sets the displayed width, not below the column's minimum and not above 10,000. Unknown columns and what
    /// is no number are ignored. Not a change by the user: the column-resized callback is not called.
    void SetColumnWidth(ColumnID column, float width);
    /// The width below which the user cannot make a column.
    void SetColumnAllowedMinimumWidth(ColumnID column, float width);
    /// How the column's title and cells are aligned; left unless set.
    void SetColumnAlignment(ColumnID column, UI_Alignment alignment);
    UI_Alignment GetColumnAlignment(ColumnID column) const;

    /// Moves a column to a position. With `keepWidths` the widths stay with their columns (the only form).
    /// Not a change by the user: the column-moved callback is not called.
    void MoveColumn(ColumnID column, int index, bool keepWidths);
    /// Lets the user move columns by dragging; with `pinFirst` all but the first position.
    void SetAllowColumnMovingByUser(bool allow, bool pinFirst);

    /// 0 while there is no column.
    ColumnID GetSortColumn() const;
    bool IsSortDirectionAscending() const;
    /// Set the sort column and direction and sort the tree anew, later in the same turn of the event loop.
    /// Not a change by the user: the user-changed-sort callback is not called. An unknown column leaves
    /// the sort column as it is.
    void SetSortColumn(ColumnID column);
    void SetSortDirection(bool ascending);
    /// Shows beside the sort column's title which way it is sorted; not shown by default.
    void ShowSortIndicator(bool show);

    /// The comparison of two sort keys (see `UI_MultiColumnTree::SetCellSortDataFunction`): true when the
    /// first sorts before the second in ascending order. An empty pointer leaves the control's own order.
    void SetStringSortingCallback(SharedFunction<bool(const UTF16String&, const UTF16String&)> less);
    /// Called when the user has chosen the sort column or direction, before the tree sorts.
    void SetUserChangedSortCallback(SharedFunction<void(ColumnID column, bool ascending)> changed);

    Impl& GetImpl() const { return *mImpl; }

private:
    std::unique_ptr<Impl> mImpl;
};

}  // namespace host
