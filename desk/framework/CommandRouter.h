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

/// Knows which panel is on duty (the one that has, or last had, the keyboard focus; while there is none, the
/// first open one) and takes commands to it: first the panel's view and its chain of commanders, then the
/// panel's handler, whose chains end at the application's main commander. While the place for open projects is
/// on duty in place of a panel, it is asked before them. Going to the next or previous panel works also when
/// none of them decides. UI thread.
class ZUHOST_API CommandRouter {
public:
    static CommandRouter& Instance();

    /// A panel with a shortcut context of its own applies it after this; until then only the global
    /// shortcuts are active.
    void SetOnDuty(host::Handler* handler, host::TabView* view);
    /// `editor` (not owned) is on duty, and no panel is.
    void SetEditorOnDuty(host::CommandHandler* editor);
    void ForgetEditor(const host::CommandHandler* editor);
    host::CommandHandler* GetEditorOnDuty() const { return mEditor; }
    /// Called when a panel is destroyed: it is no longer on duty.
    void ForgetHandler(const host::Handler* handler);
    void ForgetView(const host::TabView* view);
    host::Handler* GetHandlerOnDuty() const { return mHandler; }
    host::TabView* GetViewOnDuty() const { return mView; }

    CommandStatus FindStatus(int commandID) const;
    /// Why a command that is disabled cannot be carried out: what the commander says that decides on it; empty
    /// when none says anything.
    host::UTF16String FindWhyDisabled(int commandID) const;
    /// The same, or else that it cannot act on what is selected.
    host::UTF16String DescribeWhyDisabled(int commandID) const;
    /// Carries the command out; false when nobody did. Exceptions are logged. While long work is under way
    /// (`RunLongWork`) nothing is carried out.
    bool Send(int commandID) { return SendFrom(nullptr, commandID); }
    /// The same, asking `first` (may be null) and its chain before all others.
    bool SendFrom(host::CommandHandler* first, int commandID);

private:
    enum class Step { First, Editor, View, Handler, Main };
    host::CommandHandler* FindCommander(Step step, host::CommandHandler* first) const;
    host::Handler* FindHandler() const;

    host::CommandHandler* mEditor = nullptr;
    host::Handler* mHandler = nullptr;
    host::TabView* mView = nullptr;
};

}  // namespace desk
