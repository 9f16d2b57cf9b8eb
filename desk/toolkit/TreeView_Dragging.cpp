#include <QApplication>
#include <QDragEnterEvent>
#include <QMouseEvent>

#include "desk/core/edges/Services.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/DragSource.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace desk {

namespace {

/// A press that is to be a click is often not quite still.
constexpr std::chrono::milliseconds kHoldBeforeDrag(150);

}  // namespace

void TreeView::PrepareDrag(const QMouseEvent& event) {
    mRowToDrag.reset();
    if (event.button() != Qt::LeftButton || !IsSet(mTree.mCallbacks.mRowsDragged)) return;
    mPressPoint = event.position().toPoint();
    mPressTime = GetServices().mMainThread->Now();
    mRowToDrag = host::RowRef(RowAt(mPressPoint));
    if (mRowToDrag && !Row::Access::IsSelected(*mRowToDrag)) mRowToDrag.reset();
}

bool TreeView::MayDragNow(const QMouseEvent& event) const {
    const int distance = (event.position().toPoint() - mPressPoint).manhattanLength();
    return distance >= QApplication::startDragDistance() &&
           GetServices().mMainThread->Now() - mPressTime >= kHoldBeforeDrag;
}

void TreeView::Drag(const QMouseEvent& event) {
    const host::RowRef row = std::move(mRowToDrag);
    mRowToDrag.reset();
    mHasToldPress = false;
    if (!mTree.IsMine(row.get()) || !Row::Access::IsSelected(*row)) return;
    const host::RefPtr<host::UI_Node> keptAlive(mTree.mNode);
    host::OS_Event::Impl impl{viewport()};
    Call(mTree.mCallbacks.mRowsDragged,
         host::UI_MouseEvent(host::OS_Event(impl), ToTreePoint(event.position().toPoint())));
}

void TreeView::dragEnterEvent(QDragEnterEvent* event) {
    EndPause();
    FlushLayout();
    const bool isWelcome =
        mDrop.Enter(*event->mimeData(), event->source() != nullptr, event->position().toPoint());
    // Accepted in any case, so that it is told how the pointer moves on.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (!isWelcome) event->setDropAction(Qt::IgnoreAction);
}

void TreeView::dragMoveEvent(QDragMoveEvent* event) {
    FlushLayout();
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(mDrop.Move(event->position().toPoint()));
}

void TreeView::dragLeaveEvent(QDragLeaveEvent*) {
    mDrop.Leave();
}

void TreeView::dropEvent(QDropEvent* event) {
    FlushLayout();
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(mDrop.Drop(event->position().toPoint()));
}

}  // namespace desk
