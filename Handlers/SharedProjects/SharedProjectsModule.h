#pragma once

#include "host/framework/Module.h"

namespace HandlerSharedProjects {

using namespace host;

/// The panel's library as the host sees it.
class SharedProjectsModule final : public Module {
public:
    using Module::Module;
};

/// Makes the module and declares the panel's commands. The host owns the module.
Module* CreateModule(const UTF16String& modulePath);

}  // namespace HandlerSharedProjects
