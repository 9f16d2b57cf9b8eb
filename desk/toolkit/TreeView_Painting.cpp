#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/DrawbotImpl.h"
#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/RowLayout.h"
#include "desk/toolkit/ShapedText.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace desk {

using Access = host::UI_MultiColumnTreeRow::Access;

namespace {

/// The entry of the host's colour table for rows of panels.
constexpr int kPanelRowColor = 277;
/// A cell narrower than this many row heights may be too narrow for its nodes, and is cut.
constexpr int kRoomyCell = 4;
/// Around the text of an empty tree.
constexpr int kEmptyMargin = 16;
/// From here on painting pauses after a layout. While more is awaited it does so after any.
constexpr std::chrono::milliseconds kLongLayout(12);
/// So many times as long as the layout took nothing is painted, and no less than a frame.
constexpr int kPausePerLayout = 4;
constexpr std::chrono::milliseconds kFrame(16);
constexpr std::chrono::milliseconds kLongestPause(200);

QColor WithAlpha(ThemeColor color, int alpha) {
    QColor result = Theme::Color(color);
    result.setAlpha(alpha);
    return result;
}

QColor TextColor(bool isName, bool isSelected, bool isEnabled) {
    if (!isEnabled) return Theme::Color(ThemeColor::DisabledText);
    if (isSelected) return WithAlpha(ThemeColor::SelectionText, isName ? 255 : 190);
    return Theme::Color(isName ? ThemeColor::Text : ThemeColor::SecondaryText);
}

}  // namespace

void TreeView::paintEvent(QPaintEvent* event) {
    FlushLayout();
    mTree.UpdateVisibleRows();
    FlushLayout();
    QPainter(viewport()).fillRect(event->rect(), Theme::Color(ThemeColor::TreeBackground));
    const bool wasPainting = std::exchange(mIsPainting, true);
    QTreeView::paintEvent(event);
    mIsPainting = wasPainting;
    PaintEmptyText();
    if (mDrop.IsFeedbackShown() && !mDrop.GetDestination()) {
        QPainter painter(viewport());
        PaintDropTarget(painter, viewport()->rect());
    }
    const auto time = std::exchange(mLayoutTime, {});
    if (time > (mTree.mBusy > 0 ? Clock::duration::zero() : kLongLayout)) PausePainting(time);
}

/// Rows that keep coming are laid out for each paint: the longer that takes, the less often they are painted.
void TreeView::PausePainting(Clock::duration layoutTime) {
    const auto pause = std::chrono::duration_cast<std::chrono::milliseconds>(kPausePerLayout * layoutTime);
    mPause.start(int(std::clamp(pause, kFrame, kLongestPause).count()), this);
    viewport()->setUpdatesEnabled(false);
}

void TreeView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != mPause.timerId()) return QTreeView::timerEvent(event);
    EndPause();
}

void TreeView::EndPause() {
    if (!IsPaused()) return;
    mPause.stop();
    viewport()->setUpdatesEnabled(true);
    if (TakeUpLayout(*this)) scheduleDelayedItemsLayout();
    mTree.UpdateVisibleRowsLater();
}

void TreeView::PaintEmptyText() {
    if (!mTree.ShowsEmptyText()) return mEmptyButtons->FollowLater(false, 0);
    const int rows = int(mTree.CountOfOpened()) * mTree.mRowPixels;
    QPainter painter(viewport());
    painter.setPen(Theme::Color(ThemeColor::SecondaryText));
    painter.setFont(font());
    QRect text;
    painter.drawText(
        viewport()->rect().adjusted(kEmptyMargin, rows + kEmptyMargin, -kEmptyMargin, -kEmptyMargin),
        Qt::AlignCenter | Qt::TextWordWrap, mTree.mEmptyText, &text);
    mEmptyButtons->FollowLater(true, text.bottom() + kEmptyMargin);
}

void TreeView::PaintDropTarget(QPainter& painter, const QRect& rect) const {
    painter.fillRect(rect, WithAlpha(ThemeColor::Accent, 40));
    painter.setPen(QPen(Theme::Color(ThemeColor::Accent), 2));
    painter.drawRect(rect.adjusted(1, 1, -1, -1));
}

void TreeView::drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    Row& row = *TreeModel::RowOf(index);
    PaintBackground(*painter, option.rect, row);
    for (int column = 0; column < mTree.CountColumns(); ++column) {
        const int x = mHeader->sectionViewportPosition(column);
        if (x < viewport()->width() && x + mHeader->sectionSize(column) > 0)
            PaintCell(*painter, option.rect, row, column);
    }
    PaintTriangle(*painter, option.rect, row);
    if (mDrop.IsFeedbackShown() && mDrop.GetDestination() == &row) PaintDropTarget(*painter, option.rect);
    PaintLines(*painter, option.rect);
    if (hasFocus() && currentIndex().internalPointer() == &row && !Access::IsSelected(row)) {
        painter->setPen(Theme::Color(ThemeColor::Accent));
        painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
    }
}

void TreeView::PaintBackground(QPainter& painter, const QRect& rect, Row& row) const {
    if (row.GetBackgroundColorID() == kPanelRowColor)
        painter.fillRect(rect, Theme::Color(ThemeColor::TreeBackground));
    if (Access::IsSelected(row)) {
        const bool hasColor = IsSet(mTree.mCallbacks.mSelectionColor);
        const bool isPanelRow =
            hasColor && Call(mTree.mCallbacks.mSelectionColor, host::RowRef(&row)) == kPanelRowColor;
        painter.fillRect(rect, Theme::Color(isPanelRow ? ThemeColor::TreeBackground : ThemeColor::Selection));
    } else if (&row == mHovered) {
        painter.fillRect(rect, WithAlpha(ThemeColor::SecondaryText, 22));
    }
}

void TreeView::PaintCell(QPainter& painter, const QRect& rect, Row& row, int column) const {
    const QRectF cellRect = mTree.CellRect(row, column, rect);
    if (cellRect.width() <= 0) return;
    const QColor color = TextColor(column == 0, Access::IsSelected(row), isEnabled());
    if (host::UI_Container* cell = Access::FindCellWithNodes(row, unsigned(column))) {
        mTree.FitCell(row, column);
        painter.save();
        if (cellRect.width() < kRoomyCell * rect.height()) painter.setClipRect(cellRect, Qt::IntersectClip);
        painter.translate(cellRect.topLeft());
        PaintLightNode(*cell, {painter, color});
        painter.restore();
    } else if (IsSet(mTree.mCallbacks.mDrawCell)) {
        host::Drawbot::Impl impl{&painter, color, 0};
        host::Drawbot drawbot(impl);
        Call(mTree.mCallbacks.mDrawCell, drawbot, host::RowRef(&row), unsigned(mTree.PositionOfColumn(column)),
             host::RectT<float>{float(cellRect.x()), float(cellRect.y()), float(cellRect.width()),
                                float(cellRect.height())});
    }
}

void TreeView::PaintTriangle(QPainter& painter, const QRect& rect, Row& row) const {
    if (!Access::MayHaveChildren(row) || mTree.CountColumns() == 0) return;
    const QRectF place = mTree.TriangleRect(row, rect);
    if (place.right() > mHeader->sectionViewportPosition(0) + mHeader->sectionSize(0)) return;
    painter.drawPixmap(place.topLeft(), Theme::Picture(row.IsOpen() ? "triangle-open" : "triangle-closed",
                                                       place.width(), devicePixelRatioF()));
}

void TreeView::PaintLines(QPainter& painter, const QRect& rect) const {
    if (mTree.mDrawsHorizontalLines)
        painter.fillRect(QRect(rect.x(), rect.bottom(), rect.width(), 1), WithAlpha(ThemeColor::Line, 42));
    if (!mTree.mDrawsVerticalLines) return;
    for (int column = 0; column < mTree.CountColumns(); ++column) {
        const int right = mHeader->sectionViewportPosition(column) + mHeader->sectionSize(column) - 1;
        painter.fillRect(QRect(right, rect.y(), 1, rect.height()), WithAlpha(ThemeColor::Line, 42));
    }
}

int TreeView::sizeHintForColumn(int column) const {
    double width = 0;
    for (const host::RowRef& row : mTree.mVisible)
        width = std::max(width, mTree.NaturalCellWidth(*row, column));
    return int(width) + mTree.mRowPixels / 2;
}

}  // namespace desk
