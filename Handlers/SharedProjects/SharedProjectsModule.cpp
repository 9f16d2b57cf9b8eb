#include "Handlers/SharedProjects/SharedProjectsModule.h"

#include <memory>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "host/framework/Identifiers.h"
#include "host/framework/PluginEntry.h"
#include "host/framework/ShortcutManager.h"

ZUHOST_PLUGIN_ENTRY("Production");

namespace HandlerSharedProjects {

Module* CreateModule(const UTF16String& modulePath) {
    auto module = std::make_unique<SharedProjectsModule>(modulePath);
    ShortcutManager::Instance()->RegisterCommandContext(SharedProjectsHandler::PopulateCommandContext);
    return module.release();
}

namespace {
[[maybe_unused]] const bool sIsModuleRegistered =
    Module::RegisterFactory(kZuProductionFolderModuleID, CreateModule);
}  // namespace

}  // namespace HandlerSharedProjects
