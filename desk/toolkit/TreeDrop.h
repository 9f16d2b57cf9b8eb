#pragma once

#include <QPoint>
#include <memory>

#include "desk/core/edges/MainThread.h"
#include "desk/core/work/Lifetime.h"
#include "desk/toolkit/DropRest.h"
#include "host/toolkit/UI_MultiColumnTree.h"

class QMimeData;

namespace desk {

/// A tree as the target of drags. Each answers whether a drop is welcome. UI thread.
class TreeDrop {
public:
    explicit TreeDrop(host::UI_MultiColumnTree::TreeImpl& tree) : mTree(tree) {}
    ~TreeDrop();

    // What the pointer does; points are the viewport's.

    bool Enter(const QMimeData& data, bool isFromThisProcess, QPoint point);
    bool Move(QPoint point);
    void Leave();
    bool Drop(QPoint point);
    /// What is on the clipboard, dropped on `row` (empty for none) at once; false when it is not welcome there.
    bool Paste(const QMimeData& data, bool isFromThisProcess, const host::RowRef& row);
    /// The rows have been laid out anew. What has come under a pointer that rests is nothing the user meant.
    void RowsLaidOut();

    /// What the owner shows: `destination` lights up, or the whole tree for null; or nothing does.
    void ShowFeedback(host::UI_MultiColumnTreeRow* destination, bool show);
    bool IsFeedbackShown() const { return mShows; }
    const host::UI_MultiColumnTreeRow* GetDestination() const { return mDestination.get(); }

private:
    bool Ask(int action);
    void DropLater();
    bool IsOpeningWelcome() const;
    void OpenLater();
    /// Closes what the drag has opened, but for `keep` and the folders that it lies in.
    void CloseOpened(const host::UI_MultiColumnTreeRow* keep);
    void ScrollNearEdge();
    void ScrollStep();
    void StopScrolling();
    void Forget();

    host::UI_MultiColumnTree::TreeImpl& mTree;
    std::shared_ptr<const host::OS_ReceiveData> mData;
    host::RowRef mRow;
    QPoint mPoint;
    host::RowRef mDestination;
    bool mShows = false;
    /// Another row has come under the pointer since that moved last.
    bool mHasRowChanged = false;
    /// The folders that the drag has opened, in this order.
    host::RowVec mOpened;
    DropRest mRest;
    /// Counts on with each row under the pointer.
    unsigned mVisit = 0;
    MainThread::TimerID mScrolling = 0;
    int mStep = 0;
    Lifetime mLifetime;
};

}  // namespace desk
