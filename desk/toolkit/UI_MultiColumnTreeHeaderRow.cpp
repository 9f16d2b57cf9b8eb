#include "host/toolkit/UI_MultiColumnTreeHeaderRow.h"

#include <QHeaderView>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using Impl = UI_MultiColumnTreeHeaderRow::Impl;

namespace {

/// Widths come from settings files too, and Qt takes none of a million and more.
constexpr float kMaximumWidth = 10'000;

}  // namespace

int Impl::Find(ColumnID column) const {
    for (std::size_t i = 0; i < mColumns.size(); ++i)
        if (mColumns[i].mID == column) return int(i);
    return -1;
}

int Impl::PositionOf(int appended) const {
    const auto found = std::find(mOrder.begin(), mOrder.end(), appended);
    return found == mOrder.end() ? -1 : int(found - mOrder.begin());
}

QHeaderView* Impl::View() const {
    return mTree && mTree->mView ? mTree->mView->header() : nullptr;
}

void Impl::ApplyWidths() {
    QHeaderView* view = View();
    if (!view || mOrder.empty()) return;
    const bool wasApplying = std::exchange(mIsApplying, true);
    const int left = WidthLeftToScrollBar();
    for (const int appended : mOrder) {
        const int width = int(std::lround(mColumns[std::size_t(appended)].mWidth));
        view->resizeSection(appended, appended == mOrder.back() ? width - left : width);
    }
    mIsApplying = wasApplying;
}

int Impl::WidthLeftToScrollBar() const {
    const QScrollBar& bar = *mTree->mView->verticalScrollBar();
    if (!bar.isVisibleTo(mTree->mView)) return 0;
    long missing = -mTree->mView->viewport()->width();
    for (const Column& column : mColumns) missing += std::lround(column.mWidth);
    const Column& last = mColumns[std::size_t(mOrder.back())];
    const bool isEnough = missing <= bar.width() && last.mWidth - float(missing) >= last.mMinimumWidth;
    return missing > 0 && isEnough ? int(missing) : 0;
}

void Impl::ApplySortIndicator() {
    QHeaderView* view = View();
    if (!view) return;
    view->setSortIndicatorShown(mShowsSortIndicator);
    view->setSortIndicator(Find(mSortColumn), mIsAscending ? Qt::AscendingOrder : Qt::DescendingOrder);
    view->viewport()->update();
}

void Impl::Apply() {
    QHeaderView* view = View();
    if (!view) return;
    const bool wasApplying = std::exchange(mIsApplying, true);
    for (int position = 0; position < int(mOrder.size()); ++position) {
        const int appended = mOrder[std::size_t(position)];
        view->moveSection(view->visualIndex(appended), position);
    }
    ApplyWidths();
    view->setSectionsMovable(mAllowsMoving);
    view->setFirstSectionMovable(!mPinsFirst);
    ApplySortIndicator();
    mIsApplying = wasApplying;
    mTree->ColumnsChanged();
}

void Impl::SetSort(ColumnID column, bool ascending) {
    if (Find(column) < 0 || (column == mSortColumn && ascending == mIsAscending)) return;
    mSortColumn = column;
    mIsAscending = ascending;
    ApplySortIndicator();
    if (mTree) mTree->SortLater();
}

void Impl::SectionResized(int appended, int width) {
    if (mTree) mTree->ColumnsChanged();
    if (mIsApplying || std::size_t(appended) >= mColumns.size()) return;
    Column& column = mColumns[std::size_t(appended)];
    const float before = column.mWidth;
    column.mWidth = std::max(float(width), column.mMinimumWidth);
    if (int(std::lround(column.mWidth)) != width) ApplyWidths();
    if (column.mWidth != before && mTree)
        desk::Call(mTree->mCallbacks.mColumnResized, unsigned(PositionOf(appended)), column.mWidth);
}

void Impl::SectionMoved(int from, int to) {
    if (mIsApplying || from == to) return;
    const int appended = mOrder[std::size_t(from)];
    mOrder.erase(mOrder.begin() + from);
    mOrder.insert(mOrder.begin() + to, appended);
    ApplyWidths();
    mTree->ColumnsChanged();
    desk::Call(mTree->mCallbacks.mColumnMoved, unsigned(from), unsigned(to));
}

void Impl::SectionClicked(int appended) {
    if (!mTree || std::size_t(appended) >= mColumns.size()) return;
    const ColumnID column = mColumns[std::size_t(appended)].mID;
    mIsAscending = column == mSortColumn ? !mIsAscending : true;
    mSortColumn = column;
    ApplySortIndicator();
    const RefPtr<UI_Node> keptAlive(mTree->mNode);
    desk::Call(mUserChangedSort, mSortColumn, mIsAscending);
    if (mTree) mTree->Sort();
}

UI_MultiColumnTreeHeaderRow::UI_MultiColumnTreeHeaderRow(UI_MultiColumnTree&)
    : mImpl(std::make_unique<Impl>()) {}
UI_MultiColumnTreeHeaderRow::~UI_MultiColumnTreeHeaderRow() = default;

void UI_MultiColumnTreeHeaderRow::AppendColumn(const UTF16String& title, ColumnID column) {
    if (mImpl->Find(column) >= 0) return;
    const int index = int(mImpl->mColumns.size());
    // The model always has a first column.
    const bool isNewInModel = mImpl->mTree && index > 0;
    if (isNewInModel) mImpl->mTree->mModel.beginInsertColumns({}, index, index);
    mImpl->mColumns.push_back({column, desk::ToDisplayText(title)});
    mImpl->mOrder.push_back(index);
    if (isNewInModel) mImpl->mTree->mModel.endInsertColumns();
    if (index == 0) mImpl->mSortColumn = column;
    mImpl->Apply();
}

unsigned UI_MultiColumnTreeHeaderRow::GetCountOfColumns() const {
    return unsigned(mImpl->mColumns.size());
}

ColumnID UI_MultiColumnTreeHeaderRow::GetColumnAt(unsigned index) const {
    return index < mImpl->mOrder.size() ? mImpl->mColumns[std::size_t(mImpl->mOrder[index])].mID : 0;
}

int UI_MultiColumnTreeHeaderRow::GetIndexOfColumn(ColumnID column) const {
    const int appended = mImpl->Find(column);
    return appended < 0 ? -1 : mImpl->PositionOf(appended);
}

float UI_MultiColumnTreeHeaderRow::GetColumnWidth(ColumnID column) const {
    const int appended = mImpl->Find(column);
    return appended < 0 ? 0 : mImpl->mColumns[std::size_t(appended)].mWidth;
}

void UI_MultiColumnTreeHeaderRow::SetColumnWidth(ColumnID column, float width) {
    const int appended = mImpl->Find(column);
    if (appended < 0 || std::isnan(width)) return;
    Impl::Column& found = mImpl->mColumns[std::size_t(appended)];
    found.mWidth = std::max(std::min(width, kMaximumWidth), found.mMinimumWidth);
    mImpl->ApplyWidths();
}

void UI_MultiColumnTreeHeaderRow::SetColumnAllowedMinimumWidth(ColumnID column, float width) {
    const int appended = mImpl->Find(column);
    if (appended >= 0) mImpl->mColumns[std::size_t(appended)].mMinimumWidth = std::max(width, 1.0f);
}

void UI_MultiColumnTreeHeaderRow::SetColumnAlignment(ColumnID column, UI_Alignment alignment) {
    const int appended = mImpl->Find(column);
    if (appended < 0) return;
    mImpl->mColumns[std::size_t(appended)].mAlignment = alignment;
    if (QHeaderView* view = mImpl->View()) view->viewport()->update();
}

UI_Alignment UI_MultiColumnTreeHeaderRow::GetColumnAlignment(ColumnID column) const {
    const int appended = mImpl->Find(column);
    return appended < 0 ? UI_Alignment::Left : mImpl->mColumns[std::size_t(appended)].mAlignment;
}

void UI_MultiColumnTreeHeaderRow::MoveColumn(ColumnID column, int index, bool) {
    const int from = GetIndexOfColumn(column);
    if (from < 0) return;
    const int to = std::clamp(index, 0, int(mImpl->mOrder.size()) - 1);
    const int appended = mImpl->mOrder[std::size_t(from)];
    mImpl->mOrder.erase(mImpl->mOrder.begin() + from);
    mImpl->mOrder.insert(mImpl->mOrder.begin() + to, appended);
    mImpl->Apply();
}

void UI_MultiColumnTreeHeaderRow::SetAllowColumnMovingByUser(bool allow, bool pinFirst) {
    mImpl->mAllowsMoving = allow;
    mImpl->mPinsFirst = pinFirst;
    mImpl->Apply();
}

ColumnID UI_MultiColumnTreeHeaderRow::GetSortColumn() const {
    return mImpl->mSortColumn;
}
bool UI_MultiColumnTreeHeaderRow::IsSortDirectionAscending() const {
    return mImpl->mIsAscending;
}
void UI_MultiColumnTreeHeaderRow::SetSortColumn(ColumnID column) {
    mImpl->SetSort(column, mImpl->mIsAscending);
}
void UI_MultiColumnTreeHeaderRow::SetSortDirection(bool ascending) {
    mImpl->SetSort(mImpl->mSortColumn, ascending);
}

void UI_MultiColumnTreeHeaderRow::ShowSortIndicator(bool show) {
    mImpl->mShowsSortIndicator = show;
    mImpl->ApplySortIndicator();
}

void UI_MultiColumnTreeHeaderRow::SetStringSortingCallback(
    SharedFunction<bool(const UTF16String&, const UTF16String&)> less) {
    mImpl->mLess = std::move(less);
    if (mImpl->mTree) mImpl->mTree->ForgetSortedKeys();
}

void UI_MultiColumnTreeHeaderRow::SetUserChangedSortCallback(
    SharedFunction<void(ColumnID column, bool ascending)> changed) {
    mImpl->mUserChangedSort = std::move(changed);
}

}  // namespace host
