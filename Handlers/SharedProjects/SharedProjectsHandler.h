#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "Handlers/SharedProjects/SharedProjectsStateData.h"
#include "host/core/Messaging.h"
#include "host/framework/Handler.h"

namespace host {
class SharedSettingsFile;
class ShortcutManager;
}  // namespace host

namespace HandlerSharedProjects {

using namespace host;

/// The drag-and-drop data type of the panel's rows.
inline constexpr char kDirectoryRowDragType[] = "Vantor/SharedProjectsPanel/RowDragType";

/// The name of the panel's state record. No place where anything is kept.
inline constexpr char kStateDataKey[] = "HandlerSharedProjects.PanelStateData";

/// The Production panel as the host sees it: owns the panel's view, brings the panel forward when a production
/// is opened, and keeps what is remembered of each production. UI thread.
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

    /// The settings file with what is remembered of each production, "Production Panel Settings" in the user's
    /// profile; empty while the program remembers nothing.
    static UTF16String GetProductionPanelStateDataFilePath();

    /// Remembers how a production was left, from now on and in the settings file; nothing for an empty path.
    /// What cannot be written is logged, tried once more when the panel is closed, and kept beyond it until a
    /// later save writes it or the program ends. May wait for the profile's disk, two seconds at most for
    /// another program that writes.
    void SaveStateDataForProduction(const UTF16String& productionPath,
                                    const SharedProjectsTabView::StateData& state);
    /// Gives what is remembered of a production; false, with `state` as it was, when there is nothing. Reads
    /// the settings file when nothing has been read yet.
    bool LoadStateDataForProduction(const UTF16String& productionPath, SharedProjectsTabView::StateData& state);
    /// Puts what is not written yet into the settings file, in place of the same productions' entries; what
    /// other programs have written of other productions meanwhile stays, and is known from then on.
    void SaveProductionLayouts();
    /// Reads the settings file anew. One that cannot be read as JSON is kept aside, and the user is told.
    void LoadProductionLayouts();

    bool FindCommandStatus(int id, bool& enabled, bool& checked, MenuMark& mark, UTF16String& text) override;
    bool ObeyCommand(const Command& command) override;
    const char* GetContextName() const override;
    const char* GetFlyoutMenuID() const override;
    TabView* CreateTabViewSelf(WorkspaceFrame* frame) override;
    bool ShouldDestroyWhenClosed() const override;
    void ListenToMessage(const Message& message) override;

private:
    /// The settings file as it was last read or written.
    struct FileLayouts {
        /// Absent while there is no file.
        std::optional<std::string> mBytes;
        JSONMemberTexts mMembers;
    };

    void RegisterWindow();
    /// Takes over what the file says now. Returns why it cannot be used; empty when it can, or is absent.
    std::string ReadLayoutsFrom(const SharedSettingsFile& file);
    /// False when a file stands there that cannot be used, and could not be set aside. Under the file's lock.
    bool ReadOrSetAside(const SharedSettingsFile& file);
    void WriteUnsaved(std::chrono::milliseconds patience);
    /// What could not be saved while the panel was being closed; waits for nobody any more.
    void TryToSaveAgain();
    void WriteUnsavedTo(const SharedSettingsFile& file);

    std::shared_ptr<SharedProjectsTabView> mTabView;
    /// Absent until it has been read.
    std::optional<FileLayouts> mFileLayouts;
};

/// Makes the panel's handler. The host owns it.
Handler* CreateHandler(const UTF16String& handlerPath);

}  // namespace HandlerSharedProjects
