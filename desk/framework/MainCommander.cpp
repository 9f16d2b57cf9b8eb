#include "desk/framework/MainCommander.h"

#include <utility>

#include "host/framework/Application.h"

namespace desk {

MainCommander& MainCommander::Instance() {
    static MainCommander sInstance;
    return sInstance;
}

void MainCommander::Register(int id, Status status, Action action) {
    if (action)
        mEntries[id] = {std::move(status), std::move(action)};
    else
        mEntries.erase(id);
}

bool MainCommander::FindCommandStatus(int id, bool& enabled, bool& checked, host::MenuMark& mark,
                                      host::UTF16String& text) {
    const auto found = mEntries.find(id);
    if (found == mEntries.end()) return false;
    CommandStatus status;
    status.mIsKnown = status.mIsEnabled = true;
    if (found->second.mStatus) status = found->second.mStatus();
    if (!status.mIsKnown) return false;
    enabled = status.mIsEnabled;
    checked = status.mIsChecked;
    mark = status.mMark;
    if (!status.mText.empty()) text = status.mText;
    return true;
}

bool MainCommander::ObeyCommand(const host::Command& command) {
    const auto found = mEntries.find(command.GetID());
    if (found == mEntries.end()) return false;
    const Action action = found->second.mAction;
    return action();
}

}  // namespace desk

namespace host {

Application* Application::Instance() {
    static Application sInstance;
    return &sInstance;
}

Commander* Application::GetMainCommander() const {
    return &desk::MainCommander::Instance();
}

}  // namespace host
