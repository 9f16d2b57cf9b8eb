#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"

#include <algorithm>
#include <set>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "host/files/File.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects {

namespace {

constexpr int kSpinnerInCentre = 1;

}  // namespace

SharedProjectsDirectoryView::SharedProjectsDirectoryView(
    ProjectRef project, std::shared_ptr<MediaBrowserContentManager> contentManager, const UTF16String& rootPath,
    const std::shared_ptr<SharedProjectsTabView>& tabView)
    : MediaBrowserDirectoryView(std::move(project), std::move(contentManager)),
      mTabView(tabView),
      mRestorer(std::make_unique<StateRestorer>(*this, mFolderOpener, [this] { GoOnWithWhatWaits(); })) {
    SetupTree();
    GetTree()->UI_SetNodeID("ZuProduction.DirectoryView.MediaBrowserMultiColumnTree");
    UI_SetNodeID("ZuProduction.DirectoryView");
    SetupHeaderRow();
    mQueuedSort = new QueueOnlyOnce(GetRegisteredMainThread(), [this, lifetime = std::weak_ptr(mLifetime)] {
        if (!lifetime.expired()) SortRows();
    });
    AddListener(kStation_ZuProductionFolderPanel, this);
    AddListener(kBackendProjectActivationStationID, this);
    ShowRoot(rootPath);
}

void SharedProjectsDirectoryView::SetupTree() {
    using View = SharedProjectsDirectoryView;
    UI_MultiColumnTree& tree = *GetTree();
    tree.SetRowVisibilityChangedCallback(Utils::BindCallback(this, &View::OnRowVisibilityChanged, mLifetime));
    tree.SetCellSortDataFunction(Utils::BindCallback(this, &View::GetCellSortDataAsString, mLifetime));
    tree.SetRowDisclosureChangedCallback(Utils::BindCallback(this, &View::OnRowDisclosureChanged, mLifetime));
    tree.SetColumnMovedCallback(Utils::BindCallback(this, &View::OnColumnMoved, mLifetime));
    tree.SetColumnResizedCallback(Utils::BindCallback(this, &View::OnColumnResized, mLifetime));
    tree.SetCellAccessibleTextFunction(Utils::BindCallback(this, &View::GetCellAccessibleText, mLifetime));
    tree.SetRowSelectionColorCallback({});
    tree.SetSupportMultipleSelections(true);
    tree.SetSupportNoneSelected(true);
    tree.SetSupportDeselectAllOnEmptyTreeClick(true);
    tree.SetSpinnerAlignment(kSpinnerInCentre);
    tree.SetAccessibleName(
        Localizer::Get()->Localize("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/DirectoryTree=Folders "
                                   "and projects of the production"));
}

void SharedProjectsDirectoryView::SetupHeaderRow() {
    using View = SharedProjectsDirectoryView;
    mHeaderRow = new UI_MultiColumnTreeHeaderRow(*GetTree());
    GetTree()->SetHeaderRow(mHeaderRow);
    Columns::SetupHeaderRow(mHeaderRow, Utils::BindCallback(this, &View::ColumnSortStringIsLess, mLifetime),
                            Utils::BindCallback(this, &View::OnSortChanged, mLifetime));
}

SharedProjectsDirectoryView::~SharedProjectsDirectoryView() {
    mLifetime.reset();
    try {
        RemoveListener(kBackendProjectActivationStationID, this);
        RemoveListener(kStation_ZuProductionFolderPanel, this);
        MonitorRoot({});
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void SharedProjectsDirectoryView::MonitorRoot(const UTF16String& rootPath) {
    if (!mMonitoredRoot.empty()) DirectoryChangeMonitor::StopMonitoringDirectory(mMonitoredRoot, true);
    mMonitoredRoot = rootPath;
    if (!mMonitoredRoot.empty()) DirectoryChangeMonitor::MonitorDirectory(mMonitoredRoot, true, true);
}

bool SharedProjectsDirectoryView::IsRootThere(const UTF16String& rootPath) {
    return !rootPath.empty() && File(rootPath).Exists();
}

void SharedProjectsDirectoryView::ShowRoot(const UTF16String& rootPath) {
    const bool exists = IsRootThere(rootPath);
    if (rootPath.empty())
        SetEmptyText("$$$/Vantor/Handlers/ZuProductionFolder/NoProductionOpen=No production is open");
    else if (!exists)
        SetEmptyText(
            "$$$/Vantor/Handlers/ZuProductionFolder/ProductionNotFound=The folder of this production "
            "cannot be found");
    else
        SetEmptyText("");
    if (exists) RequestRootContent();
    MonitorRoot(exists ? rootPath : UTF16String());
}

void SharedProjectsDirectoryView::SetEmptyText(std::string_view key) {
    GetTree()->SetEmptyText(Localizer::Get()->Localize(key));
}

void SharedProjectsDirectoryView::SetRowHeight(float height) {
    GetTree()->SetRowHeight(height);
}

bool SharedProjectsDirectoryView::IsFileRow(const RowRef& row) const {
    return GetMetadata(row) != nullptr;
}

UTF16String SharedProjectsDirectoryView::GetPathOfKind(const RowRef& row) const {
    const UTF16String path = GetRowPath(row.get());
    return IsFileRow(row) ? path : PathUtils::AddTrailingSlash(path);
}

bool SharedProjectsDirectoryView::IsProject(const UTF16String& path) const {
    return IsVantorProjectFile(path) && !mFoldersCalledLikeProjects.contains(path);
}

void SharedProjectsDirectoryView::RemoveRowsOfOtherKind(const RowRef& row, const DirectoryContent& content) {
    ContentDelivery removal{ContentDelivery::Extent::Change, {}};
    for (const PropertyMap& item : content) {
        const bool isFolder = item.Find<bool>(MediaBrowserContentManager::kIsDirectoryField);
        if (!isFolder && mFoldersCalledLikeProjects.empty()) continue;
        const auto* path = item.Find<UTF16String>(MediaBrowserContentManager::kPathField);
        if (!path || !IsVantorProjectFile(*path)) continue;
        const bool isNew = isFolder ? mFoldersCalledLikeProjects.insert(*path).second
                                    : mFoldersCalledLikeProjects.erase(*path) > 0;
        if (isNew && FindChildRow(row.get(), PathUtils::GetFullFilePart(*path)))
            removal.mRemovedPaths.push_back(*path);
    }
    if (!removal.mRemovedPaths.empty())
        InsertDirectoryContent(row, {}, removal, SharedProjectsHandler::GetRootDirectory());
}

RowRef SharedProjectsDirectoryView::GetRowFromPath(const UTF16String& path) const {
    const UTF16String root = PathUtils::AddTrailingSlash(SharedProjectsHandler::GetRootDirectory());
    const UTF16String normalized = PathUtils::ToNormalizedPath(path);
    if (root.empty() || !normalized.starts_with(root)) return {};
    RowRef row;
    for (std::size_t begin = root.size(); begin < normalized.size();) {
        const std::size_t end =
            std::min(normalized.find(PathUtils::GetPathSeparator(), begin), normalized.size());
        row = FindChildRow(row.get(), normalized.substr(begin, end - begin));
        if (!row) return {};
        begin = end + 1;
    }
    return row;
}

std::size_t SharedProjectsDirectoryView::GetOpenedRowsCount() const {
    return GetTree()->CountOpenedRows();
}

void SharedProjectsDirectoryView::AddRowToMaps(const RowRef& row, const DirectoryRowData& data) {
    if (!row) return;
    row->SetBackgroundColorID(kRowBackgroundColorID);
    MediaBrowserDirectoryView::AddRowToMaps(row, data);
    UTF16String path = GetRowPath(row.get());
    if (!IsProject(path)) {
        // Nobody knows what is in it before it has been listed, and an empty one can be opened too.
        GetTree()->SetRowHasCustomChild(row.get(), true);
        return;
    }
    const auto entry = mRowToMetadata.insert_or_assign(
        mRowToMetadata.end(), row, MetadataRequest{Columns::FileMetadata(std::move(path)), false});
    // The row is sorted when it is laid out; nothing else needs to be.
    if (IsRowExposed(row))
        entry->second.mMetadata.Update(GetTree()->IsRowVisible(row.get()), mHeaderRow->GetSortColumn());
    else
        entry->second.mIsStale = true;
}

void SharedProjectsDirectoryView::RemoveRowFromMaps(const RowRef& row) {
    if (mRowToMetadata.erase(row) == 0 && !mFolderOpener.IsIdle())
        mFolderOpener.OnFolderRemoved(GetRowPath(row.get()));
    MediaBrowserDirectoryView::RemoveRowFromMaps(row);
}

bool SharedProjectsDirectoryView::CanRowHaveChildren(const RowRef& row) const {
    return !IsFileRow(row);
}

bool SharedProjectsDirectoryView::CanOpenRow(const RowRef& row) const {
    return !IsFileRow(row);
}

bool SharedProjectsDirectoryView::RowIsVolume(const RowRef&) const {
    return false;
}

bool SharedProjectsDirectoryView::RowIsVolumeContainer(const RowRef&) const {
    return false;
}

SharedProjectsDirectoryView::MetadataRequest* SharedProjectsDirectoryView::FindMetadata(const RowRef& row) {
    const auto entry = mRowToMetadata.find(row);
    if (entry != mRowToMetadata.end()) return &entry->second;
    UTF16String path = GetRowPath(row.get());
    if (!IsProject(path)) return nullptr;
    return &(mRowToMetadata[row] = {Columns::FileMetadata(std::move(path)), false});
}

const Columns::FileMetadata* SharedProjectsDirectoryView::GetMetadata(const RowRef& row) const {
    const auto entry = mRowToMetadata.find(row);
    return entry == mRowToMetadata.end() ? nullptr : &entry->second.mMetadata;
}

bool SharedProjectsDirectoryView::IsRowExposed(const RowRef& row) {
    for (RowRef parent = row->GetParentRow(); parent; parent = parent->GetParentRow())
        if (!parent->IsOpen()) return false;
    return true;
}

void SharedProjectsDirectoryView::UpdateMetadataForRow(const RowRef& row, bool onlyIfStale) {
    UpdateMetadataForRow(row, onlyIfStale, IsRowExposed(row));
}

void SharedProjectsDirectoryView::UpdateMetadataForRow(const RowRef& row, bool onlyIfStale, bool exposed) {
    MetadataRequest* request = FindMetadata(row);
    if (!request) return;
    if (exposed) {
        if (!onlyIfStale || request->mIsStale) UpdateMetadata(*request, row);
    } else if (!onlyIfStale) {
        request->mIsStale = true;
    }
}

void SharedProjectsDirectoryView::UpdateMetadata(MetadataRequest& request, const RowRef& row) {
    const bool isVisible = GetTree()->IsRowVisible(row.get());
    const bool hasSortKeyChanged = request.mMetadata.Update(isVisible, mHeaderRow->GetSortColumn());
    request.mIsStale = false;
    // While all sort keys stay as they were, so does the order: scrolling sorts nothing.
    if (hasSortKeyChanged) mQueuedSort->Queue();
}

void SharedProjectsDirectoryView::UpdateRow(const RowRef& row) {
    UpdateRow(row, IsRowExposed(row));
}

void SharedProjectsDirectoryView::UpdateRow(const RowRef& row, bool exposed) {
    MediaBrowserDirectoryView::UpdateRow(row);
    UpdateMetadataForRow(row, false, exposed);
    AddNameCellView(row);
}

void SharedProjectsDirectoryView::AddNameCellView(const RowRef& row) {
    // Composing the path of a row that nobody sees would be the larger part of the work.
    if (!GetTree()->IsRowVisible(row.get())) return;
    const Columns::FileMetadata* metadata = GetMetadata(row);
    Columns::AddNameCellView(*GetTree(), row, GetPathOfKind(row),
                             metadata ? metadata->GetLockState() : std::nullopt);
}

void SharedProjectsDirectoryView::ListenToMessage(const Message& message) {
    if (const auto* opened = MessageCast<ZuProductionFolderOpenedMessage>(message))
        OnZuProductionOpened(opened->GetPath());
    else if (const auto* closed = MessageCast<ZuProductionFolderClosedMessage>(message))
        OnZuProductionClosed(closed->GetPath());
    else if (const auto* projectOpened = MessageCast<ProjectOpenedMessage>(message))
        OnProjectOpened(projectOpened->GetProject());
    else if (const auto* projectClosed = MessageCast<ProjectClosedMessage>(message))
        OnProjectClosed(projectClosed->GetProject());
    else if (const auto* readOnly = MessageCast<ReadOnlyStateChangedMessage>(message))
        OnReadOnlyStateChanged(readOnly->GetProject());
    else
        MediaBrowserDirectoryView::ListenToMessage(message);
}

void SharedProjectsDirectoryView::OnZuProductionOpened(const UTF16String& path) {
    const auto tabView = mTabView.lock();
    if (tabView) tabView->SetDeferredRenameRowPath(path);
    // Opened once more, the production that shows is only asked for its content.
    if (!mMonitoredRoot.empty() && mMonitoredRoot == SharedProjectsHandler::GetRootDirectory())
        return RequestRootContent();
    LeaveRoot();
    ShowRoot(SharedProjectsHandler::GetRootDirectory());
    if (tabView) tabView->OnTreeChanged();
}

void SharedProjectsDirectoryView::OnZuProductionClosed(const UTF16String&) {
    LeaveRoot();
    ShowRoot(SharedProjectsHandler::GetRootDirectory());
    if (const auto tabView = mTabView.lock()) tabView->OnTreeChanged();
}

void SharedProjectsDirectoryView::LeaveRoot() {
    mRestorer->Clear();
    mPendingDirectoryChanges.clear();
    mFoldersCalledLikeProjects.clear();
    mAwaitedPaths.clear();
    mFoldersToOpen.clear();
    mSelectionAfterRemoval = {};
    RemoveAllRows();
}

void SharedProjectsDirectoryView::OnProjectOpened(const ProjectRef& project) {
    UpdateRowOfProject(project);
}

void SharedProjectsDirectoryView::OnProjectClosed(const ProjectRef& project) {
    UpdateRowOfProject(project);
}

void SharedProjectsDirectoryView::OnReadOnlyStateChanged(const ProjectRef& project) {
    UpdateRowOfProject(project);
}

void SharedProjectsDirectoryView::UpdateRowOfProject(const ProjectRef& project) {
    // Whoever opened it through a link has it open under two names.
    for (const UTF16String& path :
         std::set{project->GetProjectPath(), Utilities::GetRealProjectPath(project)}) {
        if (!IsWithinCurrentZuProductionFolder(path)) continue;
        if (const RowRef row = GetRowFromPath(path)) UpdateRow(row);
    }
}

}  // namespace HandlerSharedProjects
