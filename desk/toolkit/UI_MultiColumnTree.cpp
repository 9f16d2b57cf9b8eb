#include "host/toolkit/UI_MultiColumnTree.h"

#include <QHeaderView>
#include <QScrollBar>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/toolkit/BusySpinner.h"
#include "desk/toolkit/CellEditorImpl.h"
#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/Theme.h"
#include "desk/toolkit/TreeAccess.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;

TreeImpl::TreeImpl() : mRoot(Access::Make()), mCellEditor(std::make_unique<UI_CellEditor::Impl>(*this)) {
    mView = new desk::TreeView(*this);
}

TreeImpl::~TreeImpl() {
    mLifetime.End();
    mCellEditor.GetImpl().Abandon();
    const auto detach = [](const auto& self, const std::vector<RowRef>& rows) -> void {
        for (const RowRef& row : rows) {
            self(self, row->GetChildRows());
            Access::Tree(*row) = nullptr;
            Access::Parent(*row) = nullptr;
        }
    };
    // Qt's notes of rows go first.
    delete mView.data();
    detach(detach, mRoot->GetChildRows());
    if (mHeader) UI_MultiColumnTreeHeaderRow::Impl::Of(*mHeader).mTree = nullptr;
}

void TreeImpl::RunLater(Later& later, void (TreeImpl::*member)(), std::chrono::milliseconds delay) {
    if (std::exchange(later.mIsQueued, true)) return;
    auto run = mLifetime.Guard([this, &later, member] {
        later.mIsQueued = false;
        (this->*member)();
    });
    desk::MainThread& mainThread = *desk::GetServices().mMainThread;
    delay.count() > 0 ? mainThread.PostDelayed(std::move(run), delay) : mainThread.Post(std::move(run));
}

void TreeImpl::Realize(QWidget& parent) {
    if (!mView) return;
    mView->setParent(&parent);
    mWidget = mView.data();
    ApplyToWidget();
}

void TreeImpl::Unrealize() {
    // The view stays, with what is open and selected in it.
    if (mView) {
        mView->hide();
        mView->setParent(nullptr);
    }
    mWidget = nullptr;
}

void TreeImpl::ApplyToWidget() {
    ContainerImpl::ApplyToWidget();
    mView->setAccessibleName(mAccessibleName);
}

UI_MultiColumnTree::UI_MultiColumnTree() : UI_MultiColumnTree(std::make_unique<TreeImpl>()) {}
UI_MultiColumnTree::UI_MultiColumnTree(std::unique_ptr<UI_Node::Impl> impl) : UI_SubView(std::move(impl)) {}
UI_MultiColumnTree::~UI_MultiColumnTree() = default;

namespace {
TreeImpl& ImplOf(const UI_MultiColumnTree& tree) {
    return TreeImpl::Of(tree);
}
}  // namespace

RowRef UI_MultiColumnTree::CreateAndAppendRow(Row* parent) {
    return ImplOf(*this).Append(parent);
}
void UI_MultiColumnTree::LayoutAfterAppendRow(Row* parent, bool areInNameOrder) {
    ImplOf(*this).LayOutAppended(parent, areInNameOrder);
}
void UI_MultiColumnTree::RemoveRows(const RowVec& rows) {
    ImplOf(*this).Remove(rows);
}
void UI_MultiColumnTree::RemoveAllRows() {
    ImplOf(*this).RemoveAll();
}
const std::vector<RowRef>& UI_MultiColumnTree::GetTopLevelRows() const {
    return ImplOf(*this).ChildrenOf(nullptr);
}
void UI_MultiColumnTree::SortTree() {
    ImplOf(*this).Sort();
}
bool UI_MultiColumnTree::IsSorting() const {
    return ImplOf(*this).mSorting.has_value();
}
void UI_MultiColumnTree::SortRows(const RowVec& changed) {
    ImplOf(*this).SortRows(changed);
}

void UI_MultiColumnTree::OpenRow(Row* row) {
    if (row) ImplOf(*this).SetOpen(*row, true);
}

void UI_MultiColumnTree::CloseRow(Row* row) {
    if (row) ImplOf(*this).SetOpen(*row, false);
}

bool UI_MultiColumnTree::IsRowOpen(const Row* row) const {
    return row && row->IsOpen();
}

void UI_MultiColumnTree::SetRowHasCustomChild(Row* row, bool hasCustomChild) {
    if (!ImplOf(*this).IsMine(row) || row->HasCustomChild() == hasCustomChild) return;
    Row::Access::HasCustomChild(*row) = hasCustomChild;
    ImplOf(*this).UpdateMayHaveChildren(*row);
    RedrawRow(row);
}

void UI_MultiColumnTree::SetAllowChildren(bool allow) {
    if (std::exchange(ImplOf(*this).mAllowsChildren, allow) != allow)
        ImplOf(*this).UpdateMayHaveChildrenOfAll();
}

void UI_MultiColumnTree::SetCanRowHaveChildrenFunction(SharedFunction<bool(const RowRef& row)> function) {
    ImplOf(*this).mCallbacks.mCanRowHaveChildren = std::move(function);
    ImplOf(*this).UpdateMayHaveChildrenOfAll();
}

void UI_MultiColumnTree::SelectRow(Row* row, bool deselectOthers, bool scrollIntoView, bool notify) {
    ImplOf(*this).Select(row, deselectOthers, scrollIntoView, notify);
}

void UI_MultiColumnTree::SelectRows(const RowVec& rows) {
    ImplOf(*this).SelectRows(rows);
    ImplOf(*this).TakeKeyboardToSelection();
}
void UI_MultiColumnTree::SelectOpenedRows(const std::function<bool(const RowRef& row)>& isMeant) {
    ImplOf(*this).SelectOpened(isMeant);
    ImplOf(*this).TakeKeyboardToSelection();
}
void UI_MultiColumnTree::DeselectAllRows(bool notify) {
    ImplOf(*this).DeselectAll(notify);
}
RowVec UI_MultiColumnTree::GetSelectedRows() const {
    return ImplOf(*this).SelectedRowVec();
}
std::size_t UI_MultiColumnTree::CountSelectedRows() const {
    return ImplOf(*this).mSelected.Count();
}
bool UI_MultiColumnTree::IsRowSelected(const Row* row) const {
    return ImplOf(*this).IsMine(row) && Row::Access::IsSelected(const_cast<Row&>(*row));
}
RowRef UI_MultiColumnTree::GetOnlySelectedRow() const {
    return RowRef(CountSelectedRows() == 1 ? ImplOf(*this).LastSelected() : nullptr);
}
void UI_MultiColumnTree::VisitSelectedRows(
    const std::function<bool(std::span<const RowRef> rows)>& visitor) const {
    TreeImpl& impl = ImplOf(*this);
    for (const desk::SelectedRows::Run& run : impl.mSelected.Runs())
        if (!visitor(impl.RowsOf(run))) return;
}

void UI_MultiColumnTree::SetSupportMultipleSelections(bool support) {
    ImplOf(*this).mView->setSelectionMode(support ? QAbstractItemView::ExtendedSelection
                                                  : QAbstractItemView::SingleSelection);
}

void UI_MultiColumnTree::SetSupportNoneSelected(bool support) {
    ImplOf(*this).mSupportsNoneSelected = support;
}

void UI_MultiColumnTree::SetSupportDeselectAllOnEmptyTreeClick(bool support) {
    ImplOf(*this).mDeselectsOnEmptyClick = support;
}

RowVec UI_MultiColumnTree::GetOpenedRows() const {
    const std::vector<Row*> rows = ImplOf(*this).AllOpened();
    return RowVec(rows.begin(), rows.end());
}

std::size_t UI_MultiColumnTree::CountOpenedRows() const {
    return ImplOf(*this).CountOfOpened();
}

RowRef UI_MultiColumnTree::GetOpenedRow(int index) const {
    return index >= 0 ? RowRef(ImplOf(*this).OpenedRow(std::size_t(index))) : RowRef();
}

bool UI_MultiColumnTree::IsRowVisible(const Row* row) const {
    return row && ImplOf(*this).IsRowVisible(*row);
}
int UI_MultiColumnTree::GetFirstVisibleOpenedRowIndex() const {
    return ImplOf(*this).VisibleRange().mFirst;
}
int UI_MultiColumnTree::GetLastVisibleOpenedRowIndex() const {
    return ImplOf(*this).VisibleRange().mLast;
}

void UI_MultiColumnTree::ScrollRowIntoView(Row* row, bool animate, float margin, bool openAncestors) {
    if (row) ImplOf(*this).ScrollIntoView(*row, animate, margin, openAncestors);
}

UI_ScrollView UI_MultiColumnTree::GetScrollView() const {
    ImplOf(*this).FlushLayout();
    const desk::TreeView& view = *ImplOf(*this).mView;
    return {{float(view.horizontalScrollBar()->value()), float(view.verticalScrollBar()->value()),
             float(view.viewport()->width()), float(view.viewport()->height())}};
}

RowRef UI_MultiColumnTree::GetTopRow() const {
    return RowRef(ImplOf(*this).TopRow());
}

void UI_MultiColumnTree::ScrollRowToTop(Row* row) {
    if (row) ImplOf(*this).ScrollToTop(*row);
}

RectT<float> UI_MultiColumnTree::GetCellRect(const Row* row, unsigned column) const {
    return row ? ImplOf(*this).CellRectInTree(*row, column) : RectT<float>();
}

void UI_MultiColumnTree::EnableKeyboardEvents(bool enable) {
    ImplOf(*this).mHearsKeys = enable;
}

void UI_MultiColumnTree::TakeKeyboard() {
    if (QWidget* view = ImplOf(*this).mView; view && view->isVisible()) view->setFocus(Qt::OtherFocusReason);
}

bool UI_MultiColumnTree::AreKeyboardEventsEnabled() const {
    return ImplOf(*this).mHearsKeys;
}

UI_CellEditor& UI_MultiColumnTree::GetCellEditor() const {
    return ImplOf(*this).mCellEditor;
}

void UI_MultiColumnTree::SetSupportDragOverRow(bool support) {
    ImplOf(*this).mView->viewport()->setAcceptDrops(support);
}

void UI_MultiColumnTree::ShowDragFeedback(Row* destination, bool show) {
    if (ImplOf(*this).mView) ImplOf(*this).mView->GetDrop().ShowFeedback(destination, show);
}

float UI_MultiColumnTree::GetRowHeight() const {
    return ImplOf(*this).mRowHeight;
}
void UI_MultiColumnTree::SetRowHeight(float height) {
    ImplOf(*this).SetRowHeight(height);
}
RefPtr<UI_MultiColumnTreeHeaderRow> UI_MultiColumnTree::GetHeaderRow() const {
    return ImplOf(*this).mHeader;
}

void UI_MultiColumnTree::SetHeaderRow(RefPtr<UI_MultiColumnTreeHeaderRow> headerRow) {
    ImplOf(*this).SetHeader(std::move(headerRow));
}

void UI_MultiColumnTree::SetDrawGridLines(bool horizontal, bool vertical) {
    ImplOf(*this).mDrawsHorizontalLines = horizontal;
    ImplOf(*this).mDrawsVerticalLines = vertical;
    ImplOf(*this).mView->viewport()->update();
}

void UI_MultiColumnTree::SetSpinnerAlignment(int alignment) {
    ImplOf(*this).mSpinnerAlignment = alignment;
}

void UI_MultiColumnTree::BeginBusy() {
    if (ImplOf(*this).mBusy++ == 0) ImplOf(*this).ShowBusy(true);
}

void UI_MultiColumnTree::EndBusy() {
    if (ImplOf(*this).mBusy > 0 && --ImplOf(*this).mBusy == 0) ImplOf(*this).ShowBusy(false);
}

void UI_MultiColumnTree::SetEmptyText(const UTF16String& text) {
    ImplOf(*this).mEmptyText = desk::ToDisplayText(text);
    ImplOf(*this).mView->viewport()->update();
}

void UI_MultiColumnTree::SetEmptyButtons(const std::vector<UI_EmptyButton>& buttons) {
    ImplOf(*this).mView->GetEmptyButtons().Set(buttons);
}

void UI_MultiColumnTree::SetRowsOfEmptyTree(std::size_t count) {
    if (std::exchange(ImplOf(*this).mRowsOfEmptyTree, count) == count) return;
    ImplOf(*this).mView->viewport()->update();
}

void UI_MultiColumnTree::SetAccessibleName(const UTF16String& name) {
    ImplOf(*this).mAccessibleName = desk::ToDisplayText(name);
    ImplOf(*this).mView->setAccessibleName(ImplOf(*this).mAccessibleName);
}

void UI_MultiColumnTree::RedrawRow(const Row* row) {
    if (row) ImplOf(*this).RedrawRow(*row);
}

void UI_MultiColumnTree::SetDrawCellOfRowCallback(
    SharedFunction<void(Drawbot&, const RowRef&, unsigned column, const RectT<float>& cell)> callback) {
    ImplOf(*this).mCallbacks.mDrawCell = std::move(callback);
}

void UI_MultiColumnTree::SetCellAccessibleTextFunction(
    SharedFunction<UTF16String(const RowRef&, unsigned column)> function) {
    ImplOf(*this).mCallbacks.mAccessibleText = std::move(function);
}

void UI_MultiColumnTree::SetCellToolTipFunction(
    SharedFunction<UTF16String(const RowRef&, unsigned column)> function) {
    ImplOf(*this).mCallbacks.mToolTip = std::move(function);
}

void UI_MultiColumnTree::SetCellSortDataFunction(
    SharedFunction<UTF16String(const RowRef&, unsigned column)> function) {
    ImplOf(*this).mCallbacks.mSortData = std::move(function);
}

void UI_MultiColumnTree::SetRowsSortDataFunction(
    SharedFunction<UTF16StringVec(std::span<const RowRef> rows, unsigned column)> function) {
    ImplOf(*this).mCallbacks.mRowsSortData = std::move(function);
}

void UI_MultiColumnTree::SetRowsSortedCallback(SharedFunction<void()> callback) {
    ImplOf(*this).mCallbacks.mRowsSorted = std::move(callback);
}
void UI_MultiColumnTree::SetRowsSortNumbersFunction(
    SharedFunction<std::vector<std::uint64_t>(std::span<const RowRef> rows, unsigned column)> function) {
    ImplOf(*this).mCallbacks.mRowsSortNumbers = std::move(function);
}

void UI_MultiColumnTree::SetColumnMovedCallback(SharedFunction<void(unsigned from, unsigned to)> callback) {
    ImplOf(*this).mCallbacks.mColumnMoved = std::move(callback);
}

void UI_MultiColumnTree::SetColumnResizedCallback(SharedFunction<void(unsigned column, float width)> callback) {
    ImplOf(*this).mCallbacks.mColumnResized = std::move(callback);
}

void UI_MultiColumnTree::SetRowContextMenuCallback(SharedFunction<bool(const RowRef&, Point point)> callback) {
    ImplOf(*this).mCallbacks.mContextMenu = std::move(callback);
}

void UI_MultiColumnTree::SetRowDoubleClickedCallback(
    SharedFunction<void(const RowRef&, Point point)> callback) {
    ImplOf(*this).mCallbacks.mDoubleClicked = std::move(callback);
}

void UI_MultiColumnTree::SetRowSingleClickDownCallback(
    SharedFunction<void(const RowRef&, Point point)> callback) {
    ImplOf(*this).mCallbacks.mSingleClickDown = std::move(callback);
}

void UI_MultiColumnTree::SetRowSingleClickUpCallback(
    SharedFunction<void(const RowRef&, Point point)> callback) {
    ImplOf(*this).mCallbacks.mSingleClickUp = std::move(callback);
}

void UI_MultiColumnTree::SetRowOpenStateChangedCallback(
    SharedFunction<void(const RowRef&, bool open)> callback) {
    ImplOf(*this).mCallbacks.mOpenStateChanged = std::move(callback);
}

void UI_MultiColumnTree::SetRowDisclosureChangedCallback(
    SharedFunction<void(const RowRef&, bool open)> callback) {
    ImplOf(*this).mCallbacks.mDisclosureChanged = std::move(callback);
}

void UI_MultiColumnTree::SetRowVisibilityChangedCallback(SharedFunction<void(const RowRef&)> callback) {
    ImplOf(*this).mCallbacks.mVisibilityChanged = std::move(callback);
}

void UI_MultiColumnTree::SetRowsSelectionChangedCallback(
    SharedFunction<void(const RowVec& selected)> callback) {
    ImplOf(*this).mCallbacks.mSelectionChanged = std::move(callback);
}

void UI_MultiColumnTree::SetRowSelectionColorCallback(SharedFunction<int(const RowRef&)> callback) {
    ImplOf(*this).mCallbacks.mSelectionColor = std::move(callback);
}

void UI_MultiColumnTree::SetSelectedRowsDraggedCallback(
    SharedFunction<bool(const UI_MouseEvent& event)> callback) {
    ImplOf(*this).mCallbacks.mRowsDragged = std::move(callback);
}

void UI_MultiColumnTree::SetDropSupportCallback(SharedFunction<bool(int action, UI_DropData* data)> callback) {
    ImplOf(*this).mCallbacks.mDropSupport = std::move(callback);
}

}  // namespace host

namespace desk {

QTreeView* GetTreeWidget(const host::UI_MultiColumnTree& tree) {
    return host::UI_MultiColumnTree::TreeImpl::Of(tree).mView;
}

void SetTreeIndentation(host::UI_MultiColumnTree& tree, int levels, float fraction) {
    auto& impl = host::UI_MultiColumnTree::TreeImpl::Of(tree);
    impl.mIndentationLevels = levels;
    impl.mIndentation = fraction;
    impl.mView->viewport()->update();
}

std::unique_ptr<host::UI_MultiColumnTreeRow::Data>& GetRowData(host::UI_MultiColumnTreeRow& row) {
    return host::UI_MultiColumnTreeRow::Access::DataOf(row);
}

}  // namespace desk
