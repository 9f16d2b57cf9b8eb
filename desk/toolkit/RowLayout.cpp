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

class Layout {
public:
    Layout(const host::UI_MultiColumnTree::TreeImpl& tree, QTreeViewItem* items) : mTree(tree), mItems(items) {}

    /// Writes the items of all rows below a row, whose own item is the `parentItem`-th (-1 at the top), from
    /// the `next`-th item on. Returns the place behind the last one.
    int Write(const Access::Children& children, int parentItem, unsigned level, int next) const {
        const std::uint32_t count = children.mCountOfLaidOut;
        for (std::uint32_t i = 0; i < count; ++i) {
            const int place = next++;
            QTreeViewItem& item = mItems[place] = {};
            item.index = mTree.mModel.createIndex(static_cast<int>(i), 0, children.mRows[i].get());
            item.parentItem = parentItem;
            item.level = level & 0xFFFF;
            item.hasMoreSiblings = i + 1 < count;
            if (children.mHoldsParents) next = WriteBelow(*children.mRows[i], place, level, next);
        }
        return next;
    }

    int WriteBelow(Row& row, int place, unsigned level, int next) const {
        if (!Access::MayHaveChildren(row)) return next;
        QTreeViewItem& item = mItems[place];
        item.expanded = row.IsOpen();
        item.hasChildren = true;
        if (!item.expanded) return next;
        if (const Access::Children* below = Access::FindChildren(row))
            next = Write(*below, place, level + 1, next);
        item.total = static_cast<unsigned>(next - place - 1) & 0xFFFFFFF;
        item.hasChildren = item.total > 0;
        return next;
    }

private:
    const host::UI_MultiColumnTree::TreeImpl& mTree;
    QTreeViewItem* mItems;
};

/// Null with another version of Qt than the one that this was compiled with.
QTreeViewPrivate* FindDataOf(QTreeView& view) {
    static const bool isVersionCompiledWith = std::string_view(qVersion()) == QT_VERSION_STR;
    return isVersionCompiledWith ? static_cast<QTreeViewPrivate*>(QObjectPrivate::get(&view)) : nullptr;
}

}  // namespace

bool LayOutRows(QTreeView& view, const host::UI_MultiColumnTree::TreeImpl& tree) {
    QTreeViewPrivate* found = FindDataOf(view);
    if (!found) return false;
    QTreeViewPrivate& data = *found;
    if (!data.customIndent) data.updateIndentationFromStyle();
    if (std::exchange(data.hasRemovedItems, false)) {
        const auto isGone = [](const QPersistentModelIndex& index) { return !index.isValid(); };
        erase_if(data.expandedIndexes, isGone);
    }
    data.lastViewedItem = 0;
    data.defaultItemHeight = tree.mRowPixels;
    data.viewItems.resize(static_cast<qsizetype>(tree.CountOfOpened()));
    if (const Access::Children* top = Access::FindChildren(*tree.mRoot))
        Layout(tree, data.viewItems.data()).Write(*top, -1, 0, 0);
    return true;
}

// The check of types would ask for what Qt does not export of the base of these data.
[[gnu::no_sanitize("vptr")]] bool PutOffLayout(QTreeView& view) {
    QTreeViewPrivate* data = FindDataOf(view);
    // Without the timer that the view starts when it sets this itself.
    if (data) data->delayedPendingLayout = true;
    return data != nullptr;
}

[[gnu::no_sanitize("vptr")]] bool TakeUpLayout(QTreeView& view) {
    QTreeViewPrivate* data = FindDataOf(view);
    return data && std::exchange(data->delayedPendingLayout, false);
}

}  // namespace desk
