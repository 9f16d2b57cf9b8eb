#pragma once

#include <memory>

#include "host/core/Messaging.h"
#include "host/framework/Handler.h"

namespace host {
class ShortcutManager;
}

namespace HandlerSharedProjects {

using namespace host;

class SharedProjectsTabView;

/// The drag-and-drop data type of the panel's rows.
inline constexpr char kDirectoryRowDragType[] = "Vantor/SharedProjectsPanel/RowDragType";

/// The Production panel as the host sees it: owns the panel's view and brings the panel forward when a
/// production is opened. UI thread.
class SharedProjectsHandler final : public Handler, public Listener {
public:
    /// The panel's command context.
    static const char* const sContextName;

    explicit SharedProjectsHandler(const UTF16String& handlerPath);
    ~SharedProjectsHandler() override;

    /// The panel's handler, or null when there is none.
    static SharedProjectsHandler* GetHandler();

    /// The folder of the open production: the root of the whole panel. Empty when none is open.
    static UTF16String GetRootDirectory();

    /// Declares the panel's command context and its commands.
    static void PopulateCommandContext(ShortcutManager* manager);

    /// Opens the panel, or brings it to the front when it is open.
    void ShowPanel();

    bool FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark, UTF16String& text) override;
    bool ObeyCommand(const Command& command) override;
    const char* GetContextName() const override;
    const char* GetFlyoutMenuID() const override;
    TabView* CreateTabViewSelf(WorkspaceFrame* frame) override;
    bool ShouldDestroyWhenClosed() const override;
    void ListenToMessage(const Message& message) override;

private:
    void RegisterWindow();

    std::shared_ptr<SharedProjectsTabView> mTabView;
};

/// Makes the panel's handler. The host owns it.
Handler* CreateHandler(const UTF16String& handlerPath);

}  // namespace HandlerSharedProjects
