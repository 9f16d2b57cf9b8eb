#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/core/Export.h"
#include "host/core/RefCounted.h"

namespace host {

class UI_Container;
class UI_MultiColumnTree;
class UI_MultiColumnTreeRow;

using RowRef = RefPtr<UI_MultiColumnTreeRow>;

/// A row of a tree. Rows are made by the tree and shared by reference; a row that was removed from its
/// tree stays valid, without parent and children. UI thread.
class ZUHOST_API UI_MultiColumnTreeRow : public RefCounted {
public:
    /// What the tree's owner keeps with a row.
    struct Data {
        virtual ~Data() = default;
    };
    /// The host library's way to a row's fields.
    struct Access;

    ~UI_MultiColumnTreeRow() override;

    /// The row above, or empty for a top-level row and for a row that stands in no tree.
    RowRef GetParentRow() const { return RowRef(mParent); }
    /// The rows below, in the order in which they are sorted; rows that were appended but not laid out yet
    /// stand at the end.
    const std::vector<RowRef>& GetChildRows() const {
        static const std::vector<RowRef> sNoRows;
        return mChildren ? mChildren->mRows : sNoRows;
    }
    std::size_t CountChildRows() const { return GetChildRows().size(); }
    bool HasChild() const { return !GetChildRows().empty(); }
    /// True when the row shows a disclosure triangle although it may have no child rows.
    bool HasCustomChild() const { return mHasCustomChild; }
    /// True when the row is disclosed: its child rows show if the row itself does.
    bool IsOpen() const { return mIsOpen; }
    /// True when this row lies somewhere below `ancestor`.
    bool IsADescendent(const UI_MultiColumnTreeRow& ancestor) const;
    /// The container of a cell, made on demand; null when the row stands in no tree or the column position
    /// does not exist. Nodes in it are painted in place of the cell. The tree empties the cells of a row that
    /// leaves the visible area.
    UI_Container* GetCellView(unsigned column) const;
    /// The row's background, by the host's colour table; 277 is the panel rows' own, 0 none.
    void SetBackgroundColorID(int id) { mBackgroundColorID = static_cast<std::int16_t>(id); }
    int GetBackgroundColorID() const { return mBackgroundColorID; }
    /// What the tree's owner marks the row with, a bit each: 0 at first, and nothing to the tree.
    void SetMarks(unsigned marks) { mMarks = static_cast<std::uint8_t>(marks); }
    unsigned GetMarks() const { return mMarks; }

private:
    friend struct Access;
    struct Cells;
    /// What is known of the order of the rows below a row by their keys in the first column.
    enum class NameOrder : std::uint8_t {
        Unknown,
        /// They stand in it, or in its reverse.
        Rising,
        Falling,
        /// `mNameRank` of each tells it.
        Ranked
    };
    struct Children {
        std::vector<RowRef> mRows;
        /// The first ones; the others have been appended since.
        std::uint32_t mCountOfLaidOut = 0;
        /// The rows that show below this one when it shows and is open.
        std::uint32_t mCountOfShown = 0;
        NameOrder mNameOrder = NameOrder::Unknown;
        /// False as long as none of the rows may have children: nothing has to be looked for below them.
        bool mHoldsParents = false;
    };
    UI_MultiColumnTreeRow();

    UI_MultiColumnTree* mTree = nullptr;
    UI_MultiColumnTreeRow* mParent = nullptr;
    /// Null for a row that never had any: most are such.
    std::unique_ptr<Children> mChildren;
    std::unique_ptr<Data> mData;
    std::unique_ptr<Cells> mCells;
    std::uint32_t mPosition = 0;
    std::uint32_t mNameRank = 0;
    std::int16_t mBackgroundColorID = 0;
    std::uint8_t mMarks = 0;
    bool mIsOpen = false;
    bool mHasCustomChild = false;
    bool mIsVisible = false;
    bool mIsSelected = false;
    bool mMayHaveChildren = false;
};

}  // namespace host
