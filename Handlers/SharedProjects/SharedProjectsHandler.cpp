#include "Handlers/SharedProjects/SharedProjectsHandler.h"

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/framework/Application.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/framework/Identifiers.h"
#include "host/framework/ShortcutManager.h"
#include "host/framework/WindowRegistry.h"
#include "host/framework/Workspace.h"
#include "host/project/OpenProjects.h"
#include "host/project/SharedProjectsManager.h"
#include "host/toolkit/DataTransfer.h"

namespace HandlerSharedProjects {

const char* const SharedProjectsHandler::sContextName = "zuproduction";

namespace {

[[maybe_unused]] const bool sIsHandlerRegistered =
    Handler::RegisterFactory(kZuProductionFolderHandlerID, CreateHandler);

struct CommandDeclaration {
    const char* mName;
    int mID;
    /// A localisation key; empty for a command whose text comes from the menus that show it.
    const char* mLabel;
};

constexpr CommandDeclaration kCommands[] = {
    {"cmd.mediabrowser.newfolder", CommandID::kNewFolder, ""},
    {"cmd.zuproductionfolder.newproject", CommandID::kNewProject, ""},
    {"cmd.zuproductionfolder.addproject", CommandID::kAddProject, ""},
    {"cmd.zuproductionfolder.refreshproject", CommandID::kRefreshProject, ""},
    {"cmd.zuproductionfolder.renameitem", CommandID::kRenameItem, ""},
    {"cmd.zuproductionfolder.togglelock", CommandID::kToggleLock, ""},
    {"cmd.zuproductionfolder.revealrootinsystem", CommandID::kRevealRootInSystem, ""},
    {"cmd.zuproductionfolder.revealiteminsystem", CommandID::kRevealItemInSystem, ""},
    {"cmd.zuproductionfolder.toggle.showpath", CommandID::kToggleShowPath, ""},
    {"cmd.zuproductionfolder.trash.empty", CommandID::kEmptyTrash, ""},
    {"cmd.zuproductionfolder.renameproduction", CommandID::kRenameProduction, ""},
    {"cmd.zuproductionfolder.refreshallprojects", CommandID::kRefreshAllProjects, ""},
    {"cmd.zuproductionfolder.saveallprojects", CommandID::kSaveAllProjects, ""},
    {"cmd.zuproductionfolder.closeallprojects", CommandID::kCloseAllProjects, ""},
    {"cmd.zuproductionfolder.move.pagedown", CommandID::kMovePageDown,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionPageDown=Move Selection Page Down"},
    {"cmd.zuproductionfolder.move.pageup", CommandID::kMovePageUp,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionPageUp=Move Selection Page Up"},
    {"cmd.zuproductionfolder.move.end", CommandID::kMoveEnd,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionEnd=Move Selection End"},
    {"cmd.zuproductionfolder.move.home", CommandID::kMoveHome,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionHome=Move Selection Home"},
    {"cmd.zuproductionfolder.zoomin", CommandID::kZoomIn,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/ZoomIn=Zoom In"},
    {"cmd.zuproductionfolder.zoomout", CommandID::kZoomOut,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/ZoomOut=Zoom Out"},
    {"cmd.zuproductionfolder.openproject", CommandID::kOpenProject,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/OpenProject=Open Project"},
    {"cmd.zuproductionfolder.closeproject", CommandID::kCloseProject,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/CloseProject=Close Project"},
    {"cmd.zuproductionfolder.makeacopy", CommandID::kMakeACopy,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MakeACopy=Make a Copy"},
    {"cmd.zuproductionfolder.movetotrash", CommandID::kMoveToTrash,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveToTrash=Move To Trash"},
};

}  // namespace

SharedProjectsHandler::SharedProjectsHandler(const UTF16String& handlerPath)
    : Handler(handlerPath, kZuProductionFolderHandlerID) {
    RegisterCustomDataType(kDirectoryRowDragType, kUTTypeData);
    RegisterWindow();
    AddListener(kStation_ZuProductionFolderPanel, this);
    AddListener(kBackendProjectActivationStationID, this);
}

void SharedProjectsHandler::RegisterWindow() {
    AddWindowClass(kZuProductionFolderWindowTypeID, kZuProductionFolderHandlerID, true);
    const Localizer& localizer = *Localizer::Get();
    const UTF16String title =
        localizer.Localize("$$$/Vantor/Handlers/Production/ProductionWindowTitle=Production");
    AddWindow(kZuProductionFolderWindowTypeID, kDefaultWindowID, title, kDefaultWindowContextID);
    const UTF16String menuDisplayName =
        title + u" " + localizer.Localize("$$$/Vantor/Handlers/PanelMenu=Panel Menu");
    ShortcutManager::Instance()->AddWindowMenuID(sContextName, menuDisplayName, GetFlyoutMenuID());
}

SharedProjectsHandler::~SharedProjectsHandler() {
    if (mTabView) mTabView->Destroy();
    mTabView.reset();
    TryToSaveAgain();
    Columns::ClearGenericFolderIcon();
    RemoveListener(kBackendProjectActivationStationID, this);
    RemoveListener(kStation_ZuProductionFolderPanel, this);
    RemoveWindowClass(kZuProductionFolderWindowTypeID);
}

SharedProjectsHandler* SharedProjectsHandler::GetHandler() {
    return dynamic_cast<SharedProjectsHandler*>(Handler::FindHandler(kZuProductionFolderHandlerID));
}

UTF16String SharedProjectsHandler::GetRootDirectory() {
    return IsSharedProjectsManagerActive() ? GetSharedProjectsManagerFolderPath() : UTF16String();
}

void SharedProjectsHandler::PopulateCommandContext(ShortcutManager* manager) {
    manager->GetContext("global");
    CommandContext* context = manager->AddContext(
        sContextName, Localizer::Get()->Localize(
                          "$$$/Vantor/Handlers/ZuProductionFolder/ProductionContext=Production Panel"));
    for (const CommandDeclaration& command : kCommands)
        context->DeclareCommand(command.mName, command.mID,
                                *command.mLabel ? CommandKind::LabelledCommand : CommandKind::MenuCommand,
                                command.mLabel, nullptr, false);
}

void SharedProjectsHandler::ShowPanel() {
    const std::string handlerID = UTF16to8(kZuProductionFolderHandlerID);
    Workspace* workspace = Workspace::Instance().GetPtr();
    if (!workspace) return;
    if (!WorkspaceUtils::TabIsShown(workspace, handlerID, false))
        workspace->OpenTab(handlerID);
    else if (mTabView)
        mTabView->BringToFront(true, false);
}

bool SharedProjectsHandler::FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark,
                                              UTF16String& text) {
    return CommandHandler::FindCommandStatus(id, enabled, checked, mark, text);
}

bool SharedProjectsHandler::ObeyCommand(const Command& command) {
    switch (command.GetID()) {
        case CommandID::kPreviousPanel:
            if (OnSelectPreviousPanel()) return true;
            break;
        case CommandID::kNextPanel:
            if (OnSelectNextPanel()) return true;
            break;
        case CommandID::kFind:
            if (OnSelectFindBox()) return true;
            break;
    }
    return CommandHandler::ObeyCommand(command);
}

const char* SharedProjectsHandler::GetContextName() const {
    return sContextName;
}

const char* SharedProjectsHandler::GetFlyoutMenuID() const {
    return kFlyoutMenuID;
}

TabView* SharedProjectsHandler::CreateTabViewSelf(WorkspaceFrame* frame) {
    const UTF16String title = Localizer::Get()->Localize(
        "$$$/Vantor/Handlers/ZuProductionFolder/ZuProductionTabViewTitle=Production");
    if (mTabView) mTabView->Destroy();
    mTabView = std::make_shared<SharedProjectsTabView>(Application::Instance()->GetMainCommander());
    TabView::Create(mTabView.get(), kZuProductionFolderHandlerID, title, frame, true);
    return mTabView.get();
}

bool SharedProjectsHandler::ShouldDestroyWhenClosed() const {
    return true;
}

void SharedProjectsHandler::ListenToMessage(const Message& message) {
    if (const auto* opened = MessageCast<ZuProductionFolderOpenedMessage>(message)) {
        if (mTabView) mTabView->LeaveClosedProduction();
        LoadProductionLayouts();
        ShowPanel();
        if (mTabView) mTabView->SetDeferredRenameRowPath(opened->GetPath());
    } else if (MessageCast<ZuProductionFolderClosedMessage>(message)) {
        // The first to hear of it: the rows that are remembered are still there.
        if (mTabView) mTabView->LeaveClosedProduction();
    } else if (MessageCast<ProjectClosedMessage>(message)) {
        if (IsSharedProjectsManagerActive() && OpenProjectCount() == 0) ShowPanel();
    }
}

Handler* CreateHandler(const UTF16String& handlerPath) {
    return std::make_unique<SharedProjectsHandler>(handlerPath).release();
}

}  // namespace HandlerSharedProjects
