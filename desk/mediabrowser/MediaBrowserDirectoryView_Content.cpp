// Contents of folders, from the request to the rows.
#include <QScopeGuard>
#include <algorithm>
#include <unordered_set>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/mediabrowser/ContentManagerImpl.h"
#include "desk/mediabrowser/DirectoryViewImpl.h"
#include "desk/toolkit/HeaderRowImpl.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/files/PathUtils.h"

namespace host {

using Row = UI_MultiColumnTreeRow;
using DirectoryImpl = MediaBrowserDirectoryView::DirectoryImpl;

namespace {

/// So few items are looked for without an index.
constexpr std::size_t kFewItems = 8;
/// Asking what is visible has all rows laid out.
constexpr std::chrono::milliseconds kPauseOfLooks(100);

/// The name of the item `path` of `folder`; empty when it is no item of it.
std::u16string_view NameInFolder(std::u16string_view path, std::u16string_view folder) {
    if (!path.starts_with(folder)) return {};
    path.remove_prefix(folder.size());
    if (!folder.ends_with(u'/')) {
        if (!path.starts_with(u'/')) return {};
        path.remove_prefix(1);
    }
    return path.find(u'/') == std::u16string_view::npos ? path : std::u16string_view();
}

}  // namespace

void DirectoryImpl::Request(const UTF16String& path, Row* row, const UTF16String& context) {
    SetBusy(mFolders[row], true);
    mStale.erase(row);
    mContentManager->GetImpl().RequestListing(
        path, context, this,
        mLifetime.Guard([this](const desk::FolderStore::Delivery& delivery) { Receive(delivery); }));
}

void DirectoryImpl::SetBusy(Folder& folder, bool busy) {
    if (std::exchange(folder.mIsBusy, busy) == busy) return;
    busy ? mTree->BeginBusy() : mTree->EndBusy();
}

void DirectoryImpl::Hold(bool hold) {
    mIsHolding = hold;
    if (hold) return;
    const std::weak_ptr<const void> alive = mLifetime.Watch();
    for (const desk::FolderStore::Delivery& delivery : mHeld.Take()) {
        Receive(delivery);
        if (alive.expired()) return;
    }
}

void DirectoryImpl::Receive(const desk::FolderStore::Delivery& delivery) {
    if (mIsHolding) return mHeld.Add(delivery);
    Row* found = nullptr;
    if (!FindRow(delivery.mFolder, found)) return;
    const auto folder = mFolders.find(found);
    if (folder == mFolders.end()) return;
    const std::weak_ptr<const void> alive = mLifetime.Watch();
    // Not before the folders in it have been opened: their contents may be awaited then.
    const bool endsWait = delivery.mDelivery.mIsLast && std::exchange(folder->second.mIsBusy, false);
    const auto endBusy = qScopeGuard([this, &alive, endsWait] {
        if (endsWait && !alive.expired()) mTree->EndBusy();
    });
    if (delivery.mContent)
        folder->second.mHasContent = true;
    else if (!found && mTree->GetTopLevelRows().empty())
        TellWhyEmpty(delivery.mDelivery.mSystemError);
    const RowRef row(found);
    static const DirectoryContent kNothing;
    try {
        mView.UpdateTreeFromContent(row, delivery.mFolder, delivery.mContent ? *delivery.mContent : kNothing,
                                    delivery.mDelivery);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
    if (alive.expired()) return;
    mTree->LayoutAfterAppendRow(row.get());
    AdvanceExpansions();
    if (alive.expired()) return;
    if (delivery.mDelivery.mExtent == ContentDelivery::Extent::Change) DropFactsOfRowsScrolledAway();
}

/// Whoever fills the tree says what an empty one means; nobody else can say why it could not be filled.
void DirectoryImpl::TellWhyEmpty(int systemError) {
    mTree->SetEmptyText(
        ZString("$$$/Vantor/Desk/MediaBrowser/FolderCannotBeRead=The folder “@0” cannot be read: @1",
                {PathUtils::GetFullFilePart(mRoot), DescribeSystemError(systemError)}));
}

void DirectoryImpl::Create(Row* parent, const DirectoryContent& content,
                           const std::vector<std::uint32_t>& places) {
    for (const std::uint32_t place : places) {
        const DirectoryContent::Item item = content[place];
        if (const RowRef row = mTree->CreateAndAppendRow(parent))
            mView.AddRowToMaps(row, {item.mName, item.mIsFolder});
    }
}

void DirectoryImpl::Remove(const RowVec& rows) {
    if (rows.empty()) return;
    for (const RowRef& row : rows) ForgetRowAndBelow(row);
    mTree->RemoveRows(rows);
}

/// A folder that is not shown is brought up to date when it is shown again.
void DirectoryImpl::ListAgainOrMark(const UTF16String& path) {
    Row* row = nullptr;
    if (!FindRow(path, row) || !mFolders.contains(row)) return;
    if (IsShown(row))
        mContentManager->GetImpl().RequestChanges(path);
    else
        mStale.insert(row);
}

void DirectoryImpl::OpenStateChanged(Row& row, bool open) {
    if (!open) return;
    const auto folder = mFolders.find(&row);
    if (folder == mFolders.end() || (!folder->second.mHasContent && !folder->second.mIsBusy))
        Request(PathOf(&row), &row, {});
    std::vector<const Row*> shown;
    std::ranges::copy_if(mStale, std::back_inserter(shown), &DirectoryImpl::IsShown);
    for (const Row* stale : shown) {
        mStale.erase(stale);
        mContentManager->GetImpl().RequestChanges(PathOf(stale));
    }
}

/// When the user has gone on to other rows, the facts of the ones left behind are not read any more; but the
/// order may hang on them while the rows are sorted by another column than the first, their name.
void DirectoryImpl::DropFactsOfRowsScrolledAway() {
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    const auto header = mTree->GetHeaderRow();
    if (!store || !header || header->GetImpl().Find(header->GetSortColumn()) != 0) return;
    const auto now = desk::GetServices().mMainThread->Now();
    if (now < mNextLookAtVisible) return;
    mNextLookAtVisible = now + kPauseOfLooks;
    const int first = mTree->GetFirstVisibleOpenedRowIndex();
    const int last = mTree->GetLastVisibleOpenedRowIndex();
    const bool hasJumped = first > mLastVisible || last < mFirstVisible;
    mFirstVisible = first;
    mLastVisible = last;
    if (!hasJumped || first < 0) return;
    store->DropWaitingFacts();
    for (int i = first; i <= last; ++i) {
        const RowRef row = mTree->GetOpenedRow(i);
        if (row && !mView.CanRowHaveChildren(row)) store->FindAndRequest(PathOf(row.get()));
    }
}

void MediaBrowserDirectoryView::RequestDirectoryContent(const UTF16String& path, const RowRef& row,
                                                        const UTF16String& context) {
    const UTF16String folder = PathUtils::ToNormalizedPath(path);
    if (folder.empty()) return;
    if (!row && folder != mDirectoryImpl->mRoot) {
        RemoveAllRows();
        mDirectoryImpl->mRoot = folder;
    }
    mDirectoryImpl->Request(folder, row.get(), context);
}

void MediaBrowserDirectoryView::RemoveAllRows() {
    DirectoryImpl& impl = *mDirectoryImpl;
    CancelExpansions();
    ReadAhead({});
    const RowVec rows = impl.mTree->GetTopLevelRows();
    for (const RowRef& row : rows) impl.ForgetRowAndBelow(row);
    if (const auto root = impl.mFolders.find(nullptr); root != impl.mFolders.end())
        impl.SetBusy(root->second, false);
    impl.mFolders.clear();
    impl.mStale.clear();
    impl.mHeld.Clear();
    if (!impl.mRoot.empty()) impl.mContentManager->GetImpl().Forget(std::exchange(impl.mRoot, {}), &impl);
    impl.mTree->RemoveAllRows();
}

void MediaBrowserDirectoryView::HoldDeliveries(bool hold) {
    mDirectoryImpl->Hold(hold);
}

void MediaBrowserDirectoryView::RefreshDirectoryContent(const RowRef& row) {
    const UTF16String path = row ? GetRowPath(row.get()) : mDirectoryImpl->mRoot;
    if (!path.empty()) RequestDirectoryContent(path, row, {});
}

void MediaBrowserDirectoryView::OnDirectoryChanged(const UTF16String& path) {
    mDirectoryImpl->ListAgainOrMark(PathUtils::ToNormalizedPath(path));
}

void MediaBrowserDirectoryView::UpdateTreeFromContent(const RowRef&, const UTF16String&,
                                                      const DirectoryContent&, const ContentDelivery&) {}

void MediaBrowserDirectoryView::OnRowOpenStateChanged(const RowRef& row, bool open) {
    if (row) mDirectoryImpl->OpenStateChanged(*row, open);
}

void MediaBrowserDirectoryView::InsertDirectoryContent(const RowRef& row, const DirectoryContent& content,
                                                       const ContentDelivery& delivery,
                                                       const UTF16String& root) {
    DirectoryImpl& impl = *mDirectoryImpl;
    const UTF16String folder = row ? GetRowPath(row.get()) : PathUtils::ToNormalizedPath(root);
    if (folder.empty()) return;
    const std::vector<RowRef>& rows = impl.mTree->GetChildRowsOf(row.get());
    if (content.size() > kFewItems)
        impl.ReserveRows(row.get(), std::max(rows.size() + content.size(), delivery.mCountOfAllParts));
    // Only what changes may be told twice.
    const bool isChange = delivery.mExtent == ContentDelivery::Extent::Change;
    const bool isEachNew = impl.IsEachNew(row.get(), delivery);
    std::vector<std::uint32_t> newItems;
    newItems.reserve(content.size());
    std::unordered_set<std::u16string_view> seen;
    std::vector<const Row*> kept;
    for (std::uint32_t i = 0; i < content.size(); ++i) {
        const std::u16string_view name = content[i].mName;
        if (const Row* known = isEachNew ? nullptr : impl.FindChild(row.get(), name))
            kept.push_back(known);
        else if (!isChange || seen.insert(name).second)
            newItems.push_back(i);
    }
    RowVec removed;
    if (delivery.mExtent == ContentDelivery::Extent::Whole && kept.size() < rows.size()) {
        std::ranges::sort(kept);
        std::ranges::copy_if(rows, std::back_inserter(removed),
                             [&](const RowRef& each) { return !std::ranges::binary_search(kept, each.get()); });
    }
    for (const UTF16String& path : delivery.mRemovedPaths)
        if (Row* gone = impl.FindChild(row.get(), NameInFolder(path, folder))) removed.emplace_back(gone);
    impl.Remove(removed);
    impl.Create(row.get(), content, newItems);
}

}  // namespace host
