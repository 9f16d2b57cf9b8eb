#pragma once

#include <QJsonObject>
#include <set>
#include <vector>

#include "desk/framework/DockWorkspaceFrame.h"
#include "host/framework/Workspace.h"

class QMainWindow;

namespace desk {

/// The main window as the panels know it.
class ZUHOST_API MainTopLevelWindow : public host::TopLevelWindow {
public:
    explicit MainTopLevelWindow(QMainWindow& window) : mWindow(window) {}
    QMainWindow& GetWindow() const { return mWindow; }

private:
    QMainWindow& mWindow;
};

/// The arrangement of panels as docks of a main window: moved, tabbed, floated, closed and brought back. It is
/// the current workspace while it exists, and says how panels follow each other (`PanelNavigation`). UI thread.
class ZUHOST_API DockWorkspace : public QObject, public host::Workspace {
public:
    /// `window` outlives the workspace.
    explicit DockWorkspace(QMainWindow& window);
    /// Closes the panels without asking.
    ~DockWorkspace() override;

    /// Opens the panel, or brings it to the front, as the user wishes.
    void OpenTab(const std::string& handlerID) override;
    host::TabView* FindFirstTabViewOfType(const host::UTF16String& handlerID) override;
    /// Opens the panel because of what the program does: one on demand is not open at the next start.
    host::TabView* CreateOrReanimateTabView(const host::UTF16String& handlerID,
                                            const host::PropertyList& properties) override;
    host::TopLevelWindow* GetMainTopLevelWindow() override { return &mTopLevelWindow; }
    /// Closes a panel: asks its handler, then destroys view and handler, or hides the panel, as the handler
    /// wishes. False when the handler did not allow it.
    bool ClosePanel(const host::UTF16String& handlerID);
    bool IsOpenedByUser(const host::UTF16String& handlerID) const { return mOpenedByUser.contains(handlerID); }
    /// Opens the panel or brings it to the front; closes it when it is there already and nothing of it can be
    /// covered.
    void TogglePanel(const host::UTF16String& handlerID);
    /// Closes all panels without asking, as the program ends.
    void DestroyPanels();

    /// Opens all panels that there are, as `layout` tells: where they were, and without those that were closed;
    /// of those that are opened on demand (`PanelRegistry::SetOnDemand`) only those that the user had open.
    /// An empty layout gives the default one; so does a layout that cannot be used, which is logged.
    void OpenPanels(const QJsonObject& layout);
    QJsonObject SaveLayout() const;

    /// The dock of a panel, open or closed; null when it was never open.
    DockWorkspaceFrame* FindFrame(const host::UTF16String& handlerID) const;

private:
    void OpenForUser(const host::UTF16String& handlerID, bool takeFocus);
    void OpenPanel(const host::UTF16String& handlerID, bool takeFocus);
    DockWorkspaceFrame& FindOrMakeFrame(const host::UTF16String& handlerID);
    void AddDock(DockWorkspaceFrame& frame);
    void OpenByDefault();
    bool RestoreDocks(const QJsonObject& layout);
    void DestroyPanel(DockWorkspaceFrame& frame);
    bool SelectPanel(bool forward);
    void UpdateTabs();

    QMainWindow& mWindow;
    MainTopLevelWindow mTopLevelWindow{mWindow};
    std::vector<DockWorkspaceFrame*> mFrames;
    /// Those of the open panels that the user has asked for.
    std::set<host::UTF16String> mOpenedByUser;
};

}  // namespace desk
