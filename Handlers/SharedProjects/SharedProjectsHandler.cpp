#include "Handlers/SharedProjects/SharedProjectsHandler.h"

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/framework/Application.h"
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

constexpr int kSelectFindBoxCommandID = 11311;
constexpr int kSelectNextPanelCommandID = 11916;
constexpr int kSelectPreviousPanelCommandID = 11917;

[[maybe_unused]] const bool sIsHandlerRegistered =
    Handler::RegisterFactory(kZuProductionFolderHandlerID, CreateHandler);

struct CommandDeclaration {
    const char* mName;
    int mID;
    /// A localisation key; empty for a command whose text comes from the menus that show it.
    const char* mLabel;
};

constexpr CommandDeclaration kCommands[] = {
    {"cmd.mediabrowser.newfolder", 1296191078, ""},
    {"cmd.zuproductionfolder.newproject", 30303, ""},
    {"cmd.zuproductionfolder.addproject", 30304, ""},
    {"cmd.zuproductionfolder.refreshproject", 30307, ""},
    {"cmd.zuproductionfolder.renameitem", 30308, ""},
    {"cmd.zuproductionfolder.togglelock", 30311, ""},
    {"cmd.zuproductionfolder.revealrootinsystem", 30309, ""},
    {"cmd.zuproductionfolder.revealiteminsystem", 30310, ""},
    {"cmd.zuproductionfolder.toggle.showpath", 30312, ""},
    {"cmd.zuproductionfolder.trash.empty", 30317, ""},
    {"cmd.zuproductionfolder.renameproduction", 30318, ""},
    {"cmd.zuproductionfolder.refreshallprojects", 30320, ""},
    {"cmd.zuproductionfolder.saveallprojects", 30321, ""},
    {"cmd.zuproductionfolder.closeallprojects", 30322, ""},
    {"cmd.zuproductionfolder.move.pagedown", 30315,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionPageDown=Move Selection Page Down"},
    {"cmd.zuproductionfolder.move.pageup", 30316,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionPageUp=Move Selection Page Up"},
    {"cmd.zuproductionfolder.move.end", 30314,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionEnd=Move Selection End"},
    {"cmd.zuproductionfolder.move.home", 30313,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MoveSelectionHome=Move Selection Home"},
    {"cmd.zuproductionfolder.zoomin", 30323, "$$$/Vantor/Handlers/ZuProductionFolder/Commands/ZoomIn=Zoom In"},
    {"cmd.zuproductionfolder.zoomout", 30324,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/ZoomOut=Zoom Out"},
    {"cmd.zuproductionfolder.openproject", 30305,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/OpenProject=Open Project"},
    {"cmd.zuproductionfolder.closeproject", 30306,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/CloseProject=Close Project"},
    {"cmd.zuproductionfolder.makeacopy", 30319,
     "$$$/Vantor/Handlers/ZuProductionFolder/Commands/MakeACopy=Make a Copy"},
    {"cmd.zuproductionfolder.movetotrash", 30325,
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
        case kSelectPreviousPanelCommandID:
            if (OnSelectPreviousPanel()) return true;
            break;
        case kSelectNextPanelCommandID:
            if (OnSelectNextPanel()) return true;
            break;
        case kSelectFindBoxCommandID:
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
