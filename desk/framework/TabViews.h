#pragma once

#include <vector>

#include "host/core/DebugDatabase.h"
#include "host/core/Strings.h"

namespace host {
class TabView;
}

namespace desk {

struct TabViewImpl;

/// The tab views that exist, in the order of their creation. When a tunable changes, each is laid out and
/// painted anew. UI thread.
class TabViews : host::Listener {
public:
    static TabViews& Instance();

    void Add(TabViewImpl& view);
    void Remove(TabViewImpl& view);

    /// The view of a handler, or null.
    TabViewImpl* Find(const host::UTF16String& handlerID) const;
    /// Of the views that can be on duty, the first that the user can see, else the first; null for none.
    TabViewImpl* FindOpen() const;
    const std::vector<TabViewImpl*>& GetAll() const { return mViews; }

private:
    void ListenToMessage(const host::Message& message) override;

    std::vector<TabViewImpl*> mViews;
};

}  // namespace desk
