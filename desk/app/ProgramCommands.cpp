#include "desk/app/ProgramCommands.h"

#include "host/framework/ShortcutManager.h"

namespace desk {

void DeclareProgramCommands() {
    host::CommandContext* context = host::ShortcutManager::Instance()->GetContext("global");
    const auto declare = [context](const char* name, int id, const char* label) {
        context->DeclareCommand(name, id, host::CommandKind::LabelledCommand, label, nullptr, false);
    };
    declare("cmd.production.new", kCommandNewProduction, "$$$/Desk/Commands/NewProductionLabel=New Production");
    declare("cmd.production.open", kCommandOpenProduction,
            "$$$/Desk/Commands/OpenProductionLabel=Open Production");
    declare("cmd.production.close", kCommandCloseProduction,
            "$$$/Desk/Commands/CloseProductionLabel=Close Production");
    declare("cmd.file.quit", kCommandQuit, "$$$/Desk/Commands/Quit=Quit");
    declare("cmd.help.about", kCommandAbout, "$$$/Desk/Commands/About=About Production Desk");
    declare("cmd.help.places", kCommandShowPlaces, "$$$/Desk/Commands/ShowPlaces=Where Settings and Log Are");
}

}  // namespace desk
