#pragma once

#include <functional>
#include <map>

#include "desk/framework/CommandRouter.h"
#include "host/framework/CommandHandler.h"

namespace desk {

/// The last commander of every chain: carries out the commands of the program itself. UI thread.
class ZUHOST_API MainCommander : public host::CommandHandler {
public:
    static MainCommander& Instance();

    using Status = std::function<CommandStatus()>;
    /// Returns false when the command could not be carried out.
    using Action = std::function<bool()>;

    /// Takes on a command, in place of what was registered for it before. Without `status` it is always
    /// enabled; without `action` the command is given up.
    void Register(int id, Status status, Action action);

    bool FindCommandStatus(int id, bool& enabled, bool& checked, host::MenuMark& mark,
                           host::UTF16String& text) override;
    bool ObeyCommand(const host::Command& command) override;

private:
    MainCommander() : CommandHandler(nullptr) {}

    struct Entry {
        Status mStatus;
        Action mAction;
    };
    std::map<int, Entry> mEntries;
};

}  // namespace desk
