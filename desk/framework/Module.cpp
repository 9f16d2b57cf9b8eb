#include "host/framework/Module.h"

#include "desk/framework/Registrations.h"

namespace host {

Module::Module(const UTF16String& path) : mPath(path) {}

Module::~Module() = default;

bool Module::RegisterFactory(const UTF16String& moduleID, Factory factory) {
    desk::Registrations& registrations = desk::Registrations::Instance();
    registrations.mModuleFactories.try_emplace(
        moduleID, desk::Registrations::Factory<Factory>{factory, registrations.mLoadingPath});
    return true;
}

}  // namespace host
