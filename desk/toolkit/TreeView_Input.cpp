#include <QApplication>
#include <QContextMenuEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <algorithm>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/KeyTable.h"
#include "desk/toolkit/ModKeys.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"
#include "host/toolkit/UI_KeyboardEvent.h"

namespace desk {

using Row = host::UI_MultiColumnTreeRow;
using Access = Row::Access;

host::Point TreeView::ToTreePoint(const QPoint& point) const {
    const QPoint inTree = viewport()->mapTo(this, point);
    return {inTree.x(), inTree.y()};
}

Row* TreeView::RowAt(const QPoint& point) const {
    const int y = point.y() + verticalScrollBar()->value();
    return y >= 0 ? mTree.OpenedRow(std::size_t(y / mTree.mRowPixels)) : nullptr;
}

QRect TreeView::RectOf(const Row* row) const {
    const int index = row ? mTree.IndexOfOpened(row) : -1;
    if (index < 0) return {};
    return {0, index * mTree.mRowPixels - verticalScrollBar()->value(), viewport()->width(), mTree.mRowPixels};
}

Row* TreeView::TriangleAt(const QPoint& point) const {
    Row* row = RowAt(point);
    if (!row || !Access::MayHaveChildren(*row) || mTree.CountColumns() == 0) return nullptr;
    // All of the level's indentation counts: the triangle itself is small.
    const double left = mHeader->sectionViewportPosition(0) + mTree.IndentationWidth() * mTree.DepthOf(*row);
    const double right = mTree.CellRect(*row, 0, QRect(0, 0, 0, mTree.mRowPixels)).left();
    return point.x() >= left && point.x() < right ? row : nullptr;
}

void TreeView::Hover(Row* row) {
    if (row == mHovered) return;
    viewport()->update(RectOf(mHovered));
    mHovered = row;
    viewport()->update(RectOf(mHovered));
}

bool TreeView::viewportEvent(QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::MouseButtonPress || type == QEvent::Wheel || type == QEvent::Resize) EndPause();
    if (event->type() == QEvent::MouseMove) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        Hover(mouse->buttons() == Qt::NoButton ? RowAt(mouse->position().toPoint()) : nullptr);
    } else if (event->type() == QEvent::Leave) {
        Hover(nullptr);
    }
    return QTreeView::viewportEvent(event);
}

void TreeView::ToggleByUser(Row& row, bool open) {
    const bool isDeep = host::GetCurrentModKeys() & host::kModKey_Alt;
    if (!Access::MayHaveChildren(row) || (row.IsOpen() == open && !isDeep)) return;
    const host::RowRef keptAlive(&row);
    mTree.SetOpen(row, open);
    if (IsSet(mTree.mCallbacks.mDisclosureChanged) && mTree.IsMine(&row))
        Call(mTree.mCallbacks.mDisclosureChanged, keptAlive, open);
    else if (isDeep)
        SetAllBelowOpen(row, open);
}

void TreeView::SetAllBelowOpen(Row& row, bool open) {
    const host::RowVec children(row.GetChildRows());
    for (const host::RowRef& child : children) {
        if (open) mTree.SetOpen(*child, true);
        SetAllBelowOpen(*child, open);
        if (!open) mTree.SetOpen(*child, false);
    }
}

void TreeView::mousePressEvent(QMouseEvent* event) {
    FlushLayout();
    Row* row = event->button() == Qt::LeftButton ? TriangleAt(event->position().toPoint()) : nullptr;
    const host::RefPtr<host::UI_Node> keptAlive(mTree.mNode);
    if (!row) {
        TellPressed(*event);
        QTreeView::mousePressEvent(event);
        return PrepareDrag(*event);
    }
    mHasPressedTriangle = true;
    ToggleByUser(*row, !row->IsOpen());
}

void TreeView::mouseMoveEvent(QMouseEvent* event) {
    if (mRowToDrag && (event->buttons() & Qt::LeftButton)) {
        if (MayDragNow(*event)) Drag(*event);
    } else if (!mHasPressedTriangle) {
        QTreeView::mouseMoveEvent(event);
    }
}

void TreeView::mouseReleaseEvent(QMouseEvent* event) {
    mRowToDrag.reset();
    if (std::exchange(mHasPressedTriangle, false)) return;
    const host::RefPtr<host::UI_Node> keptAlive(mTree.mNode);
    const QPoint point = event->position().toPoint();
    QTreeView::mouseReleaseEvent(event);
    if (std::exchange(mHasToldPress, false) && event->button() == Qt::LeftButton)
        Call(mTree.mCallbacks.mSingleClickUp, host::RowRef(RowAt(point)), ToTreePoint(point));
}

void TreeView::focusInEvent(QFocusEvent* event) {
    mHasFocusByPress = event->reason() == Qt::MouseFocusReason;
    QTreeView::focusInEvent(event);
}

void TreeView::TellPressed(const QMouseEvent& event) {
    const bool givesKeyboard = std::exchange(mHasFocusByPress, false);
    const bool isPlain = event.button() == Qt::LeftButton && event.modifiers() == Qt::NoModifier;
    const QPoint point = event.position().toPoint();
    const host::RowRef row(isPlain && !givesKeyboard ? RowAt(point) : nullptr);
    mHasToldPress = row.get() != nullptr;
    if (row) Call(mTree.mCallbacks.mSingleClickDown, row, ToTreePoint(point));
}

void TreeView::mouseDoubleClickEvent(QMouseEvent* event) {
    FlushLayout();
    const QPoint point = event->position().toPoint();
    mHasToldPress = false;
    if (event->button() != Qt::LeftButton) return QTreeView::mousePressEvent(event);
    if (TriangleAt(point)) return mousePressEvent(event);
    const host::RowRef row(RowAt(point));
    if (!row) return QTreeView::mousePressEvent(event);
    const host::RefPtr<host::UI_Node> keptAlive(mTree.mNode);
    Call(mTree.mCallbacks.mDoubleClicked, row, ToTreePoint(point));
}

void TreeView::contextMenuEvent(QContextMenuEvent* event) {
    FlushLayout();
    host::RowRef row;
    QPoint point = event->pos();
    if (event->reason() == QContextMenuEvent::Keyboard) {
        row = RowForKeyboard();
        if (row) mTree.ScrollIntoView(*row, false, 0, false);
        point = row ? mTree.CellRect(*row, 0, RectOf(row.get())).bottomLeft().toPoint()
                    : viewport()->rect().center();
    } else {
        row = RowAt(point);
    }
    const host::RefPtr<host::UI_Node> keptAlive(mTree.mNode);
    event->setAccepted(Call(mTree.mCallbacks.mContextMenu, row, ToTreePoint(point)));
}

Row* TreeView::RowForKeyboard() const {
    Row* current = mTree.CurrentRow();
    if (current && Access::IsSelected(*current)) return current;
    return mTree.LastSelected();
}

void TreeView::SelectByUser(Row& row) {
    mTree.Select(&row, true, true, true);
}

bool TreeView::HandleTreeKey(int key, Row& current) {
    const bool mayOpen = Access::MayHaveChildren(current);
    const bool isDeep = host::GetCurrentModKeys() & host::kModKey_Alt;
    switch (key) {
        case Qt::Key_Right:
            if (mayOpen && (isDeep || !current.IsOpen()))
                ToggleByUser(current, true);
            else if (current.IsOpen() && mTree.CountOfLaidOutChildren(&current) > 0)
                SelectByUser(*current.GetChildRows().front());
            return true;
        case Qt::Key_Left:
            if (mayOpen && (isDeep || current.IsOpen()))
                ToggleByUser(current, false);
            else if (const host::RowRef above = current.GetParentRow())
                SelectByUser(*above);
            return true;
        case Qt::Key_Plus:
            ToggleByUser(current, true);
            return true;
        case Qt::Key_Minus:
            ToggleByUser(current, false);
            return true;
        case Qt::Key_Asterisk: {
            const ImpliedModKeys alt(host::kModKey_Alt);
            ToggleByUser(current, true);
            return true;
        }
        case Qt::Key_Return:
        case Qt::Key_Enter:
            TellDoubleClicked();
            return true;
        default:
            return false;
    }
}

/// The key that asks for a context menu where no menu key does.
bool TreeView::HandleMenuKey(const QKeyEvent& event) {
    if (event.key() != Qt::Key_F10 || event.modifiers() != Qt::ShiftModifier) return false;
    const QPoint point = viewport()->rect().center();
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, point, viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(viewport(), &menu);
    return true;
}

bool TreeView::HandleByOwner(const QKeyEvent& event) {
    const auto code = KeyTable::Instance().FindCode(event.key());
    const bool isPlain = !(event.modifiers() & ~Qt::KeypadModifier);
    return code && isPlain && mTree.OfferKey(host::UI_KeyboardEvent(*code, host::GetCurrentModKeys()));
}

/// Opens in every key table.
bool TreeView::HandleOpenKey(const QKeyEvent& event) {
    const bool isKey =
        event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter || event.key() == Qt::Key_Down;
    if (!isKey || (event.modifiers() & ~Qt::KeypadModifier) != Qt::ControlModifier) return false;
    TellDoubleClicked();
    return true;
}

bool TreeView::HandleClipboardKey(const QKeyEvent& event) {
    if (event.modifiers() != Qt::ControlModifier) return false;
    if (event.key() == Qt::Key_X)
        Cut();
    else if (event.key() == Qt::Key_V)
        Paste();
    else
        return false;
    return true;
}

void TreeView::TellDoubleClicked() {
    if (const host::RowRef row{RowForKeyboard()})
        Call(mTree.mCallbacks.mDoubleClicked, row, ToTreePoint(RectOf(row.get()).center()));
}

void TreeView::keyPressEvent(QKeyEvent* event) {
    if (!mTree.mHearsKeys) return event->ignore();
    EndPause();
    FlushLayout();
    const host::RefPtr<host::UI_Node> keptAlive(mTree.mNode);
    if (HandleMenuKey(*event) || HandleOpenKey(*event) || HandleClipboardKey(*event) || HandleByOwner(*event))
        return event->accept();
    const host::RowRef current(mTree.CurrentRow());
    const bool isPlain = !(event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier));
    if (current && isPlain && HandleTreeKey(event->key(), *current)) return event->accept();
    QTreeView::keyPressEvent(event);
}

QItemSelectionModel::SelectionFlags TreeView::selectionCommand(const QModelIndex& index,
                                                               const QEvent* event) const {
    const auto command = QTreeView::selectionCommand(index, event);
    if (!index.isValid() && !(mTree.mDeselectsOnEmptyClick && mTree.mSupportsNoneSelected))
        return QItemSelectionModel::NoUpdate;
    const bool couldEmpty = command & (QItemSelectionModel::Toggle | QItemSelectionModel::Deselect);
    if (!mTree.mSupportsNoneSelected && couldEmpty && mTree.mSelected.Count() == 1 &&
        mTree.LastSelected() == TreeModel::RowOf(index))
        return QItemSelectionModel::NoUpdate;
    return command;
}

void TreeView::selectAll() {
    if (selectionMode() != ExtendedSelection) return;
    mTree.SelectOpened([](const host::RowRef&) { return true; });
}

void TreeView::keyboardSearch(const QString& typed) {
    if (!mSinceTyped.isValid() || mSinceTyped.hasExpired(QApplication::keyboardInputInterval())) mTyped.clear();
    mSinceTyped.start();
    const bool isNew = mTyped.isEmpty();
    mTyped += typed;
    const std::vector<Row*> rows = mTree.AllOpened();
    if (rows.empty() || mTree.CountColumns() == 0) return;
    // The same letter over and over goes from one such name to the next.
    const bool isRepeated = mTyped.size() > 1 && mTyped.count(mTyped[0]) == mTyped.size();
    const QString wanted = isRepeated ? mTyped.left(1) : mTyped;
    const int current = mTree.IndexOfOpened(mTree.CurrentRow());
    const std::size_t start =
        std::size_t(std::max(current, 0)) + ((isNew || isRepeated) && current >= 0 ? 1 : 0);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Row& row = *rows[(start + i) % rows.size()];
        if (mTree.IsMine(&row) && mTree.NameOf(row).startsWith(wanted, Qt::CaseInsensitive))
            return SelectByUser(row);
    }
}

}  // namespace desk
