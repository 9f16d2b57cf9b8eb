#include <QHeaderView>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/toolkit/BusySpinner.h"
#include "desk/toolkit/Callback.h"
#include "desk/toolkit/CellEditorImpl.h"
#include "desk/toolkit/DrawbotImpl.h"
#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;
using Access = Row::Access;

namespace {

// As fractions of the row height.
constexpr double kCellMargin = 0.2;
constexpr double kTriangleSize = 0.31;
constexpr double kTriangleShift = 0.07;
constexpr std::chrono::milliseconds kBusyDelay(150);

}  // namespace

int TreeImpl::CountColumns() const {
    return mHeader ? int(mHeader->GetCountOfColumns()) : 0;
}

int TreeImpl::ColumnAtPosition(unsigned position) const {
    if (!mHeader || position >= mHeader->GetCountOfColumns()) return -1;
    return UI_MultiColumnTreeHeaderRow::Impl::Of(*mHeader).mOrder[position];
}

int TreeImpl::PositionOfColumn(int appended) const {
    return mHeader ? UI_MultiColumnTreeHeaderRow::Impl::Of(*mHeader).PositionOf(appended) : -1;
}

void TreeImpl::SetHeader(RefPtr<UI_MultiColumnTreeHeaderRow> header) {
    if (header == mHeader) return;
    using HeaderImpl = UI_MultiColumnTreeHeaderRow::Impl;
    const int before = mModel.columnCount();
    const int now = header ? std::max(1, int(header->GetCountOfColumns())) : 1;
    if (now > before) mModel.beginInsertColumns({}, before, now - 1);
    if (now < before) mModel.beginRemoveColumns({}, now, before - 1);
    if (mHeader) HeaderImpl::Of(*mHeader).mTree = nullptr;
    mHeader = std::move(header);
    if (mHeader) HeaderImpl::Of(*mHeader).mTree = this;
    if (now > before) mModel.endInsertColumns();
    if (now < before) mModel.endRemoveColumns();
    ForgetSortedKeys();
    if (mHeader) HeaderImpl::Of(*mHeader).Apply();
}

void TreeImpl::ColumnsChanged() {
    for (const RowRef& row : mVisible)
        for (int column = 0; column < CountColumns(); ++column)
            if (Access::FindCellWithNodes(*row, unsigned(column))) FitCell(*row, column);
    mCellEditor.GetImpl().Follow();
    if (mView) mView->viewport()->update();
}

int TreeImpl::DepthOf(const Row& row) const {
    int depth = 0;
    for (const Row* above = Access::Parent(row); above; above = Access::Parent(*above)) ++depth;
    return mIndentationLevels > 0 ? std::min(depth, mIndentationLevels) : depth;
}

QRectF TreeImpl::CellRect(const Row& row, int appended, const QRect& rowRect) const {
    const QHeaderView* header = mView->header();
    QRectF rect(header->sectionViewportPosition(appended), rowRect.y(), header->sectionSize(appended),
                rowRect.height());
    if (appended == 0)
        rect.setLeft(rect.left() +
                     std::round(IndentationWidth() * (DepthOf(row) + 1) + kCellMargin * mRowPixels));
    return rect;
}

RectT<float> TreeImpl::CellRectInTree(const Row& row, unsigned position) {
    const int column = ColumnAtPosition(position);
    FlushLayout();
    if (column < 0 || !mView || !mView->isVisible() || IndexOfOpened(&row) < 0) return {};
    const QRectF cell = CellRect(row, column, mView->RectOf(&row));
    const QPoint corner = mView->viewport()->pos();
    return {float(cell.x() + corner.x()), float(cell.y() + corner.y()), float(cell.width()),
            float(cell.height())};
}

QRectF TreeImpl::TriangleRect(const Row& row, const QRect& rowRect) const {
    const double side = std::max(7.0, std::round(kTriangleSize * mRowPixels));
    const double centre = mView->header()->sectionViewportPosition(0) + kTriangleShift * mRowPixels +
                          IndentationWidth() * (DepthOf(row) + 0.5);
    return {std::round(centre - side / 2), std::round(rowRect.y() + (rowRect.height() - side) / 2), side, side};
}

void TreeImpl::FitCell(Row& row, int appended) {
    if (!mView) return;
    const QRectF rect = CellRect(row, appended, QRect(0, 0, 0, mRowPixels));
    desk::ImplOf(Access::Cell(row, unsigned(appended)))
        .Fit(float(std::max(rect.width(), 0.0)), float(rect.height()));
}

UTF16String TreeImpl::AccessibleText(const Row& row, int appended) const {
    const int position = PositionOfColumn(appended);
    if (position < 0) return {};
    return desk::Call(mCallbacks.mAccessibleText, RowRef(const_cast<Row*>(&row)), unsigned(position));
}

QString TreeImpl::NameOf(const Row& row) const {
    UTF16String name =
        desk::Call(mCallbacks.mSortData, RowRef(const_cast<Row*>(&row)), unsigned(PositionOfColumn(0)));
    if (name.empty()) name = AccessibleText(row, 0);
    return desk::ToDisplayText(name);
}

double TreeImpl::NaturalCellWidth(Row& row, int appended) {
    const QRectF rect = CellRect(row, appended, QRect(0, 0, 0, mRowPixels));
    const double indentation = rect.x() - mView->header()->sectionViewportPosition(appended);
    if (desk::CellContainer* cell = Access::FindCellWithNodes(row, unsigned(appended)))
        return indentation + desk::ImplOf(*cell).NaturalWidth();
    Drawbot::Impl measuring;
    Drawbot drawbot(measuring);
    desk::Call(mCallbacks.mDrawCell, drawbot, RowRef(&row), unsigned(PositionOfColumn(appended)),
               RectT<float>{0, 0, 10000, float(mRowPixels)});
    return indentation + measuring.mNaturalWidth;
}

bool TreeImpl::IsCellCut(Row& row, int appended) {
    return IsRowVisible(row) && appended < CountColumns() &&
           NaturalCellWidth(row, appended) > mView->header()->sectionSize(appended);
}

void TreeImpl::ShowBusy(bool busy) {
    if (!busy) {
        ++mBusyPeriod;
        mView->GetSpinner().Stop();
        mView->EndPause();
        mView->viewport()->update();
        return;
    }
    mView->viewport()->update();
    desk::GetServices().mMainThread->PostDelayed(mLifetime.Guard([this, period = ++mBusyPeriod] {
        if (mView && mBusy > 0 && period == mBusyPeriod) mView->GetSpinner().Start(mSpinnerAlignment);
    }),
                                                 kBusyDelay);
}

}  // namespace host
