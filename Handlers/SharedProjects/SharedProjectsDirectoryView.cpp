#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"

#include <algorithm>
#include <set>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/core/UserNotice.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "host/files/File.h"
#include "host/files/PathUtils.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects {

namespace {

constexpr char kOpenProductionLabel[] =
    "$$$/Vantor/Handlers/ZuProductionFolder/EmptyArea/OpenProduction=Open Production…";

}  // namespace

SharedProjectsDirectoryView::SharedProjectsDirectoryView(
    ProjectRef project, std::shared_ptr<MediaBrowserContentManager> contentManager, const UTF16String& rootPath,
    const std::shared_ptr<SharedProjectsTabView>& tabView)
    : MediaBrowserDirectoryView(std::move(project), std::move(contentManager)),
      mTabView(tabView),
      mItems(*this, GetTree(), tabView, mLifetime),
      mRestorer(std::make_unique<StateRestorer>(*this, mFolderOpener, [this] { GoOnWithWhatWaits(); })) {
    SetupTree();
    GetTree()->UI_SetNodeID("ZuProduction.DirectoryView.MediaBrowserMultiColumnTree");
    UI_SetNodeID("ZuProduction.DirectoryView");
    AddListener(kStation_ZuProductionFolderPanel, this);
    AddListener(kBackendProjectActivationStationID, this);
    ShowRoot(rootPath);
}

void SharedProjectsDirectoryView::SetupTree() {
    using View = SharedProjectsDirectoryView;
    UI_MultiColumnTree& tree = *GetTree();
    tree.SetRowDisclosureChangedCallback(Utils::BindCallback(this, &View::OnRowDisclosureChanged, mLifetime));
    tree.SetRowSingleClickDownCallback(Utils::BindCallback(this, &View::OnRowSingleClickDown, mLifetime));
    tree.SetRowSingleClickUpCallback(Utils::BindCallback(this, &View::OnRowSingleClickUp, mLifetime));
    tree.SetSelectedRowsDraggedCallback(Utils::BindCallback(this, &View::OnSelectedRowsDragged, mLifetime));
    tree.SetDropSupportCallback(Utils::BindCallback(this, &View::DropSupport, mLifetime));
    tree.SetSupportDragOverRow(true);
    tree.SetRowSelectionColorCallback({});
    tree.SetAccessibleName(
        Localizer::Get()->Localize("$$$/Vantor/Handlers/ZuProductionFolder/Accessible/DirectoryTree=Folders "
                                   "and projects of the production"));
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
        SetEmptyText("$$$/Vantor/Handlers/ZuProductionFolder/NoProductionOpen=No production is open",
                     {{kOpenProductionLabel, CommandID::kOpenProduction}});
    else if (!exists)
        SetEmptyText(
            "$$$/Vantor/Handlers/ZuProductionFolder/ProductionNotFound=The folder of this production "
            "cannot be found",
            {{kOpenProductionLabel, CommandID::kOpenProduction}});
    else
        SetEmptyText("", {});
    if (exists) RequestRootContent();
    MonitorRoot(exists ? rootPath : UTF16String());
}

void SharedProjectsDirectoryView::SetEmptyText(std::string_view key,
                                               std::initializer_list<EmptyCommand> commands) {
    const Localizer& localizer = *Localizer::Get();
    GetTree()->SetEmptyText(localizer.Localize(key));
    // Listings come often: buttons that show stay.
    if (std::exchange(mEmptyTextKey, key) == key) return;
    std::vector<UI_EmptyButton> buttons;
    for (const EmptyCommand& command : commands)
        buttons.push_back(
            {localizer.Localize(command.mLabelKey),
             std::make_shared<std::function<void()>>([tabView = mTabView, id = command.mCommandID] {
                 const auto panel = tabView.lock();
                 if (!panel) return;
                 const UTF16String reason = panel->DescribeWhyDisabled(id);
                 reason.empty() ? static_cast<void>(panel->ObeyCommand(Command(id))) : TellInStatusBar(reason);
             })});
    GetTree()->SetEmptyButtons(buttons);
}

/// A production that has only a trash is empty.
void SharedProjectsDirectoryView::SetRowsOfEmptyTree() {
    const std::vector<RowRef>& rows = GetTree()->GetTopLevelRows();
    const bool isTrashAlone =
        rows.size() == 1 && IsTheZuProductionTrashDirectory(GetRowPath(rows.front().get()));
    GetTree()->SetRowsOfEmptyTree(isTrashAlone ? 1 : 0);
}

void SharedProjectsDirectoryView::RemoveRowsOfOtherKind(const RowRef& row, const DirectoryContent& content) {
    ContentDelivery removal{ContentDelivery::Extent::Change, {}};
    for (const auto item : content) {
        if ((!item.mIsFolder && mFoldersCalledLikeProjects.empty()) || !IsVantorProjectFile(item.mName))
            continue;
        const UTF16String path = content.PathOf(item);
        const bool isNew = item.mIsFolder ? mFoldersCalledLikeProjects.insert(path).second
                                          : mFoldersCalledLikeProjects.erase(path) > 0;
        if (isNew && FindChildRow(row.get(), item.mName)) removal.mRemovedPaths.push_back(path);
    }
    if (!removal.mRemovedPaths.empty())
        InsertDirectoryContent(row, DirectoryContent(content.GetFolder()), removal,
                               SharedProjectsHandler::GetRootDirectory());
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

void SharedProjectsDirectoryView::AddRowToMaps(const RowRef& row, const DirectoryRowData& data) {
    if (!row) return;
    MediaBrowserDirectoryView::AddRowToMaps(row, data);
    const bool isProject = !data.mIsFolder && IsVantorProjectFile(data.mName);
    SharedProjectsItemTree::AddRow(row, isProject);
    // Nobody knows what is in a folder before it has been listed, and an empty one can be opened too.
    if (!isProject) GetTree()->SetRowHasCustomChild(row.get(), true);
}

void SharedProjectsDirectoryView::RemoveRowFromMaps(const RowRef& row) {
    if (!mItems.RemoveRow(row) && !mFolderOpener.IsIdle()) mFolderOpener.OnFolderRemoved(GetRowPath(row.get()));
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

void SharedProjectsDirectoryView::ListenToMessage(const Message& message) {
    if (const auto* opened = MessageCast<ZuProductionFolderOpenedMessage>(message))
        OnZuProductionOpened(opened->GetPath());
    else if (const auto* closed = MessageCast<ZuProductionFolderClosedMessage>(message))
        OnZuProductionClosed(closed->GetPath());
    else if (!mItems.ListenToMessage(message))
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
    CancelSlowSecondClick();
    GetTree()->GetCellEditor().End();
    mRestorer->Clear();
    mPendingDirectoryChanges.clear();
    mFoldersCalledLikeProjects.clear();
    mAwaitedPaths.clear();
    mFoldersToOpen.clear();
    mItems.ForgetRemovals();
    RemoveAllRows();
}

}  // namespace HandlerSharedProjects
