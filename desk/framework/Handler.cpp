#include "host/framework/Handler.h"

#include "desk/framework/CommandRouter.h"
#include "desk/framework/PanelNavigation.h"
#include "desk/framework/Registrations.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/framework/TabViews.h"
#include "host/framework/Application.h"
#include "host/framework/ControlView.h"

namespace host {

using desk::Registrations;

TabViewCreator::~TabViewCreator() = default;

bool TabViewCreator::ShouldDestroyWhenClosed() const {
    return false;
}

Handler::Handler(const UTF16String&, const UTF16String& handlerID)
    : CommandHandler(Application::Instance()->GetMainCommander()), mHandlerID(handlerID) {
    Registrations::Instance().mLiveHandlers[handlerID] = this;
}

Handler::~Handler() {
    desk::CommandRouter::Instance().ForgetHandler(this);
    auto& handlers = Registrations::Instance().mLiveHandlers;
    if (const auto found = handlers.find(mHandlerID); found != handlers.end() && found->second == this)
        handlers.erase(found);
}

const char* Handler::GetContextName() const {
    return "";
}

const char* Handler::GetFlyoutMenuID() const {
    return nullptr;
}

bool Handler::AllowClose() {
    return true;
}

bool Handler::OnSelectFindBox() {
    desk::TabViewImpl* view = desk::TabViews::Instance().Find(mHandlerID);
    if (!view || !view->FindEnabledSearchBox()) return false;
    view->FindTabView()->BringToFront(false, false);
    SearchBoxControl* field = view->FindEnabledSearchBox();
    return field && field->TakeFocus();
}

bool Handler::OnSelectNextPanel() {
    return desk::PanelNavigation::Instance().Select(true);
}

bool Handler::OnSelectPreviousPanel() {
    return desk::PanelNavigation::Instance().Select(false);
}

bool Handler::RegisterFactory(const UTF16String& handlerID, Factory factory) {
    Registrations& registrations = Registrations::Instance();
    registrations.mHandlerFactories.try_emplace(
        handlerID, Registrations::Factory<Factory>{factory, registrations.mLoadingPath});
    return true;
}

Handler* Handler::FindHandler(const UTF16String& handlerID) {
    const auto& handlers = Registrations::Instance().mLiveHandlers;
    const auto found = handlers.find(handlerID);
    return found == handlers.end() ? nullptr : found->second;
}

}  // namespace host
