#pragma once

#include <QAbstractItemModel>

#include "host/toolkit/UI_MultiColumnTree.h"

namespace desk {

/// A tree's rows as Qt's item views see them: the nodes are the rows themselves. Columns stand in the order in
/// which they were appended.
class TreeModel final : public QAbstractItemModel {
public:
    explicit TreeModel(host::UI_MultiColumnTree::TreeImpl& tree) : mTree(tree) {}

    static host::UI_MultiColumnTreeRow* RowOf(const QModelIndex& index) {
        return static_cast<host::UI_MultiColumnTreeRow*>(index.internalPointer());
    }
    /// The index of a row that is in the model; the invalid index for null.
    QModelIndex IndexOf(const host::UI_MultiColumnTreeRow* row, int column = 0) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    QModelIndex sibling(int row, int column, const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    /// What the owner says, else the whole text of a cell that is cut; empty for none.
    QVariant FindToolTip(host::UI_MultiColumnTreeRow& row, int column) const;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The tree changes its rows itself, and says so here.
    using QAbstractItemModel::beginInsertColumns;
    using QAbstractItemModel::beginInsertRows;
    using QAbstractItemModel::beginRemoveColumns;
    using QAbstractItemModel::beginRemoveRows;
    using QAbstractItemModel::beginResetModel;
    using QAbstractItemModel::changePersistentIndexList;
    using QAbstractItemModel::createIndex;
    using QAbstractItemModel::endInsertColumns;
    using QAbstractItemModel::endInsertRows;
    using QAbstractItemModel::endRemoveColumns;
    using QAbstractItemModel::endRemoveRows;
    using QAbstractItemModel::endResetModel;
    using QAbstractItemModel::persistentIndexList;

private:
    host::UI_MultiColumnTree::TreeImpl& mTree;
};

}  // namespace desk
