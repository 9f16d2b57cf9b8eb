#include "desk/framework/PanelRegistry.h"

#include <algorithm>

#include "desk/core/log/Log.h"
#include "desk/framework/Registrations.h"
#include "desk/framework/TabViewImpl.h"
#include "desk/framework/TabViews.h"
#include "host/core/Logging.h"
#include "host/framework/WindowRegistry.h"

namespace desk {

Registrations& Registrations::Instance() {
    static Registrations& sInstance = *new Registrations;
    return sInstance;
}

PanelRegistry& PanelRegistry::Instance() {
    static PanelRegistry sInstance;
    return sInstance;
}

std::vector<host::UTF16String> PanelRegistry::GetHandlerIDs() const {
    std::vector<host::UTF16String> ids;
    for (const auto& [id, factory] : Registrations::Instance().mHandlerFactories) ids.push_back(id);
    return ids;
}

host::Handler* PanelRegistry::FindOrCreateHandler(const host::UTF16String& handlerID) {
    if (host::Handler* live = host::Handler::FindHandler(handlerID)) return live;
    Registrations& registrations = Registrations::Instance();
    const auto found = registrations.mHandlerFactories.find(handlerID);
    if (found == registrations.mHandlerFactories.end()) return nullptr;
    try {
        std::unique_ptr<host::Handler> handler(found->second.mFactory(found->second.mLibraryPath));
        return (registrations.mOwnedHandlers[handlerID] = std::move(handler)).get();
    } catch (...) {
        host::LogCurrentException(__PRETTY_FUNCTION__);
        return nullptr;
    }
}

void PanelRegistry::DestroyHandler(const host::UTF16String& handlerID) {
    const host::UTF16String id = handlerID;  // It may be the handler's own.
    while (TabViewImpl* view = TabViews::Instance().Find(id)) view->Destroy();
    auto node = Registrations::Instance().mOwnedHandlers.extract(id);
}

void PanelRegistry::SetOnDemand(const host::UTF16String& handlerID) {
    Registrations::Instance().mOnDemand.insert(handlerID);
}

bool PanelRegistry::IsOnDemand(const host::UTF16String& handlerID) const {
    return Registrations::Instance().mOnDemand.contains(handlerID);
}

const std::vector<PanelRegistry::WindowEntry>& PanelRegistry::GetWindowEntries() const {
    return Registrations::Instance().mWindowEntries;
}

}  // namespace desk

namespace host {

using desk::Registrations;

void AddWindowClass(const UTF16String& windowType, const UTF16String& handlerID, bool isDockable) {
    Registrations::Instance().mWindowClasses[windowType] = {handlerID, isDockable};
}

void AddWindow(const UTF16String& windowType, const UTF16String& windowID, const UTF16String& title,
               const UTF16String&) {
    Registrations& registrations = Registrations::Instance();
    const auto windowClass = registrations.mWindowClasses.find(windowType);
    if (windowClass == registrations.mWindowClasses.end()) {
        desk::Log(desk::LogLevel::Warning, "A window of an unknown type is left out: " + UTF16to8(windowType));
        return;
    }
    const UTF16String entryID = windowType + u'\n' + windowID;
    auto& ids = registrations.mWindowEntryIDs;
    const auto index = static_cast<std::size_t>(std::ranges::find(ids, entryID) - ids.begin());
    if (index == ids.size()) {
        ids.push_back(entryID);
        registrations.mWindowEntries.emplace_back();
    }
    registrations.mWindowEntries[index] = {windowClass->second.mHandlerID, title};
}

void RemoveWindowClass(const UTF16String& windowType) {
    Registrations::Instance().mWindowClasses.erase(windowType);
}

}  // namespace host
