#include "desk/app/ProgramCommands.h"

#include "host/core/Localizer.h"
#include "host/framework/ShortcutManager.h"

namespace desk {

namespace {

void Declare(host::CommandContext& context, const char* name, int id, const char* label) {
    context.DeclareCommand(name, id, host::CommandKind::LabelledCommand, label, nullptr, false);
}

void DeclareProjectCommands() {
    host::ShortcutManager& manager = *host::ShortcutManager::Instance();
    host::CommandContext& global = *manager.GetContext("global");
    Declare(global, "cmd.file.openproject", kCommandOpenProject, "$$$/Desk/Commands/OpenProject=Open Project…");
    Declare(global, "cmd.file.save", kCommandSaveProject, "$$$/Desk/Commands/SaveProject=Save");
    Declare(global, "cmd.file.saveall", kCommandSaveAllProjects, "$$$/Desk/Commands/SaveAll=Save All");
    Declare(global, "cmd.file.saveascopy", kCommandSaveProjectAsCopy,
            "$$$/Desk/Commands/SaveAsCopy=Save as Copy…");
    Declare(global, "cmd.file.reopensession", kCommandReopenSession,
            "$$$/Desk/Commands/ReopenSession=Reopen Last Session");
    Declare(global, "cmd.file.reopensessionatstart", kCommandReopenSessionAtStart,
            "$$$/Desk/Commands/ReopenSessionAtStart=Reopen Last Session at Start");
    Declare(global, "cmd.file.recovertext", kCommandRecoverText,
            "$$$/Desk/Commands/RecoverText=Recover Unsaved Text…");
    Declare(global, "cmd.file.breaklock", kCommandBreakLock, "$$$/Desk/Commands/BreakLock=Break Lock…");
    Declare(global, "cmd.file.reveal", kCommandRevealProject,
            "$$$/Desk/Commands/RevealProject=Reveal in File Browser");
    host::CommandContext& projects =
        *manager.AddContext(kProjectsContext, host::ZString("$$$/Desk/Commands/ProjectsContext=Open Projects"));
    Declare(projects, "cmd.projects.reload", kCommandReloadProject, "$$$/Desk/Commands/Reload=Reload");
    Declare(projects, "cmd.projects.close", kCommandCloseProject,
            "$$$/Desk/Commands/CloseProject=Close Project");
    Declare(projects, "cmd.projects.closeothers", kCommandCloseOtherProjects,
            "$$$/Desk/Commands/CloseOthers=Close Others");
    Declare(projects, "cmd.projects.closeall", kCommandCloseAllProjects,
            "$$$/Desk/Commands/CloseAll=Close All");
    Declare(projects, "cmd.projects.togglereadonly", kCommandToggleReadOnly,
            "$$$/Desk/Commands/ToggleReadOnly=Read-Only Mode");
    Declare(projects, "cmd.projects.undo", kCommandUndo, "$$$/Desk/Commands/Undo=Undo");
    Declare(projects, "cmd.projects.redo", kCommandRedo, "$$$/Desk/Commands/Redo=Redo");
    Declare(projects, "cmd.projects.cut", kCommandCut, "$$$/Desk/Commands/Cut=Cut");
    Declare(projects, "cmd.projects.copy", kCommandCopy, "$$$/Desk/Commands/Copy=Copy");
    Declare(projects, "cmd.projects.paste", kCommandPaste, "$$$/Desk/Commands/Paste=Paste");
}

}  // namespace

void DeclareProgramCommands() {
    host::CommandContext& context = *host::ShortcutManager::Instance()->GetContext("global");
    const auto declare = [&context](const char* name, int id, const char* label) {
        Declare(context, name, id, label);
    };
    declare("cmd.production.new", kCommandNewProduction, "$$$/Desk/Commands/NewProductionLabel=New Production");
    declare("cmd.production.open", kCommandOpenProduction,
            "$$$/Desk/Commands/OpenProductionLabel=Open Production");
    declare("cmd.production.close", kCommandCloseProduction,
            "$$$/Desk/Commands/CloseProductionLabel=Close Production");
    declare("cmd.file.quit", kCommandQuit, "$$$/Desk/Commands/Quit=Quit");
    declare("cmd.edit.returnrenames", kCommandReturnRenames,
            "$$$/Desk/Commands/ReturnRenames=Return Renames, Ctrl+Return Opens");
    declare("cmd.edit.returnopens", kCommandReturnOpens,
            "$$$/Desk/Commands/ReturnOpens=Return Opens, F2 Renames");
    declare("cmd.help.about", kCommandAbout, "$$$/Desk/Commands/About=About Production Desk");
    declare("cmd.help.places", kCommandShowPlaces, "$$$/Desk/Commands/ShowPlaces=Where Settings and Log Are");
    DeclareProjectCommands();
}

}  // namespace desk
