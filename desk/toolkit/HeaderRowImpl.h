#pragma once

#include <QString>
#include <vector>

#include "host/toolkit/UI_MultiColumnTree.h"

class QHeaderView;

/// The desktop's half of a header row. It holds the columns; while it is a tree's header row, the tree's
/// header view follows it.
struct host::UI_MultiColumnTreeHeaderRow::Impl {
    struct Column {
        ColumnID mID = 0;
        QString mTitle;
        float mWidth = 100;
        float mMinimumWidth = 20;
        UI_Alignment mAlignment = UI_Alignment::Left;
    };

    static Impl& Of(const UI_MultiColumnTreeHeaderRow& headerRow) { return headerRow.GetImpl(); }

    /// Index into `mColumns`; -1 for an unknown column.
    int Find(ColumnID column) const;
    int PositionOf(int appended) const;
    QHeaderView* View() const;
    /// Brings a header view that has as many sections in line with this header row.
    void Apply();
    void ApplyWidths();
    /// How much narrower than it is set the last column shows, so that the vertical scroll bar alone brings no
    /// horizontal one along.
    int WidthLeftToScrollBar() const;
    void ApplySortIndicator();
    void SetSort(ColumnID column, bool ascending);

    // What the user does, told by the header view.
    void SectionResized(int appended, int width);
    void SectionMoved(int from, int to);
    void SectionClicked(int appended);

    /// In the order in which they were appended.
    std::vector<Column> mColumns;
    /// The columns (indices into `mColumns`) from left to right.
    std::vector<int> mOrder;
    ColumnID mSortColumn = 0;
    bool mIsAscending = true;
    bool mShowsSortIndicator = false;
    bool mAllowsMoving = false;
    bool mPinsFirst = false;
    /// True while the header view is brought in line: what it tells then is not the user's doing.
    bool mIsApplying = false;
    SharedFunction<bool(const UTF16String&, const UTF16String&)> mLess;
    SharedFunction<void(ColumnID, bool)> mUserChangedSort;
    /// The tree whose header row this is, or null.
    UI_MultiColumnTree::TreeImpl* mTree = nullptr;
};
