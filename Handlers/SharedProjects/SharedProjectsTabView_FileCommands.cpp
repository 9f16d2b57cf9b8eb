// Commands on files and folders: making, copying, trashing and revealing them.
#include <algorithm>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsCommands.h"
#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/core/UserNotice.h"
#include "host/dialogs/AskOpenFile.h"
#include "host/dialogs/MessageBox.h"
#include "host/dialogs/SimpleInputBox.h"
#include "host/files/Dir.h"
#include "host/files/FileException.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/framework/SystemReveal.h"
#include "host/framework/Workspace.h"
#include "host/project/DocumentManager.h"
#include "host/project/ItemOperations.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"
#include "host/toolkit/DataTransfer.h"

namespace HandlerSharedProjects {

namespace {

TopLevelWindow* GetDialogParent() {
    Workspace* workspace = Workspace::Instance().GetPtr();
    return workspace ? workspace->GetMainTopLevelWindow() : nullptr;
}

// New Folder.

bool AskFolderName(UTF16String& name) {
    name = ZString("$$$/Vantor/Handlers/ZuProductionFolder/Untitled=Untitled");
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/NameFolderDialog/Title=New Folder");
    const UTF16String label = ZString("$$$/Vantor/Handlers/ZuProduction/NameItemDialog/TextBoxLabel=Name");
    if (!SimpleInputBox(GetDialogParent(), title, label, name)) return false;
    name = Utils::TrimBlanks(name);
    return true;
}

void TellInvalidName(const UTF16String& name, const UTF16String& folder) {
    Utils::TellInvalidName(
        "$$$/Vantor/Handlers/ZuProduction/NameItemDialog/InvalidNameWarning/Title=Invalid Name",
        "$$$/Vantor/Handlers/ZuProduction/NameItemDialog/InvalidNameWarning/Message=A valid name cannot be "
        "empty and cannot contain any of the following characters: \n",
        name, folder);
}

void TellDirectoryExists() {
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/MessageBox/DirectoryExistsTitle=Directory Exists");
    const UTF16String text = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/MessageBox/DirectoryExistsMessage=Directory already exists");
    MessageBox(title, text);
}

void TellCreationRefused(const FileException& exception) {
    const UTF16String title =
        ZString("$$$/Vantor/Handlers/ZuProductionFolder/CreateFolderRefused/Title=Folder Not Created");
    const UTF16String reason = DescribeSystemError(exception.SystemError());
    const UTF16String text = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/CreateFolderRefused/Message=The folder “@0” could not be "
        "created: @1",
        {exception.Path(), reason});
    MessageBox(title, text);
}

/// Makes the folder; when the disk refuses, the user is told, and it throws.
void MakeFolder(const UTF16String& path) {
    try {
        Dir(path).Create();
    } catch (const FileException& exception) {
        TellCreationRefused(exception);
        throw;
    }
}

void TellHiddenName(const UTF16String& name) {
    Utils::TellHiddenName(
        "$$$/Vantor/Handlers/ZuProductionFolder/HiddenFolder/Title=Folder Created",
        "$$$/Vantor/Handlers/ZuProductionFolder/HiddenFolder/Message=The folder “@0” was created, but it does "
        "not show here: its name begins with a dot.",
        name);
}

/// Makes a folder named by the user in `targetFolder`; returns its path, empty when none was made.
UTF16String CreateNamedFolder(const UTF16String& targetFolder) {
    UTF16String name;
    if (!AskFolderName(name)) return {};
    // A project's name would mislead.
    if (IsVantorProjectFile(name) || !PathUtils::IsValidFileName(name, targetFolder)) {
        TellInvalidName(name, targetFolder);
        return {};
    }
    const UTF16String path = PathUtils::CombinePaths(targetFolder, name);
    if (Dir(path).Exists()) {
        TellDirectoryExists();
        return {};
    }
    MakeFolder(path);
    TellHiddenName(name);
    return path;
}

// Move to Trash.

/// Why rows, perhaps of another window, cannot be dropped onto the button.
UTF16String DescribeWhyNotDropped(const UTF16StringVec& paths) {
    for (const UTF16String& path : paths)
        if (UTF16String reason = Utils::DescribeWhyForeign(path); !reason.empty()) return reason;
    return Utils::DescribeWhyNotDeleted(paths);
}

void TellWhyNotDropped(const OS_ReceiveData& received) {
    if (!received.HasType(kDirectoryRowDragType)) return;
    const UTF16String reason = DescribeWhyNotDropped(received.GetFilePaths());
    if (!reason.empty()) TellInStatusBar(reason);
}

/// Leaves in `paths` what may go to the trash; returns for each of the others a sentence that says why not.
UTF16StringVec TakeOutWhatStays(UTF16StringVec& paths) {
    const UTF16StringVec found = FindReasonsToStay(paths);
    UTF16StringVec going, reasons;
    for (std::size_t i = 0; i < paths.size(); ++i)
        if (!found[i].empty())
            reasons.push_back(found[i]);
        else if (Utils::CanAllBeDeleted({paths[i]}))
            going.push_back(paths[i]);
        else
            reasons.push_back(
                ZString("$$$/Vantor/Desk/Files/LockedUnknown=“@0” was not moved. Somebody has it open.",
                        {PathUtils::GetFullFilePart(paths[i])}));
    paths = std::move(going);
    return reasons;
}

// Make a Copy.

/// Copies the whole folder, and makes the projects in the copy projects of the production.
void CopyFolder(const UTF16String& path, const UTF16String& copyPath) {
    MakeFolder(copyPath);
    Utilities::CopyDirectoryTree(path, copyPath);
    const UTF16StringVec projects = FileSearch::FindFiles(copyPath, GetProjectFileExtension());
    if (!projects.empty()) AddProjectsToZuProduction(projects, copyPath);
}

/// Copies each item beside itself; `copies` becomes where the copies are or will be.
void CopyBesideThemselves(const UTF16StringVec& paths, UTF16StringVec& copies) {
    const UTF16StringVec copyPaths = GetZuProductionItemCopyPaths(paths);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (PathUtils::IsDirectory(paths[i]))
            CopyFolder(paths[i], copyPaths[i]);
        else
            AddProjectToZuProduction(paths[i], copyPaths[i]);
        copies.push_back(copyPaths[i]);
    }
}

CommandStatus FindCreationStatus(const SharedProjectsTabView& panel) {
    const std::size_t count = panel.CountSelectedRows();
    if (count == 0) return EnabledIf(!SharedProjectsHandler::GetRootDirectory().empty(), kNoProductionIsOpen);
    if (count > 1)
        return ZString(
            "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/SeveralPlaces=Several items are selected. Select the one "
            "folder or project that shows where the new item belongs.");
    return EnabledIf(
        !panel.GetShownItems()->IsAnySelected(
            [](const auto& path) { return IsInZuProductionTrash(path, true); }),
        "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/PlaceInTrash=Nothing new can be put into the trash.");
}

bool CanCreateItems(const SharedProjectsTabView& panel) {
    return FindCreationStatus(panel)->empty();
}

/// The selected folder, or the folder that holds the selected project; without a selection the production's.
UTF16String GetTargetFolder(const SharedProjectsTabView& panel) {
    const UTF16StringVec selected = panel.GetSelectedPaths();
    if (selected.empty()) return SharedProjectsHandler::GetRootDirectory();
    const UTF16String path = PathUtils::ToNormalizedPath(selected.front());
    return PathUtils::IsDirectory(path) ? path
                                        : PathUtils::ToNormalizedPath(PathUtils::GetFullDirectoryPart(path));
}

CommandStatus OnNewFolderCommandStatus(const SharedProjectsTabView& panel) {
    if (!panel.IsCreated()) return {};
    return FindCreationStatus(panel);
}

bool OnNewFolderCommand(SharedProjectsTabView& panel) {
    if (!panel.IsCreated()) return false;
    if (!CanCreateItems(panel)) return true;
    try {
        const UTF16String path = CreateNamedFolder(GetTargetFolder(panel));
        if (path.empty()) return true;
        Utils::LogUsage("DirectoryTree", "NewFolder");
        panel.ShowCreatedItems({path});
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
    return true;
}

bool OnNewProjectCommand(SharedProjectsTabView& panel) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents || !CanCreateItems(panel)) return true;
    const UTF16String path = documents->CreateProject(GetTargetFolder(panel));
    Utils::LogUsage("DirectoryTree", "NewProject");
    if (path.empty()) return true;
    panel.SetDeferredRenameRowPath(path);
    panel.ShowCreatedItems({path});
    return true;
}

bool OnAddProjectCommand(SharedProjectsTabView& panel) {
    if (!CanCreateItems(panel)) return true;
    const UTF16String targetFolder = GetTargetFolder(panel);
    const UTF16String title = ZString("$$$/Vantor/Handlers/ZuProductionFolder/AddProject=Add Project");
    const UTF16String typeLabel = ZString(
        "$$$/Vantor/Handlers/ZuProductionFolder/ProjectFileOpenType=Orlen Vantor Pro Project (*.zuproj)");
    UTF16StringVec paths;
    if (AskOpenFile(title, paths, typeLabel, u"*.ZUPROJ", GetProjectFileExtension(), GetDialogParent()))
        panel.ShowCreatedItems(Utils::AddProjectsToZuProductionWithPrompt(paths, targetFolder));
    return true;
}

CommandStatus OnDeleteItemCommandStatus(const SharedProjectsTabView& panel) {
    if (!panel.IsCreated()) return {};
    return panel.DescribeWhySelectionStays();
}

bool OnDeleteItemCommand(SharedProjectsTabView& panel) {
    if (!panel.IsCreated()) return false;
    if (SharedProjectsItemTree* items = panel.GetShownItems()) items->SelectNextWhenSelectionHasGone();
    panel.MoveSelectionToTrash("DeleteCommand");
    return true;
}

CommandStatus OnRevealRootInSystemCommandStatus(const SharedProjectsTabView&) {
    return EnabledIf(!SharedProjectsHandler::GetRootDirectory().empty(), kNoProductionIsOpen);
}

bool OnRevealRootInSystemCommand(SharedProjectsTabView&) {
    const UTF16String root = SharedProjectsHandler::GetRootDirectory();
    if (!root.empty()) RevealFolder(root);
    return true;
}

CommandStatus FindSelectionStatus(const SharedProjectsTabView& panel) {
    return EnabledIf(panel.CountSelectedRows() > 0, kNothingIsSelected);
}

bool OnRevealItemInSystemCommand(SharedProjectsTabView& panel) {
    const UTF16StringVec paths = panel.GetSelectedPaths();
    if (paths.size() == 1)
        RevealAndSelectFile(paths.front());
    else if (!paths.empty())
        RevealAndSelectFiles(paths);
    return true;
}

CommandStatus OnRenameItemCommandStatus(const SharedProjectsTabView& panel) {
    if (panel.CountSelectedRows() == 0) return ZString(kNothingIsSelected);
    if (panel.GetTreeView().GetViewType() == TreeViewType::SearchResultsView)
        return ZString(
            "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/RenameHit=Nothing can be renamed among the results of a "
            "search.");
    return panel.GetTreeView().GetDirectoryView()->DescribeWhySelectionIsNotRenamed();
}

bool OnRenameItemCommand(SharedProjectsTabView& panel) {
    if (panel.AreTreeViewsCreated()) panel.GetTreeView().GetDirectoryView()->RenameSelection();
    return true;
}

bool OnMakeACopyCommand(SharedProjectsTabView& panel) {
    UTF16StringVec copies;
    try {
        CopyBesideThemselves(panel.GetSelectedNonRedundantPaths(), copies);
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
    if (panel.AreTreeViewsCreated() && !copies.empty())
        panel.GetTreeView().GetDirectoryView()->SelectWhenShown(copies);
    return true;
}

}  // namespace

std::span<const PanelCommand> GetFileCommands() {
    static constexpr PanelCommand kCommands[] = {
        {CommandID::kNewFolder, OnNewFolderCommandStatus, OnNewFolderCommand},
        {CommandID::kNewProject, FindCreationStatus, OnNewProjectCommand},
        {CommandID::kAddProject, FindCreationStatus, OnAddProjectCommand},
        {CommandID::kRenameItem, OnRenameItemCommandStatus, OnRenameItemCommand},
        {CommandID::kRevealRootInSystem, OnRevealRootInSystemCommandStatus, OnRevealRootInSystemCommand},
        {CommandID::kRevealItemInSystem, FindSelectionStatus, OnRevealItemInSystemCommand},
        {CommandID::kMakeACopy, FindSelectionStatus, OnMakeACopyCommand},
        {CommandID::kMoveToTrash, OnDeleteItemCommandStatus, OnDeleteItemCommand},
    };
    return kCommands;
}

void SharedProjectsTabView::ShowCreatedItems(const UTF16StringVec& paths) {
    if (!AreTreeViewsCreated() || paths.empty()) return;
    // Among the hits of a search it would mostly not show.
    LeaveSearch();
    mTreeView->GetDirectoryView()->SelectWhenShown(paths);
}

void SharedProjectsTabView::ShowFolder(const UTF16String& path) {
    if (!AreTreeViewsCreated()) return;
    LeaveSearch();
    mTreeView->GetDirectoryView()->OpenWhenShown(path);
}

void SharedProjectsTabView::LeaveSearch() {
    if (mSearchBox.GetText().empty()) return;
    mSearchBox.SetText({});
    mTreeView->GetDirectoryView()->GetTree()->TakeKeyboard();
}

const UTF16String& SharedProjectsTabView::DescribeWhySelectionStays() const {
    if (!mWhySelectionStays)
        mWhySelectionStays = CountSelectedRows() == 0 ? ZString(kNothingIsSelected)
                                                      : GetShownItems()->DescribeWhySelectionStays();
    return *mWhySelectionStays;
}

UTF16StringVec SharedProjectsTabView::GetDeleteableSelectedPaths(UTF16StringVec& reasons) const {
    UTF16StringVec paths = GetSelectedNonRedundantPaths();
    reasons = TakeOutWhatStays(paths);
    return paths;
}

void SharedProjectsTabView::MoveSelectionToTrash(const char* usageAction) {
    try {
        TellTogether([&] {
            UTF16StringVec reasons;
            const UTF16StringVec paths = GetDeleteableSelectedPaths(reasons);
            TellNotMoved(reasons);
            Utils::LogUsage("Trash", usageAction);
            TryToMoveToSharedProjectsTrash(paths);
        });
    } catch (...) {
        LogCurrentException(__PRETTY_FUNCTION__);
    }
}

void SharedProjectsTabView::TryToMoveToSharedProjectsTrash(const UTF16StringVec& paths) {
    if (Utils::CanAllBeDeleted(paths)) Utils::MoveToSharedProjectsTrash(paths, false, true);
}

bool SharedProjectsTabView::DropToDeleteButtonSupport(int action, UI_DropData* data) {
    if (!data || !data->mReceived || !AreTreeViewsCreated()) return false;
    if (action == kDropAction_Dropped) OnDropToDeleteButton(*data);
    if (action == kDropAction_Entered) TellWhyNotDropped(*data->mReceived);
    return action == kDropAction_Dropped ||
           ((action == kDropAction_Entered || action == kDropAction_Moved) && IsDropToDeleteButtonValid(*data));
}

bool SharedProjectsTabView::IsDropToDeleteButtonValid(const UI_DropData& data) {
    return data.mReceived->HasType(kDirectoryRowDragType) && !data.mReceived->GetFilePaths().empty() &&
           DescribeWhyNotDropped(data.mReceived->GetFilePaths()).empty();
}

void SharedProjectsTabView::OnDropToDeleteButton(const UI_DropData& data) {
    if (!IsDropToDeleteButtonValid(data)) return;
    // The selection may have followed rows that went meanwhile; of another window's rows none is here.
    if (data.mReceived->GetFilePaths() == GetSelectedNonRedundantPaths())
        return MoveSelectionToTrash("DropOntoTrash");
    Utils::LogUsage("Trash", "DropOntoTrash");
    TryToMoveToSharedProjectsTrash(data.mReceived->GetFilePaths());
}

}  // namespace HandlerSharedProjects
