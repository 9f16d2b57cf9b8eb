#include "desk/toolkit/TreeModel.h"

#include <algorithm>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/ControlImpl.h"
#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeImpl.h"

namespace desk {

using Row = host::UI_MultiColumnTreeRow;
using Access = Row::Access;

/// So many rows further on memory is asked for what will be looked at.
constexpr std::size_t kRowsAhead = 16;

QModelIndex TreeModel::IndexOf(const Row* row, int column) const {
    if (!row) return {};
    return createIndex(mTree.PositionOf(*row), column, const_cast<Row*>(row));
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (row < 0 || column < 0 || parent.column() > 0 || column >= columnCount()) return {};
    const Row* above = RowOf(parent);
    if (std::uint32_t(row) >= mTree.CountOfLaidOutChildren(above)) return {};
    const std::vector<host::RowRef>& rows = mTree.ChildrenOf(above);
    // The view asks for all rows in turn, and then for the flags of each: they lie anywhere in memory.
    if (const std::size_t next = std::size_t(row) + kRowsAhead; next < rows.size())
        __builtin_prefetch(&Access::MayHaveChildren(*rows[next]));
    return createIndex(row, column, rows[std::size_t(row)].get());
}

QModelIndex TreeModel::parent(const QModelIndex& child) const {
    return child.isValid() ? IndexOf(Access::Parent(*RowOf(child))) : QModelIndex();
}

QModelIndex TreeModel::sibling(int row, int column, const QModelIndex& index) const {
    if (!index.isValid() || column < 0 || column >= columnCount()) return {};
    if (row == index.row()) return createIndex(row, column, index.internalPointer());
    return TreeModel::index(row, column, parent(index));
}

int TreeModel::rowCount(const QModelIndex& parent) const {
    return parent.column() > 0 ? 0 : int(mTree.CountOfLaidOutChildren(RowOf(parent)));
}

// One column at least, so that rows have indexes before the columns are made.
int TreeModel::columnCount(const QModelIndex&) const {
    return std::max(1, mTree.CountColumns());
}

bool TreeModel::hasChildren(const QModelIndex& parent) const {
    if (!parent.isValid()) return rowCount() > 0;
    return parent.column() == 0 && Access::MayHaveChildren(*RowOf(parent));
}

Qt::ItemFlags TreeModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    return Access::MayHaveChildren(*RowOf(index)) ? flags : flags | Qt::ItemNeverHasChildren;
}

QVariant TreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role == Qt::AccessibleTextRole)
        return ToDisplayText(mTree.AccessibleText(*RowOf(index), index.column()));
    if (role == Qt::ToolTipRole) return FindToolTip(*RowOf(index), index.column());
    return {};
}

QVariant TreeModel::FindToolTip(host::UI_MultiColumnTreeRow& row, int column) const {
    const int position = mTree.PositionOfColumn(column);
    host::UTF16String tip;
    if (position >= 0) tip = Call(mTree.mCallbacks.mToolTip, host::RowRef(&row), unsigned(position));
    if (tip.empty() && mTree.IsCellCut(row, column)) tip = mTree.AccessibleText(row, column);
    return tip.empty() ? QVariant() : QVariant(ToToolTip(ToDisplayText(tip)));
}

QVariant TreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= mTree.CountColumns()) return {};
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) return {};
    return host::UI_MultiColumnTreeHeaderRow::Impl::Of(*mTree.mHeader).mColumns[std::size_t(section)].mTitle;
}

}  // namespace desk
