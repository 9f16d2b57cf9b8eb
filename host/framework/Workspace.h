#pragma once

#include <string>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// The place in a window where a panel's view is put. UI thread.
class ZUHOST_API WorkspaceFrame {
public:
    virtual ~WorkspaceFrame();
};

class TabView;

/// A window of the program, to stand over in a dialog. Owned by the host. UI thread.
class ZUHOST_API TopLevelWindow {
public:
    virtual ~TopLevelWindow();
};

/// Wishes about a panel that is to be created; so far there are none.
class PropertyList {};

/// The arrangement of panels in the main window. UI thread.
class ZUHOST_API Workspace {
public:
    virtual ~Workspace();

    /// Access to the current workspace, which may not exist.
    class ZUHOST_API Reference {
    public:
        explicit Reference(Workspace* workspace) : mWorkspace(workspace) {}
        Workspace* GetPtr() const { return mWorkspace; }

    private:
        Workspace* mWorkspace;
    };
    static Reference Instance();

    /// Opens the tab of the handler (UTF-8 ID), making the handler and its view when there are none, and
    /// brings it to the front. An unknown handler ID is logged.
    virtual void OpenTab(const std::string& handlerID) = 0;

    /// The open view of the handler's panel (in front or not); null when the panel is not open.
    virtual TabView* FindFirstTabViewOfType(const UTF16String& handlerID) = 0;

    /// Opens the panel of the handler, or brings back the one that was closed, and returns its view, which may
    /// stand behind another tab; null when there is no such panel. The keyboard's focus stays where it is.
    virtual TabView* CreateOrReanimateTabView(const UTF16String& handlerID, const PropertyList& properties) = 0;

    /// The window that dialogs stand over. Never null.
    virtual TopLevelWindow* GetMainTopLevelWindow() = 0;
};

namespace WorkspaceUtils {
/// True when the panel of the handler (UTF-8 ID) is open in the workspace. With `frontmost`, only when it
/// is also the front tab of its frame. UI thread.
ZUHOST_API bool TabIsShown(Workspace* workspace, const std::string& handlerID, bool frontmost);
}  // namespace WorkspaceUtils

}  // namespace host
