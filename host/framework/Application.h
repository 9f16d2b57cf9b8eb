#pragma once

#include "host/core/Export.h"
#include "host/framework/CommandHandler.h"

namespace host {

/// The running host application. UI thread.
class ZUHOST_API Application {
public:
    /// Never null after the host has started.
    static Application* Instance();

    /// The last commander of every chain; answers the application's own commands.
    Commander* GetMainCommander() const;
};

}  // namespace host
