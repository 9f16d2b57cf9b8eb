#include "desk/framework/CommandRouter.h"

#include "desk/core/work/LongWork.h"
#include "desk/framework/MainCommander.h"
#include "desk/framework/PanelNavigation.h"
#include "desk/framework/Shortcuts.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/framework/TabViews.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/framework/CommandIdentifiers.h"
#include "host/framework/Handler.h"

namespace desk {
namespace {

bool IsPanelStep(int commandID) {
    return commandID == host::CommandID::kNextPanel || commandID == host::CommandID::kPreviousPanel;
}

/// What nobody's status function decides, though handlers (or the workspace) carry it out.
CommandStatus FindNavigationStatus(int commandID, const host::Handler* handler) {
    CommandStatus status;
    if (IsPanelStep(commandID)) {
        status.mIsKnown = true;
        status.mIsEnabled = PanelNavigation::Instance().CanSelect();
    } else if (commandID == host::CommandID::kFind && handler) {
        const TabViewImpl* view = TabViews::Instance().Find(handler->GetHandlerID());
        status.mIsKnown = true;
        status.mIsEnabled = view && view->FindEnabledSearchBox();
    }
    return status;
}

}  // namespace

PanelNavigation& PanelNavigation::Instance() {
    static PanelNavigation sInstance;
    return sInstance;
}

CommandRouter& CommandRouter::Instance() {
    static CommandRouter sInstance;
    return sInstance;
}

void CommandRouter::SetOnDuty(host::Handler* handler, host::TabView* view) {
    if (view != mView || mEditor) Shortcuts::Instance().ResetContext();
    mEditor = nullptr;
    mHandler = handler;
    mView = view;
}

void CommandRouter::SetEditorOnDuty(host::CommandHandler* editor) {
    SetOnDuty(nullptr, nullptr);
    mEditor = editor;
}

void CommandRouter::ForgetEditor(const host::CommandHandler* editor) {
    if (mEditor == editor) SetOnDuty(nullptr, nullptr);
}

void CommandRouter::ForgetHandler(const host::Handler* handler) {
    if (mHandler == handler) SetOnDuty(nullptr, nullptr);
}

void CommandRouter::ForgetView(const host::TabView* view) {
    if (mView == view) SetOnDuty(nullptr, nullptr);
}

host::Handler* CommandRouter::FindHandler() const {
    if (mView || mHandler) return mHandler;
    const TabViewImpl* open = TabViews::Instance().FindOpen();
    return open ? host::Handler::FindHandler(open->mHandlerID) : nullptr;
}

host::CommandHandler* CommandRouter::FindCommander(Step step, host::CommandHandler* first) const {
    if (step == Step::First) return first;
    if (step == Step::Editor) return mEditor;
    if (step == Step::Handler) return FindHandler();
    if (step == Step::Main) return &MainCommander::Instance();
    if (mView || mHandler) return mView;
    TabViewImpl* open = TabViews::Instance().FindOpen();
    return open ? open->mView : nullptr;
}

CommandStatus CommandRouter::FindStatus(int commandID) const {
    try {
        for (const Step step : {Step::Editor, Step::View, Step::Handler, Step::Main}) {
            CommandStatus status;
            host::CommandHandler* commander = FindCommander(step, nullptr);
            status.mIsKnown =
                commander && commander->FindCommandStatus(commandID, status.mIsEnabled, status.mIsChecked,
                                                          status.mMark, status.mText);
            if (status.mIsKnown) return status;
        }
        return FindNavigationStatus(commandID, FindHandler());
    } catch (...) {
        host::LogCurrentException(__PRETTY_FUNCTION__);
        return {};
    }
}

host::UTF16String CommandRouter::FindWhyDisabled(int commandID) const {
    try {
        for (const Step step : {Step::Editor, Step::View, Step::Handler, Step::Main}) {
            host::CommandHandler* commander = FindCommander(step, nullptr);
            host::UTF16String reason = commander ? commander->DescribeWhyDisabled(commandID) : u"";
            if (!reason.empty()) return reason;
        }
    } catch (...) {
        host::LogCurrentException(__PRETTY_FUNCTION__);
    }
    return {};
}

host::UTF16String CommandRouter::DescribeWhyDisabled(int commandID) const {
    host::UTF16String reason = FindWhyDisabled(commandID);
    if (!reason.empty()) return reason;
    return host::ZString("$$$/Desk/Menus/CannotAct=This command cannot act on what is selected now.");
}

bool CommandRouter::SendFrom(host::CommandHandler* first, int commandID) {
    if (IsLongWorkRunning()) return true;
    const host::Command command(commandID);
    try {
        for (const Step step : {Step::First, Step::Editor, Step::View, Step::Handler, Step::Main})
            if (host::CommandHandler* commander = FindCommander(step, first);
                commander && commander->ObeyCommand(command))
                return true;
        return IsPanelStep(commandID) &&
               PanelNavigation::Instance().Select(commandID == host::CommandID::kNextPanel);
    } catch (...) {
        host::LogCurrentException(__PRETTY_FUNCTION__);
        return true;
    }
}

}  // namespace desk
