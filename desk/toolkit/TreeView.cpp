#include "desk/toolkit/TreeView.h"

#include <QAccessible>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include "desk/toolkit/BusySpinner.h"
#include "desk/toolkit/CellEditorImpl.h"
#include "desk/toolkit/RowLayout.h"
#include "desk/toolkit/TreeAccessible.h"
#include "desk/toolkit/TreeImpl.h"

namespace desk {

namespace {

/// All rows have one height; the view paints them itself.
class RowHeightDelegate : public QStyledItemDelegate {
public:
    RowHeightDelegate(host::UI_MultiColumnTree::TreeImpl& tree, QObject* parent)
        : QStyledItemDelegate(parent), mTree(tree) {}
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {0, mTree.mRowPixels};
    }

private:
    host::UI_MultiColumnTree::TreeImpl& mTree;
};

}  // namespace

TreeView::TreeView(host::UI_MultiColumnTree::TreeImpl& tree)
    : mTree(tree),
      mHeader(new TreeHeader(tree, this)),
      mSpinner(new BusySpinner(*this)),
      mEmptyButtons(new EmptyButtons(*viewport())),
      mDrop(tree) {
    InstallTreeAccessible();
    setItemDelegate(new RowHeightDelegate(tree, this));
    setHeader(mHeader);
    // Qt's own sorting is off, and takes clicks on the header away.
    mHeader->setSectionsClickable(true);
    setUniformRowHeights(true);
    setAnimated(false);
    setItemsExpandable(false);
    setExpandsOnDoubleClick(false);
    setAllColumnsShowFocus(true);
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    setAttribute(Qt::WA_MacShowFocusRect, false);
    viewport()->setMouseTracking(true);
    // Paints its own background, so that nothing is painted over rows that are not painted for a moment.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    for (const QScrollBar* bar : {verticalScrollBar(), horizontalScrollBar()})
        connect(bar, &QScrollBar::actionTriggered, this, &TreeView::EndPause);
    mHeader->FollowRowHeight();
    setModel(&tree.mModel);
}

TreeView::~TreeView() = default;

void TreeView::ScheduleLayout() {
    if (!IsPaused() || !PutOffLayout(*this)) scheduleDelayedItemsLayout();
}

void TreeView::FlushLayout() {
    if (!mIsPainting) executeDelayedItemsLayout();
}

void TreeView::RowHeightChanged() {
    EndPause();
    mHeader->FollowRowHeight();
    ScheduleLayout();
}

void TreeView::SetExpanded(const QModelIndex& index, bool expanded) {
    // With a layout pending the view only takes note; otherwise each row is looked for and laid out alone.
    ScheduleLayout();
    setExpanded(index, expanded);
}

void TreeView::AnnounceRowChanged(const QModelIndex& index) {
    if (!QAccessible::isActive()) return;
    Q_EMIT model()->dataChanged(index, index.siblingAtColumn(model()->columnCount() - 1),
                                {Qt::AccessibleTextRole});
}

void TreeView::doItemsLayout() {
    const auto begin = Clock::now();
    if (LayOutRows(*this, mTree)) {
        // What the base of the base does after it.
        QAbstractItemView::doItemsLayout();
        mHeader->doItemsLayout();
    } else {
        QTreeView::doItemsLayout();
    }
    mLayoutTime = Clock::now() - begin;
    mTree.RestoreScrollPosition();
    mTree.mCellEditor.GetImpl().Follow();
    mDrop.RowsLaidOut();
}

void TreeView::scrollContentsBy(int dx, int dy) {
    QTreeView::scrollContentsBy(dx, dy);
    mTree.mCellEditor.GetImpl().Follow();
    mTree.UpdateVisibleRowsLater();
}

void TreeView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    mHeader->FollowViewWidth();
    mSpinner->Place();
    mTree.UpdateVisibleRowsLater();
}

void TreeView::showEvent(QShowEvent* event) {
    QTreeView::showEvent(event);
    mTree.UpdateVisibleRowsLater();
}

void TreeView::hideEvent(QHideEvent* event) {
    QTreeView::hideEvent(event);
    mTree.UpdateVisibleRowsLater();
}

void TreeView::changeEvent(QEvent* event) {
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::EnabledChange) viewport()->update();
}

void TreeView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    // The base looks for each range among all rows to find out what to paint anew.
    if (QAccessible::isActive()) QTreeView::selectionChanged(selected, deselected);
    mTree.SelectionChanged(selected, deselected);
    viewport()->update();
}

}  // namespace desk
