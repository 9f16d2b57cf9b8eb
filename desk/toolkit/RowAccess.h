#pragma once

#include "desk/toolkit/NodeImpl.h"
#include "host/toolkit/UI_MultiColumnTree.h"

namespace desk {

/// The container of a cell: its nodes fill it.
struct CellImpl final : ContainerImpl {
    explicit CellImpl(host::UI_MultiColumnTreeRow& row) : mRow(&row) {}
    void ContentChanged() override;
    /// Gives the cell its size; its nodes get all of it.
    void Fit(float width, float height);

    /// Not owned; the row owns its cells. Null once it has let go of this one.
    host::UI_MultiColumnTreeRow* mRow;

protected:
    void ChildAdded(host::UI_Node& child) override;
};

class CellContainer final : public host::UI_Container {
public:
    explicit CellContainer(host::UI_MultiColumnTreeRow& row) : UI_Container(std::make_unique<CellImpl>(row)) {}
};

inline CellImpl& ImplOf(const CellContainer& cell) {
    return static_cast<CellImpl&>(cell.GetImpl());
}

}  // namespace desk

/// The cells of a visible row, by the order in which the columns were appended.
struct host::UI_MultiColumnTreeRow::Cells {
    ~Cells();
    std::vector<RefPtr<desk::CellContainer>> mContainers;
};

struct host::UI_MultiColumnTreeRow::Access {
    using Row = UI_MultiColumnTreeRow;

    static RowRef Make() { return RowRef(new Row); }
    static UI_MultiColumnTree*& Tree(Row& row) { return row.mTree; }
    static Row*& Parent(Row& row) { return row.mParent; }
    static Row* Parent(const Row& row) { return row.mParent; }
    using Children = Row::Children;
    static Children& ChildrenOf(Row& row) {
        if (!row.mChildren) row.mChildren = std::make_unique<Children>();
        return *row.mChildren;
    }
    /// Null for a row that never had any.
    static const Children* FindChildren(const Row& row) { return row.mChildren.get(); }
    static void ForgetChildren(Row& row) { row.mChildren.reset(); }
    static std::unique_ptr<Data>& DataOf(Row& row) { return row.mData; }
    static std::unique_ptr<Cells>& CellsOf(Row& row) { return row.mCells; }
    static std::uint32_t& Position(Row& row) { return row.mPosition; }
    using NameOrder = Row::NameOrder;
    static std::uint32_t& NameRank(Row& row) { return row.mNameRank; }
    static bool& IsOpen(Row& row) { return row.mIsOpen; }
    static bool& HasCustomChild(Row& row) { return row.mHasCustomChild; }
    static bool& IsVisible(Row& row) { return row.mIsVisible; }
    static bool& IsSelected(Row& row) { return row.mIsSelected; }
    static bool& MayHaveChildren(Row& row) { return row.mMayHaveChildren; }

    /// The cell of a column (by order of appending), made on demand.
    static desk::CellContainer& Cell(Row& row, unsigned column);
    /// The cell of a column, or null when it holds no nodes.
    static desk::CellContainer* FindCellWithNodes(const Row& row, unsigned column);
};
