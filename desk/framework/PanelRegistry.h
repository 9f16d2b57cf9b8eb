#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {
class Handler;
}

namespace desk {

/// What plug-ins have registered: module and handler factories, live handlers, window classes and entries of
/// the Window menu. Behind `Module`, `Handler` and `WindowRegistry.h`. UI thread.
class ZUHOST_API PanelRegistry {
public:
    static PanelRegistry& Instance();

    struct WindowEntry {
        host::UTF16String mHandlerID;
        /// Localised.
        host::UTF16String mTitle;
    };

    /// The handler IDs that have a factory.
    std::vector<host::UTF16String> GetHandlerIDs() const;
    /// The live handler of an ID, made by its factory when there is none; null for an unknown ID or when the
    /// factory threw (logged).
    host::Handler* FindOrCreateHandler(const host::UTF16String& handlerID);
    void DestroyHandler(const host::UTF16String& handlerID);
    /// The panel is opened when it is wanted: it is closed at first, and then stands below the others. It has
    /// no commands of its own: it is never on duty, so that the menus go on serving the panel that was, and it
    /// has the keyboard only when the user goes there, not when a part of the program brings it to the front.
    void SetOnDemand(const host::UTF16String& handlerID);
    bool IsOnDemand(const host::UTF16String& handlerID) const;
    /// The entries of the Window menu, in the order of registration.
    const std::vector<WindowEntry>& GetWindowEntries() const;
};

}  // namespace desk
