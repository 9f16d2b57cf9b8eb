#include "host/mediabrowser/MediaBrowserDirectoryView.h"

#include <QHeaderView>
#include <QTreeView>
#include <cmath>
#include <string>
#include <utility>

#include "desk/mediabrowser/ContentManagerImpl.h"
#include "desk/mediabrowser/DirectorySelection.h"
#include "desk/mediabrowser/DirectoryViewImpl.h"
#include "desk/toolkit/TreeAccess.h"
#include "host/files/DirectoryChangeMonitor.h"

namespace host {
namespace {

using Row = UI_MultiColumnTreeRow;

/// The step of indentation, as a part of the row height.
constexpr float kIndentation = 0.62f;

StationID MakeStation() {
    static unsigned count = 0;
    return StationID("host.mediabrowser.directoryview." + std::to_string(++count));
}

/// A callback of the tree that does nothing once the view is gone.
template <class Result, class... Arguments, class Function>
SharedFunction<Result(Arguments...)> Guard(const desk::Lifetime& lifetime, Function function) {
    return std::make_shared<std::function<Result(Arguments...)>>(lifetime.Guard(std::move(function)));
}

}  // namespace

MediaBrowserDirectoryView::DirectoryImpl::DirectoryImpl(
    MediaBrowserDirectoryView& view, std::shared_ptr<MediaBrowserContentManager> contentManager)
    : mView(view),
      mContentManager(std::move(contentManager)),
      mTree(new MediaBrowserMultiColumnTree(0, kIndentation)),
      mStation(MakeStation()) {
    SetCallbacks();
    desk::AddDirectoryView(view);
}

MediaBrowserDirectoryView::DirectoryImpl::~DirectoryImpl() {
    desk::RemoveDirectoryView(mView);
    mLifetime.End();
    ClearCallbacks();
    if (!mRoot.empty()) mContentManager->GetImpl().Forget(mRoot, this);
}

void MediaBrowserDirectoryView::DirectoryImpl::SetCallbacks() {
    MediaBrowserDirectoryView& view = mView;
    mTree->SetCanRowHaveChildrenFunction(Guard<bool, const RowRef&>(
        mLifetime, [&view](const RowRef& row) { return view.CanRowHaveChildren(row); }));
    mTree->SetRowDoubleClickedCallback(Guard<void, const RowRef&, Point>(
        mLifetime, [&view](const RowRef& row, Point point) { view.OnRowDoubleClicked(row, point); }));
    mTree->SetDrawCellOfRowCallback(Guard<void, Drawbot&, const RowRef&, unsigned, const RectT<float>&>(
        mLifetime, [&view](Drawbot& drawbot, const RowRef& row, unsigned column, const RectT<float>& cell) {
            view.OnDrawCellOfRow(drawbot, row, column, cell);
        }));
    mTree->SetRowsSelectionChangedCallback(Guard<void, const RowVec&>(
        mLifetime, [&view](const RowVec& rows) { view.OnRowSelectionChanged(rows); }));
    mTree->SetRowOpenStateChangedCallback(
        Guard<void, const RowRef&, bool>(mLifetime, [this, &view](const RowRef& row, bool open) {
            const StationID station = mStation;
            view.OnRowOpenStateChanged(row, open);
            BroadcastMessage(station, MediaBrowserDirectoryViewRowDisclosureChanged());
        }));
    mTree->SetRowContextMenuCallback(Guard<bool, const RowRef&, Point>(
        mLifetime, [&view](const RowRef& row, Point point) { return view.OnRowContextMenu(row, point); }));
}

void MediaBrowserDirectoryView::DirectoryImpl::ClearCallbacks() {
    mTree->SetCanRowHaveChildrenFunction({});
    mTree->SetRowDoubleClickedCallback({});
    mTree->SetRowSingleClickDownCallback({});
    mTree->SetRowSingleClickUpCallback({});
    mTree->SetSelectedRowsDraggedCallback({});
    mTree->SetDropSupportCallback({});
    mTree->SetDrawCellOfRowCallback({});
    mTree->SetRowsSelectionChangedCallback({});
    mTree->SetRowOpenStateChangedCallback({});
    mTree->SetRowContextMenuCallback({});
    mTree->SetRowDisclosureChangedCallback({});
    mTree->SetRowVisibilityChangedCallback({});
    mTree->SetCellSortDataFunction({});
    mTree->SetRowsSortDataFunction({});
    mTree->SetRowsSortNumbersFunction({});
    mTree->SetRowsSortedCallback({});
    mTree->SetCellAccessibleTextFunction({});
    mTree->SetCellToolTipFunction({});
    mTree->SetColumnMovedCallback({});
    mTree->SetColumnResizedCallback({});
    mTree->SetRowSelectionColorCallback({});
}

MediaBrowserDirectoryView::MediaBrowserDirectoryView(ProjectRef,
                                                     std::shared_ptr<MediaBrowserContentManager> contentManager)
    : mDirectoryImpl(std::make_unique<DirectoryImpl>(*this, std::move(contentManager))) {
    AddChild(mDirectoryImpl->mTree);
    AddListener(kStation_DirectoryChanges, this);
}

MediaBrowserDirectoryView::~MediaBrowserDirectoryView() {
    RemoveListener(kStation_DirectoryChanges, this);
}

MediaBrowserMultiColumnTree* MediaBrowserDirectoryView::GetTree() const {
    return mDirectoryImpl->mTree.get();
}

void MediaBrowserDirectoryView::EnableKeyboardEvents(bool enable) {
    GetTree()->EnableKeyboardEvents(enable);
}

bool MediaBrowserDirectoryView::AreKeyboardEventsEnabled() const {
    return GetTree()->AreKeyboardEventsEnabled();
}

const StationID& MediaBrowserDirectoryView::GetStationID() const {
    return mDirectoryImpl->mStation;
}

UTF16StringVec MediaBrowserDirectoryView::GetSelectedPaths() const {
    UTF16StringVec paths;
    for (const RowRef& row : GetTree()->GetSelectedRows())
        if (UTF16String path = GetRowPath(row.get()); !path.empty()) paths.push_back(std::move(path));
    return paths;
}

void MediaBrowserDirectoryView::ToggleRow(const RowRef& row) {
    if (!row) return;
    if (row->IsOpen())
        GetTree()->CloseRow(row.get());
    else if (CanOpenRow(row))
        GetTree()->OpenRow(row.get());
}

float MediaBrowserDirectoryView::GetExactOpenedHeight() const {
    const int header = desk::GetTreeWidget(*GetTree())->header()->height();
    return static_cast<float>(header) +
           std::round(GetTree()->GetRowHeight()) * static_cast<float>(GetTree()->CountOpenedRows());
}

void MediaBrowserDirectoryView::ListenToMessage(const Message& message) {
    const auto* changed = MessageCast<DirectoryChangedMessage>(message);
    Row* row = nullptr;
    if (changed && mDirectoryImpl->FindRow(changed->GetPath(), row) && mDirectoryImpl->mFolders.contains(row))
        OnDirectoryChanged(changed->GetPath());
}

bool MediaBrowserDirectoryView::CanRowHaveChildren(const RowRef& row) const {
    return row && (row->HasChild() || row->HasCustomChild());
}

bool MediaBrowserDirectoryView::CanOpenRow(const RowRef& row) const {
    return CanRowHaveChildren(row);
}

bool MediaBrowserDirectoryView::RowIsVolume(const RowRef&) const {
    return false;
}

bool MediaBrowserDirectoryView::RowIsVolumeContainer(const RowRef&) const {
    return false;
}

void MediaBrowserDirectoryView::OnRowDoubleClicked(const RowRef& row, Point) {
    ToggleRow(row);
}

void MediaBrowserDirectoryView::OnDrawCellOfRow(Drawbot&, const RowRef&, unsigned, const RectT<float>&) {}

void MediaBrowserDirectoryView::OnRowSelectionChanged(const RowVec&) {}

bool MediaBrowserDirectoryView::OnRowContextMenu(const RowRef&, Point) {
    return false;
}

void MediaBrowserDirectoryView::ResizeColumns() {
    const auto header = GetTree()->GetHeaderRow();
    if (!header || header->GetCountOfColumns() == 0) return;
    float spare = GetTree()->UI_GetBounds().width;
    for (unsigned i = 0; i < header->GetCountOfColumns(); ++i)
        spare -= header->GetColumnWidth(header->GetColumnAt(i));
    const ColumnID first = header->GetColumnAt(0);
    if (spare > 0) header->SetColumnWidth(first, header->GetColumnWidth(first) + spare);
}

void MediaBrowserDirectoryView::UI_SizeChanged(const RectT<float>& localBounds) {
    GetTree()->UI_SetBounds(localBounds);
    ResizeColumns();
}

MediaBrowserDirectoryViewRowDisclosureChanged::~MediaBrowserDirectoryViewRowDisclosureChanged() = default;

}  // namespace host
