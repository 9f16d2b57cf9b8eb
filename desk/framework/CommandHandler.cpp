#include "host/framework/CommandHandler.h"

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/framework/CommandRouter.h"

namespace host {

CommandHandler::CommandHandler(CommandHandler* parent) : mParent(parent) {}

CommandHandler::~CommandHandler() = default;

bool CommandHandler::FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark,
                                       UTF16String& text) {
    return mParent && mParent->FindCommandStatus(id, enabled, checked, mark, text);
}

UTF16String CommandHandler::DescribeWhyDisabled(int id) {
    return mParent ? mParent->DescribeWhyDisabled(id) : UTF16String();
}

bool CommandHandler::ObeyCommand(const Command& command) {
    return mParent && mParent->ObeyCommand(command);
}

void PostCommand(int id, bool onlyIfEnabled) {
    desk::GetServices().mMainThread->Post([id, onlyIfEnabled] {
        desk::CommandRouter& router = desk::CommandRouter::Instance();
        if (!onlyIfEnabled || router.FindStatus(id).mIsEnabled) router.Send(id);
    });
}

}  // namespace host
