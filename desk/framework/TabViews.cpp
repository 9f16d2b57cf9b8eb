#include "desk/framework/TabViews.h"

#include <algorithm>

#include "desk/framework/TabViewImpl.h"

namespace desk {

TabViews& TabViews::Instance() {
    static TabViews sInstance;
    return sInstance;
}

void TabViews::Add(TabViewImpl& view) {
    if (mViews.empty()) host::AddListener(host::kStation_DebugDatabase, this);
    mViews.push_back(&view);
}

void TabViews::Remove(TabViewImpl& view) {
    if (std::erase(mViews, &view) && mViews.empty()) host::RemoveListener(host::kStation_DebugDatabase, this);
}

TabViewImpl* TabViews::Find(const host::UTF16String& handlerID) const {
    const auto found = std::ranges::find(mViews, handlerID, &TabViewImpl::mHandlerID);
    return found == mViews.end() ? nullptr : *found;
}

TabViewImpl* TabViews::FindOpen() const {
    TabViewImpl* first = nullptr;
    for (TabViewImpl* view : mViews) {
        if (view->IsOnDemand()) continue;
        if (view->mWidget && view->mWidget->isVisible()) return view;
        if (!first) first = view;
    }
    return first;
}

void TabViews::ListenToMessage(const host::Message& message) {
    if (!host::MessageCast<host::DebugDatabaseChangedMessage>(message)) return;
    for (TabViewImpl* view : std::vector(mViews))
        if (std::ranges::find(mViews, view) != mViews.end() && view->mIsCreated) view->Refresh();
}

}  // namespace desk
