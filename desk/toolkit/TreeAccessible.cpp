#include "desk/toolkit/TreeAccessible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <map>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/toolkit/RowAccess.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace desk {
namespace {

using Row = host::UI_MultiColumnTreeRow;

QAccessibleInterface* AccessibleOf(TreeView& view) {
    return QAccessible::queryAccessibleInterface(&view);
}

/// What cells and headings have in common: they have no object and no children.
class Part : public QAccessibleInterface {
public:
    Part(TreeView& view, int column) : mView(view), mColumn(column) {}

    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return AccessibleOf(mView)->window(); }
    QAccessibleInterface* parent() const override { return AccessibleOf(mView); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}
    /// Among the children of the tree; -1 while it does not show.
    virtual int IndexInTree() const = 0;

protected:
    host::UI_MultiColumnTree::TreeImpl& Tree() const { return mView.GetTree(); }
    /// Where the column stands in the window; as wide and as high as the rest of `rect`, of the viewport.
    QRect ToScreen(QRect rect) const {
        rect.setLeft(mView.header()->sectionViewportPosition(mColumn));
        rect.setWidth(mView.header()->sectionSize(mColumn));
        return rect.translated(mView.viewport()->mapToGlobal(QPoint()));
    }

    TreeView& mView;
    const int mColumn;
};

class Heading final : public Part {
public:
    using Part::Part;

    bool isValid() const override { return mColumn < Tree().CountColumns(); }
    QAccessible::Role role() const override { return QAccessible::ColumnHeader; }
    QAccessible::State state() const override { return {}; }
    QRect rect() const override {
        return ToScreen({0, -mView.header()->height(), 0, mView.header()->height()});
    }
    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name) return {};
        return mView.model()->headerData(mColumn, Qt::Horizontal, Qt::AccessibleTextRole).toString();
    }
    int IndexInTree() const override { return mColumn; }
};

class Cell final : public Part, public QAccessibleTableCellInterface, public QAccessibleActionInterface {
public:
    Cell(TreeView& view, host::RowRef row, int column) : Part(view, column), mRow(std::move(row)) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TableCellInterface) return static_cast<QAccessibleTableCellInterface*>(this);
        if (type == QAccessible::ActionInterface) return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }
    bool isValid() const override { return rowIndex() >= 0; }
    QAccessible::Role role() const override { return QAccessible::TreeItem; }
    QAccessible::State state() const override;
    QRect rect() const override { return ToScreen(mView.RectOf(mRow.get())); }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name && isValid() ? Index().data(Qt::AccessibleTextRole).toString()
                                                      : QString();
    }
    int IndexInTree() const override {
        return isValid() ? (rowIndex() + 1) * Tree().CountColumns() + mColumn : -1;
    }

    bool isSelected() const override { return Row::Access::IsSelected(*mRow); }
    QList<QAccessibleInterface*> columnHeaderCells() const override { return {parent()->child(mColumn)}; }
    QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
    int columnIndex() const override { return mColumn; }
    int rowIndex() const override { return Tree().IndexOfOpened(mRow.get()); }
    int columnExtent() const override { return 1; }
    int rowExtent() const override { return 1; }
    QAccessibleInterface* table() const override { return parent(); }

    QStringList actionNames() const override {
        return IsFolder() ? QStringList{toggleAction(), pressAction()} : QStringList{pressAction()};
    }
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    QModelIndex Index() const { return Tree().mModel.IndexOf(mRow.get(), mColumn); }
    bool IsFolder() const { return Row::Access::MayHaveChildren(*mRow); }

    /// Keeps the row's address from being given to another one.
    const host::RowRef mRow;
};

QAccessible::State Cell::state() const {
    QAccessible::State state;
    state.invalid = !isValid();
    if (state.invalid) return state;
    state.selectable = state.focusable = true;
    state.multiSelectable = state.extSelectable = mView.selectionMode() == QAbstractItemView::ExtendedSelection;
    state.selected = isSelected();
    state.focused = mView.hasFocus() && mView.currentIndex() == Index();
    state.expandable = IsFolder();
    state.expanded = mRow->IsOpen();
    state.collapsed = state.expandable && !state.expanded;
    state.offscreen = !mView.viewport()->rect().intersects(mView.RectOf(mRow.get()));
    return state;
}

/// Later: what is done may take the cell away.
void Cell::doAction(const QString& name) {
    const bool toggles = IsFolder() && name == toggleAction();
    if (!isValid() || (!toggles && name != pressAction())) return;
    auto act = [view = &mView, row = mRow, toggles] {
        if (view->GetTree().IndexOfOpened(row.get()) < 0) return;
        toggles ? view->ToggleByUser(*row, !row->IsOpen()) : view->SelectByUser(*row);
    };
    GetServices().mMainThread->Post(Tree().mLifetime.Guard(std::move(act)));
}

class TreeAccessible final : public QAccessibleWidget, public QAccessibleTableInterface {
public:
    explicit TreeAccessible(TreeView& view) : QAccessibleWidget(&view, QAccessible::Tree), mView(view) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::TableInterface) return static_cast<QAccessibleTableInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    int childCount() const override { return (rowCount() + 1) * columnCount(); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || columnCount() == 0) return nullptr;
        return index < columnCount() ? Find(nullptr, index)
                                     : cellAt(index / columnCount() - 1, index % columnCount());
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        const auto* part = dynamic_cast<const Part*>(child);
        return part ? part->IndexInTree() : -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override {
        const QModelIndex current = mView.currentIndex();
        return current.isValid() ? Find(TreeModel::RowOf(current), current.column()) : nullptr;
    }

    QAccessibleInterface* caption() const override { return nullptr; }
    QAccessibleInterface* summary() const override { return nullptr; }
    QAccessibleInterface* cellAt(int row, int column) const override {
        if (row < 0 || row >= rowCount() || column < 0 || column >= columnCount()) return nullptr;
        return Find(Tree().OpenedRow(std::size_t(row)), column);
    }
    QString columnDescription(int column) const override {
        return mView.model()->headerData(column, Qt::Horizontal, Qt::AccessibleTextRole).toString();
    }
    QString rowDescription(int) const override { return {}; }
    int columnCount() const override { return Tree().CountColumns(); }
    int rowCount() const override { return int(Tree().CountOfOpened()); }

    int selectedCellCount() const override { return selectedRowCount() * columnCount(); }
    QList<QAccessibleInterface*> selectedCells() const override;
    int selectedRowCount() const override { return int(selectedRows().size()); }
    QList<int> selectedRows() const override;
    int selectedColumnCount() const override { return 0; }
    QList<int> selectedColumns() const override { return {}; }
    bool isRowSelected(int row) const override {
        const auto* cell = dynamic_cast<const Cell*>(cellAt(row, 0));
        return cell && cell->isSelected();
    }
    bool isColumnSelected(int) const override { return false; }
    bool selectRow(int row) override { return ChangeSelection(row, QItemSelectionModel::Select); }
    bool unselectRow(int row) override { return ChangeSelection(row, QItemSelectionModel::Deselect); }
    bool selectColumn(int) override { return false; }
    bool unselectColumn(int) override { return false; }

    /// Rows that have left the tree are let go.
    void modelChange(QAccessibleTableModelChangeEvent*) override {
        std::erase_if(mParts, [this](const auto& part) {
            const bool isGone = part.first.first && !Tree().IsMine(part.first.first);
            if (isGone) QAccessible::deleteAccessibleInterface(part.second);
            return isGone;
        });
    }

protected:
    ~TreeAccessible() override {
        for (const auto& [key, id] : mParts) QAccessible::deleteAccessibleInterface(id);
    }

private:
    host::UI_MultiColumnTree::TreeImpl& Tree() const { return mView.GetTree(); }
    /// The heading of the column for a null row.
    QAccessibleInterface* Find(Row* row, int column) const;
    bool ChangeSelection(int row, QItemSelectionModel::SelectionFlag change);

    TreeView& mView;
    mutable std::map<std::pair<const Row*, int>, QAccessible::Id> mParts;
};

QAccessibleInterface* TreeAccessible::Find(Row* row, int column) const {
    const auto [part, isNew] = mParts.try_emplace({row, column}, 0);
    if (!isNew) return QAccessible::accessibleInterface(part->second);
    QAccessibleInterface* made = nullptr;
    if (row)
        made = new Cell(mView, host::RowRef(row), column);
    else
        made = new Heading(mView, column);
    part->second = QAccessible::registerAccessibleInterface(made);
    return made;
}

QAccessibleInterface* TreeAccessible::childAt(int x, int y) const {
    const QPoint point = mView.viewport()->mapFromGlobal(QPoint(x, y));
    const int column = mView.header()->logicalIndexAt(point.x());
    if (column < 0 || !mView.rect().contains(mView.mapFromGlobal(QPoint(x, y)))) return nullptr;
    if (point.y() < 0) return Find(nullptr, column);
    Row* row = mView.RowAt(point);
    return row ? Find(row, column) : nullptr;
}

QList<QAccessibleInterface*> TreeAccessible::selectedCells() const {
    QList<QAccessibleInterface*> cells;
    for (const int row : selectedRows())
        for (int column = 0; column < columnCount(); ++column) cells << cellAt(row, column);
    return cells;
}

QList<int> TreeAccessible::selectedRows() const {
    QList<int> rows;
    for (const host::RowRef& row : Tree().SelectedRowVec())
        if (const int index = Tree().IndexOfOpened(row.get()); index >= 0) rows << index;
    return rows;
}

bool TreeAccessible::ChangeSelection(int row, QItemSelectionModel::SelectionFlag change) {
    if (row < 0 || row >= rowCount()) return false;
    mView.selectionModel()->select(Tree().mModel.IndexOf(Tree().OpenedRow(std::size_t(row))),
                                   change | QItemSelectionModel::Rows);
    return true;
}

QAccessibleInterface* Make(const QString&, QObject* object) {
    auto* view = dynamic_cast<TreeView*>(object);
    return view ? new TreeAccessible(*view) : nullptr;
}

}  // namespace

void InstallTreeAccessible() {
    QAccessible::installFactory(Make);
}

}  // namespace desk
