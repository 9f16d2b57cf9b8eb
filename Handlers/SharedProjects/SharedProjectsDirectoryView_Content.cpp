// What the volume says: deliveries of folder contents and reports of changes.
#include <algorithm>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Logging.h"
#include "host/files/PathUtils.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"

namespace HandlerSharedProjects {

namespace {

using Extent = ContentDelivery::Extent;

/// What a delivery says of the rows.
struct ShownContent {
    /// The items that get rows, in the delivery's order.
    DirectoryContent mFiltered;
    /// All items do, as they mostly do: then `mFiltered` is empty.
    bool mIsAll = true;
    /// Their natural order is that of their name keys.
    bool mIsInNameOrder = true;
};

bool IsShown(const DirectoryContent& content, const DirectoryContent::Item& item) {
    return item.mIsFolder || IsVantorProjectFile(item.mName) || PathUtils::IsDirectory(content.PathOf(item));
}

/// Whatever is called like the trash stands last, and so does the trash itself; a folder shows its whole name.
bool IsKeyShownName(const DirectoryContent& content, const DirectoryContent::Item& item, bool isTop) {
    if (!item.mIsFolder) return !Columns::IsSortedLast(Columns::GetDisplayName(item.mName));
    if (IsVantorProjectFile(item.mName) || Columns::IsSortedLast(item.mName)) return false;
    return !isTop || !IsTheZuProductionTrashDirectory(content.PathOf(item));
}

/// What gets no row is added to what a change has removed: a folder whose name now stands for some other file
/// has no row any more.
ShownContent FilterContent(const DirectoryContent& content, ContentDelivery& delivery, bool isTop) {
    ShownContent shown{DirectoryContent(content.GetFolder())};
    shown.mIsAll = std::ranges::all_of(content, [&](const auto& item) { return IsShown(content, item); });
    shown.mIsInNameOrder =
        delivery.mExtent != Extent::Change &&
        std::ranges::all_of(content, [&](const auto& item) { return IsKeyShownName(content, item, isTop); });
    if (shown.mIsAll) return shown;
    for (const auto item : content) {
        if (IsShown(content, item))
            shown.mFiltered.Add(item.mName, item.mIsFolder);
        else if (delivery.mExtent == Extent::Change)
            delivery.mRemovedPaths.push_back(content.PathOf(item));
    }
    return shown;
}

}  // namespace

void SharedProjectsDirectoryView::RequestRootContent() {
    const UTF16String root = SharedProjectsHandler::GetRootDirectory();
    if (IsRootThere(root)) RequestDirectoryContent(root, {}, {});
}

void SharedProjectsDirectoryView::RefreshDirectoryContent(const RowRef& row) {
    if (row)
        MediaBrowserDirectoryView::RefreshDirectoryContent(row);
    else
        RequestRootContent();
}

void SharedProjectsDirectoryView::UpdateTreeFromContent(const RowRef& row, const UTF16String& directoryPath,
                                                        const DirectoryContent& content,
                                                        const ContentDelivery& delivery) {
    try {
        mRestorer->OnDelivery(directoryPath, delivery);
        if (delivery.mSystemError == 0 && PathUtils::ExistsOnDisk(directoryPath, true))
            UpdateRowsFromContent(row, directoryPath, content, delivery);
    } catch (...) {
        // Whoever waits for this content goes on with what there is.
        LogCurrentException(__PRETTY_FUNCTION__);
    }
    mFolderOpener.OnContentUpdated(directoryPath, delivery.mIsLast);
    const auto tabView = mTabView.lock();
    if (tabView && tabView->IsCreated()) GoOnWithWhatWaits();
}

void SharedProjectsDirectoryView::UpdateRowsFromContent(const RowRef& row, const UTF16String& directoryPath,
                                                        const DirectoryContent& content,
                                                        const ContentDelivery& delivery) {
    if (delivery.mIsFactsOnly)
        UpdateFactsOfRows(row, content, delivery);
    else
        InsertRowsFromContent(row, content, delivery);
    if (delivery.mAreFactsComplete) mItems.OnFactsComplete();
    if (!row) SetRowsOfEmptyTree();
    if (!row && delivery.mIsLast) {
        mRestorer->OnRootListed();
        SetEmptyText("$$$/Vantor/Handlers/ZuProductionFolder/ProductionIsEmpty=This production is empty",
                     {{"$$$/Vantor/Handlers/ZuProductionFolder/NewProjectButtonToolTip=New Project",
                       CommandID::kNewProject},
                      {"$$$/Vantor/Handlers/ZuProductionFolder/EmptyArea/AddProject=Add Project…",
                       CommandID::kAddProject}});
    }
    const auto tabView = mTabView.lock();
    if (!tabView || !tabView->IsCreated()) return;
    tabView->OnTreeChanged();
    SelectDeferredRenameRow(directoryPath, delivery);
    mItems.OnRowsRemoved();
}

void SharedProjectsDirectoryView::InsertRowsFromContent(const RowRef& row, const DirectoryContent& content,
                                                        const ContentDelivery& delivery) {
    ContentDelivery rowDelivery = delivery;
    const ShownContent filtered = FilterContent(content, rowDelivery, !row);
    const DirectoryContent& shown = filtered.mIsAll ? content : filtered.mFiltered;
    RemoveRowsOfOtherKind(row, content);
    const std::size_t countBefore = GetTree()->GetChildRowsOf(row.get()).size();
    InsertDirectoryContent(row, shown, rowDelivery, SharedProjectsHandler::GetRootDirectory());
    // Rows that have just been made are up to date.
    const bool areAllNew = GetTree()->GetChildRowsOf(row.get()).size() == countBefore + shown.size();
    if (!areAllNew) UpdateChildRows(row, shown, delivery);
    // New rows count, and can be selected, from here on.
    GetTree()->LayoutAfterAppendRow(row.get(), filtered.mIsInNameOrder);
}

/// Of more items than are in view most are not: looking for their rows would be the larger part of the work.
void SharedProjectsDirectoryView::UpdateFactsOfRows(const RowRef& row, const DirectoryContent& content,
                                                    const ContentDelivery& delivery) {
    if (content.size() <= mItems.CountRowsInView()) return UpdateChildRows(row, content, delivery);
    if (!row || (row->IsOpen() && SharedProjectsItemTree::IsRowExposed(row))) mItems.OnFactsChanged();
}

void SharedProjectsDirectoryView::UpdateChildRows(const RowRef& row, const DirectoryContent& content,
                                                  const ContentDelivery& delivery) {
    const bool exposed = !row || (row->IsOpen() && SharedProjectsItemTree::IsRowExposed(row));
    if (delivery.mExtent == ContentDelivery::Extent::Whole) {
        for (const RowRef& child : GetTree()->GetChildRowsOf(row.get())) UpdateRow(child, exposed);
        return;
    }
    // The delivery says nothing of the other rows, and there may be ten thousand of them.
    for (const auto item : content)
        if (const RowRef child = FindChildRow(row.get(), item.mName)) UpdateRow(child, exposed);
}

void SharedProjectsDirectoryView::SelectDeferredRenameRow(const UTF16String& directoryPath,
                                                          const ContentDelivery& delivery) {
    const auto tabView = mTabView.lock();
    const UTF16String path = tabView->GetDeferredRenameRowPath();
    if (path.empty()) return;
    const RowRef row = GetRowFromPath(path);
    if (row) {
        GetTree()->SelectRow(row.get(), true, true, true);
        RenameLater(row);
    }
    // When all of its folder has been told and it was not there, it will not come. A listing under way may be
    // older than what has just been made, which is awaited.
    const bool isMissing = delivery.mIsLast && std::ranges::count(mAwaitedPaths, path) == 0 &&
                           PathUtils::AddTrailingSlash(directoryPath) == PathUtils::GetFullDirectoryPart(path);
    if (row || isMissing) tabView->SetDeferredRenameRowPath({});
}

void SharedProjectsDirectoryView::OnRowOpenStateChanged(const RowRef& row, bool open) {
    MediaBrowserDirectoryView::OnRowOpenStateChanged(row, open);
    mItems.OnRowOpenStateChanged(row, open);
}

void SharedProjectsDirectoryView::OnDirectoryChanged(const UTF16String& path) {
    if (IsHoldingBack())
        mPendingDirectoryChanges.insert(path);
    else
        MediaBrowserDirectoryView::OnDirectoryChanged(path);
}

void SharedProjectsDirectoryView::SetPauseUpdates(bool pause) {
    if (pause == mPauseUpdates) return;
    mPauseUpdates = pause;
    UpdateHolding();
}

void SharedProjectsDirectoryView::UpdateHolding() {
    // What comes now may lead to holding back once more; what is left then goes on waiting.
    HoldDeliveries(IsHoldingBack());
    mItems.HoldUpdates(IsHoldingBack());
    if (!IsHoldingBack()) ExecutePendingDirectoryChanges();
}

void SharedProjectsDirectoryView::ExecutePendingDirectoryChanges() {
    // What is queued again while replaying goes into the set anew, and stays there.
    const std::set<UTF16String> changes = std::exchange(mPendingDirectoryChanges, {});
    for (const UTF16String& path : changes) OnDirectoryChanged(path);
}

}  // namespace HandlerSharedProjects
