#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// Registers the kind of window that the handler `handlerID` makes; with `isDockable` it is a panel that
/// can be docked, tabbed and floated. UI thread.
ZUHOST_API void AddWindowClass(const UTF16String& windowType, const UTF16String& handlerID, bool isDockable);

/// Registers an entry of the Window menu for a window class; `title` is localised. UI thread.
ZUHOST_API void AddWindow(const UTF16String& windowType, const UTF16String& windowID, const UTF16String& title,
                          const UTF16String& contextID);

/// Takes back a window class. Its entry in the Window menu stays as long as the plug-in is loaded, so
/// that the user can bring the panel back. UI thread.
ZUHOST_API void RemoveWindowClass(const UTF16String& windowType);

}  // namespace host
