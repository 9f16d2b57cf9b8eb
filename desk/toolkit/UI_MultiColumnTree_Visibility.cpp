#include <QPropertyAnimation>
#include <QScrollBar>
#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;
using Access = Row::Access;

namespace {

constexpr int kGlideMilliseconds = 180;
/// Looking for the visible rows has all rows laid out: the longer that takes, the less often.
constexpr std::chrono::milliseconds kFrame(16);
constexpr std::chrono::milliseconds kLongestWait(200);
/// Callbacks that change what is visible make it be found out anew, within reason.
constexpr int kMaximumRounds = 4;

}  // namespace

void TreeImpl::FlushLayout() {
    if (mView) mView->FlushLayout();
}

TreeImpl::Range TreeImpl::VisibleRange() {
    if (!mView || !mView->isVisible()) return {};
    FlushLayout();
    const int count = int(CountOfOpened());
    const int top = mView->verticalScrollBar()->value();
    const int height = mView->viewport()->height();
    const int first = top / mRowPixels;
    if (height <= 0 || first >= count) return {};
    return {first, std::min((top + height - 1) / mRowPixels, count - 1)};
}

void TreeImpl::UpdateVisibleRowsLater() {
    const auto wait = mNextVisibleUpdate - desk::GetServices().mMainThread->Now();
    RunLater(mVisibleLater, &TreeImpl::UpdateVisibleRowsIfPainting,
             std::chrono::ceil<std::chrono::milliseconds>(wait));
}

void TreeImpl::UpdateVisibleRowsIfPainting() {
    // While rows keep coming, the paint after the pause finds them.
    const bool isLeftToPaint = mBusy > 0 && mView && mView->IsPaused() && mView->isVisible();
    if (!isLeftToPaint) UpdateVisibleRows();
}

void TreeImpl::UpdateVisibleRows() {
    if (mIsUpdatingVisible) return UpdateVisibleRowsLater();
    const auto begin = desk::GetServices().mMainThread->Now();
    mIsUpdatingVisible = true;
    const RefPtr<UI_Node> keptAlive(mNode);
    bool hasChanged = true;
    for (int round = 0; round < kMaximumRounds && hasChanged; ++round) hasChanged = UpdateVisibleRowsOnce();
    mIsUpdatingVisible = false;
    const auto end = desk::GetServices().mMainThread->Now();
    mNextVisibleUpdate =
        end + std::clamp<std::chrono::steady_clock::duration>(3 * (end - begin), kFrame, kLongestWait);
    if (!mScrollWhenShown || !mView->isVisible()) return;
    const RowRef row = std::move(mScrollWhenShown);
    mScrollWhenShown.reset();
    if (!IsMine(row.get())) return;
    mScrollsToTopWhenShown ? ScrollToTop(*row) : ScrollIntoView(*row, false, 0, false);
}

bool TreeImpl::UpdateVisibleRowsOnce() {
    const Range range = VisibleRange();
    mFirstVisible = std::max(range.mFirst, 0);
    const std::vector<Row*> rows = OpenedRange(
        std::size_t(mFirstVisible), range.mLast < 0 ? 0 : std::size_t(range.mLast - mFirstVisible + 1));
    const RowVec now(rows.begin(), rows.end());
    if (now == mVisible) return false;
    const RowVec before = std::exchange(mVisible, now);
    std::unordered_set<const Row*> was;
    for (const RowRef& row : before) was.insert(row.get());
    for (const RowRef& row : before) Access::IsVisible(*row) = false;
    for (const RowRef& row : now) Access::IsVisible(*row) = true;
    RowVec changed;
    for (const RowRef& row : before) {
        if (Access::IsVisible(*row) || !IsMine(row.get())) continue;
        Access::CellsOf(*row).reset();
        changed.push_back(row);
    }
    for (const RowRef& row : now)
        if (!was.contains(row.get())) changed.push_back(row);
    for (const RowRef& row : changed)
        if (IsMine(row.get())) desk::Call(mCallbacks.mVisibilityChanged, row);
    return true;
}

bool TreeImpl::IsRowVisible(const Row& row) const {
    return IsMine(&row) && Access::IsVisible(const_cast<Row&>(row)) && mView && mView->isVisible();
}

void TreeImpl::HoldScrollPosition() {
    if (mHoldsScrollPosition || !mView) return;
    mHoldsScrollPosition = true;
    mHeldRow.reset();
    // At the very top the top is what stays, not the row that stands there.
    const int top = mView->verticalScrollBar()->value();
    const std::size_t first = std::size_t(std::max(top, 0) / mRowPixels);
    if (top <= 0) return;
    mHeldRow = RowRef(OpenedRow(first));
    mHeldOffset = double(top % mRowPixels) / mRowPixels;
}

void TreeImpl::RestoreScrollPosition() {
    if (!std::exchange(mHoldsScrollPosition, false)) return;
    RowRef row = std::move(mHeldRow);
    mHeldRow.reset();
    int index = -1;
    for (double offset = mHeldOffset; row && index < 0; row = row->GetParentRow(), offset = 0) {
        index = IndexOfOpened(row.get());
        if (index >= 0) mView->verticalScrollBar()->setValue(int(std::lround((index + offset) * mRowPixels)));
    }
}

void TreeImpl::ScrollIntoView(Row& row, bool animate, float margin, bool openAncestors) {
    if (!IsMine(&row)) return;
    const RowRef keptAlive(&row);
    if (openAncestors) {
        RowVec ancestors;
        for (RowRef above = row.GetParentRow(); above; above = above->GetParentRow())
            ancestors.push_back(above);
        for (auto above = ancestors.rbegin(); above != ancestors.rend(); ++above) SetOpen(**above, true);
    }
    if (!mView->isVisible()) {
        mScrollWhenShown = keptAlive;
        mScrollsToTopWhenShown = false;
        return;
    }
    const int index = IndexOfOpened(&row);
    if (index < 0) return;
    FlushLayout();
    QScrollBar* bar = mView->verticalScrollBar();
    const int space = int(std::lround(margin));
    const int top = index * mRowPixels - space;
    const int bottom = (index + 1) * mRowPixels + space - mView->viewport()->height();
    int target = bar->value();
    if (target < bottom) target = bottom;
    if (target > top) target = top;
    if (!animate) return bar->setValue(target);
    auto* glide = new QPropertyAnimation(bar, "value", bar);
    glide->setDuration(kGlideMilliseconds);
    glide->setEasingCurve(QEasingCurve::OutCubic);
    glide->setEndValue(std::clamp(target, bar->minimum(), bar->maximum()));
    glide->start(QAbstractAnimation::DeleteWhenStopped);
}

void TreeImpl::ScrollToTop(Row& row) {
    if (!IsMine(&row)) return;
    if (!mView->isVisible()) {
        mScrollWhenShown = RowRef(&row);
        mScrollsToTopWhenShown = true;
        return;
    }
    FlushLayout();
    const int index = IndexOfOpened(&row);
    if (index >= 0) mView->verticalScrollBar()->setValue(index * mRowPixels);
}

Row* TreeImpl::TopRow() {
    if (mScrollWhenShown && mScrollsToTopWhenShown) return mScrollWhenShown.get();
    FlushLayout();
    return OpenedRow(std::size_t(std::max(mView->verticalScrollBar()->value(), 0) / mRowPixels));
}

void TreeImpl::SetRowHeight(float height) {
    height = std::max(height, 1.0f);
    if (height == mRowHeight) return;
    mRowHeight = height;
    const int pixels = int(std::lround(height));
    if (pixels == mRowPixels) return;
    HoldScrollPosition();
    mRowPixels = pixels;
    for (const RowRef& row : mVisible)
        for (int column = 0; column < CountColumns(); ++column)
            if (Access::FindCellWithNodes(*row, unsigned(column))) FitCell(*row, column);
    mView->RowHeightChanged();
    UpdateVisibleRowsLater();
}

void TreeImpl::RedrawRow(const Row& row) {
    if (!IsRowVisible(row)) return;
    const auto found = std::find(mVisible.begin(), mVisible.end(), &row);
    if (found == mVisible.end()) return;
    const int y =
        (mFirstVisible + int(found - mVisible.begin())) * mRowPixels - mView->verticalScrollBar()->value();
    mView->viewport()->update(0, y, mView->viewport()->width(), mRowPixels);
    mView->AnnounceRowChanged(mModel.IndexOf(&row));
}

}  // namespace host
