#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/framework/CommandHandler.h"

namespace host {
class Handler;
class TabView;
}  // namespace host

namespace desk {

struct CommandStatus {
    bool mIsKnown = false;
    bool mIsEnabled = false;
    bool mIsChecked = false;
    host::MenuMark mMark = host::MenuMark::None;
    /// Replaces the menu's own text when not empty.
    host::UTF16String mText;
};

/// Knows which panel is on duty (the one that has, or last had, the keyboard focus) and takes commands to
/// it: first the panel's view and its chain of commanders, then the panel's handler; whose base classes end
/// at the application's main commander. UI thread.
class ZUHOST_API CommandRouter {
public:
    static CommandRouter& Instance();

    void SetOnDuty(host::Handler* handler, host::TabView* view);
    /// Called when a panel is destroyed: it is no longer on duty.
    void ForgetHandler(const host::Handler* handler);
    host::Handler* GetHandlerOnDuty() const { return mHandler; }
    host::TabView* GetViewOnDuty() const { return mView; }

    CommandStatus FindStatus(int commandID) const;
    /// Carries the command out; false when nobody did. Exceptions are logged.
    bool Send(int commandID);

private:
    host::Handler* mHandler = nullptr;
    host::TabView* mView = nullptr;
};

}  // namespace desk
