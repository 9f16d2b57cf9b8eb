#include "desk/toolkit/TreeDrop.h"

#include <QScrollBar>
#include <algorithm>

#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/DragSource.h"
#include "desk/toolkit/ReceivedData.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"
#include "host/core/Localizer.h"

namespace desk {

namespace {

using Row = host::UI_MultiColumnTreeRow;

constexpr std::chrono::milliseconds kOpenAfter(1000);
constexpr std::chrono::milliseconds kScrollInterval(40);

}  // namespace

TreeDrop::~TreeDrop() {
    mLifetime.End();
    StopScrolling();
}

bool TreeDrop::Enter(const QMimeData& data, bool isFromThisProcess, QPoint point) {
    Forget();
    if (!IsSet(mTree.mCallbacks.mDropSupport)) return false;
    mData = Receive(data, isFromThisProcess);
    mPoint = point;
    mRow = host::RowRef(mTree.mView->RowAt(point));
    mRest.Restart();
    Ask(host::kDropAction_Entered);
    OpenLater();
    ScrollNearEdge();
    return mShows;
}

bool TreeDrop::Move(QPoint point) {
    if (!mData) return false;
    const bool mustAsk = point != mPoint && std::exchange(mHasRowChanged, false);
    mPoint = point;
    const host::RowRef row(mTree.mView->RowAt(point));
    if (row != mRow || mustAsk) {
        mRow = row;
        Ask(host::kDropAction_Moved);
        OpenLater();
    }
    ScrollNearEdge();
    return mShows;
}

void TreeDrop::Leave() {
    if (mData) Ask(host::kDropAction_Left);
    CloseOpened(nullptr);
    Forget();
}

void TreeDrop::RowsLaidOut() {
    if (!mData) return;
    host::RowRef row(mTree.mView->RowAt(mPoint));
    if (row == mRow) return;
    mRow = std::move(row);
    mHasRowChanged = true;
    ++mVisit;
    ShowFeedback(nullptr, false);
}

bool TreeDrop::Drop(QPoint point) {
    const bool isWelcome = Move(point);
    if (mHasRowChanged)
        TellUser(
            host::ZString("$$$/Desk/Tree/DropTargetMoved=Nothing was dropped: the target is no longer under "
                          "the pointer."));
    if (!isWelcome) {
        Leave();
        return false;
    }
    if (!mRest.HasRested()) {
        DropRest::TellTooQuick();
        Leave();
        return false;
    }
    NoteDropInThisProcess();
    DropLater();
    CloseOpened(mDestination.get());
    Forget();
    return true;
}

bool TreeDrop::Paste(const QMimeData& data, bool isFromThisProcess, const host::RowRef& row) {
    if (!IsSet(mTree.mCallbacks.mDropSupport)) return false;
    Forget();
    mData = Receive(data, isFromThisProcess);
    mRow = row;
    mPoint = mTree.mView->RectOf(row.get()).center();
    const bool isWelcome = Ask(host::kDropAction_Entered);
    isWelcome ? DropLater() : void(Ask(host::kDropAction_Left));
    Forget();
    return isWelcome;
}

/// Whoever drags waits for the end of the drag, and a drop may take long.
void TreeDrop::DropLater() {
    auto drop = [this, data = mData, row = mRow, point = mTree.mView->ToTreePoint(mPoint)] {
        if (row && !mTree.IsMine(row.get()))
            return TellUser(
                host::ZString("$$$/Desk/Tree/DropTargetWent=Nothing was dropped: the target is no "
                              "longer there."));
        host::UI_DropData dropped{data.get(), row, point};
        Call(mTree.mCallbacks.mDropSupport, host::kDropAction_Dropped, &dropped);
    };
    RunAfterDrag(mLifetime.Guard(std::move(drop)));
}

bool TreeDrop::Ask(int action) {
    const host::RowRef before = mDestination;
    const bool wasShown = std::exchange(mShows, false);
    const auto watch = mLifetime.Watch();
    host::UI_DropData data{mData.get(), mRow, mTree.mView->ToTreePoint(mPoint)};
    const bool isAnswered = Call(mTree.mCallbacks.mDropSupport, action, &data);
    if (watch.expired()) return false;
    mShows = mShows && isAnswered;
    if (mShows != wasShown || mDestination != before) mRest.Restart();
    mTree.mView->viewport()->update();
    return mShows;
}

void TreeDrop::ShowFeedback(Row* destination, bool show) {
    mShows = show && mData;
    mDestination = host::RowRef(mShows ? destination : nullptr);
    if (mTree.mView) mTree.mView->viewport()->update();
}

/// A folder that takes nothing keeps shut.
bool TreeDrop::IsOpeningWelcome() const {
    return mData && mShows && mRow && mRow == mDestination && !mRow->IsOpen() && mTree.IsMine(mRow.get()) &&
           Row::Access::MayHaveChildren(*mRow);
}

void TreeDrop::OpenLater() {
    ++mVisit;
    if (!IsOpeningWelcome()) return;
    auto open = [this, visit = mVisit] {
        if (visit != mVisit || !IsOpeningWelcome()) return;
        mOpened.push_back(mRow);
        mTree.SetOpen(*mRow, true);
    };
    GetServices().mMainThread->PostDelayed(mLifetime.Guard(std::move(open)), kOpenAfter);
}

void TreeDrop::CloseOpened(const Row* keep) {
    for (const host::RowRef& row : std::exchange(mOpened, {}))
        if (row.get() != keep && !(keep && keep->IsADescendent(*row)) && mTree.IsMine(row.get()))
            mTree.SetOpen(*row, false);
}

void TreeDrop::ScrollNearEdge() {
    const int height = mTree.mView->viewport()->height();
    const int margin = std::min(mTree.mRowPixels, height / 4);
    mStep = mPoint.y() < margin ? -1 : mPoint.y() >= height - margin ? 1 : 0;
    if (mStep == 0) return StopScrolling();
    if (mScrolling == 0)
        mScrolling =
            GetServices().mMainThread->StartTimer(kScrollInterval, mLifetime.Guard([this] { ScrollStep(); }));
}

void TreeDrop::ScrollStep() {
    QScrollBar& bar = *mTree.mView->verticalScrollBar();
    bar.setValue(bar.value() + mStep * mTree.mRowPixels / 2);
    Move(mPoint);
}

void TreeDrop::StopScrolling() {
    if (mScrolling != 0) GetServices().mMainThread->StopTimer(mScrolling);
    mScrolling = 0;
}

void TreeDrop::Forget() {
    StopScrolling();
    ++mVisit;
    mHasRowChanged = false;
    mOpened.clear();
    mData.reset();
    mRow.reset();
    ShowFeedback(nullptr, false);
}

}  // namespace desk
