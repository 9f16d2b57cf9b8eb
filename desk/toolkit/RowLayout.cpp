#include "desk/toolkit/RowLayout.h"

#include <QAbstractItemDelegate>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QStyleOptionViewItem>
#include <QTreeView>
// After the public headers that it leans on.
#include <private/qtreeview_p.h>

#include <string_view>
#include <utility>

#include "desk/toolkit/TreeImpl.h"

namespace desk {

namespace {

using Row = host::UI_MultiColumnTreeRow;
using Access = Row::Access;

/// So many rows further on memory is asked for what will be looked at: rows lie anywhere in it.
constexpr std::uint32_t kRowsAhead = 8;

class Layout {
public:
    Layout(const host::UI_MultiColumnTree::TreeImpl& tree, QTreeViewItem* items) : mTree(tree), mItems(items) {}

    /// Writes the items of all rows below a row, whose own item is the `parentItem`-th (-1 at the top), from
    /// the `next`-th item on. Returns the place behind the last one.
    int Write(const Access::Children& children, int parentItem, unsigned level, int next) const {
        const std::uint32_t count = children.mCountOfLaidOut;
        for (std::uint32_t i = 0; i < count; ++i) {
            if (i + kRowsAhead < count)
                __builtin_prefetch(&Access::MayHaveChildren(*children.mRows[i + kRowsAhead]));
            Row& row = *children.mRows[i];
            const int place = next++;
            QTreeViewItem& item = mItems[place];
            item.index = mTree.mModel.createIndex(static_cast<int>(i), 0, &row);
            item.parentItem = parentItem;
            item.level = level & 0xFFFF;
            item.hasMoreSiblings = i + 1 < count;
            const bool mayHaveChildren = Access::MayHaveChildren(row);
            item.expanded = mayHaveChildren && row.IsOpen();
            item.hasChildren = mayHaveChildren;
            const Access::Children* below = item.expanded ? Access::FindChildren(row) : nullptr;
            if (below) next = Write(*below, place, level + 1, next);
            if (!item.expanded) continue;
            item.total = static_cast<unsigned>(next - place - 1) & 0xFFFFFFF;
            item.hasChildren = item.total > 0;
        }
        return next;
    }

private:
    const host::UI_MultiColumnTree::TreeImpl& mTree;
    QTreeViewItem* mItems;
};

}  // namespace

bool LayOutRows(QTreeView& view, const host::UI_MultiColumnTree::TreeImpl& tree) {
    static const bool isVersionCompiledWith = std::string_view(qVersion()) == QT_VERSION_STR;
    if (!isVersionCompiledWith) return false;
    auto& data = static_cast<QTreeViewPrivate&>(*QObjectPrivate::get(&view));
    if (!data.customIndent) data.updateIndentationFromStyle();
    if (std::exchange(data.hasRemovedItems, false)) {
        const auto isGone = [](const QPersistentModelIndex& index) { return !index.isValid(); };
        erase_if(data.expandedIndexes, isGone);
    }
    data.lastViewedItem = 0;
    data.defaultItemHeight = tree.mRowPixels;
    data.viewItems.clear();
    data.viewItems.resize(static_cast<qsizetype>(tree.CountOfOpened()));
    if (const Access::Children* top = Access::FindChildren(*tree.mRoot))
        Layout(tree, data.viewItems.data()).Write(*top, -1, 0, 0);
    return true;
}

}  // namespace desk
