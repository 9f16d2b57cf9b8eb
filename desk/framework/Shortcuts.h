#pragma once

#include <QKeySequence>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/framework/ShortcutManager.h"

class QShortcut;

namespace desk {

class HeldKey;

/// A command of a context.
struct DeclaredCommand {
    std::string mName;
    int mID = 0;
    host::CommandKind mKind = host::CommandKind::MenuCommand;
    /// Localised.
    host::UTF16String mLabel;
};

/// Where keys come from: by context, then by the command's name.
using KeyBindings = std::map<std::string, std::map<std::string, std::vector<QKeySequence>>, std::less<>>;

/// The command contexts, the keys bound to their commands and the shortcuts in the main window. Behind
/// `host::ShortcutManager`. UI thread.
///
/// Keys stand in JSON files: an object by context name of objects by command name, each value one key sequence
/// in Qt's portable text ("Ctrl+Shift+N") or a list of them. The program's own are ":/shortcuts/*.json";
/// "shortcuts.json" in the profile replaces the keys of the commands that it names.
///
/// A key that is held down sends its command once, but for those that one goes on with: moving, zooming,
/// undoing.
class ZUHOST_API Shortcuts {
public:
    static Shortcuts& Instance();

    /// Reads the keys anew. What is not understood in a file is logged and left out.
    void Load(const std::string& profileFolder);

    /// Makes the shortcuts work in `mainWindow` and the windows that float over it. Names in the profile's
    /// file that nobody has declared by now are logged.
    void InstallOn(QWidget& mainWindow);

    /// The first key of a command: in the active context, else in any; empty when it has none.
    QKeySequence GetKey(int commandID) const;

    /// Back to the global shortcuts alone.
    void ResetContext();

    // What `host::ShortcutManager` offers.
    void RegisterCommandContext(host::ShortcutManager::PopulateFunction populate);
    host::CommandContext* AddContext(std::string_view name, const host::UTF16String& displayName);
    host::CommandContext* GetContext(std::string_view name) const;
    void ApplyContext(std::string_view name, bool exclusive);
    void AddWindowMenuID(std::string_view context, const host::UTF16String& menuDisplayName,
                         std::string_view menuID);
    /// The name for people of a menu that shows the commands of a context; empty when there is none.
    host::UTF16String GetMenuDisplayName(std::string_view menuID) const;

private:
    class Context;

    Shortcuts();
    ~Shortcuts();

    Context* FindContext(std::string_view name) const;

    const std::vector<QKeySequence>* FindKeys(const Context& context, const DeclaredCommand& command) const;
    const DeclaredCommand* FindCommand(const Context& context, const QKeySequence& key) const;
    /// The commands that the key may send now, the first to be asked first.
    std::vector<const DeclaredCommand*> FindActiveCommands(const QKeySequence& key) const;
    bool GoesPastFields(const QKeySequence& key) const;
    /// The contexts whose shortcuts act now, the first to be asked first.
    std::vector<const Context*> GetActiveContexts() const;
    void Refresh();
    void Activate(const QKeySequence& key) const;
    /// Whoever presses the key of a grey command is told what its menu entry would tell.
    static void TellWhyDisabled(const std::vector<const DeclaredCommand*>& commands);
    void LogUnknownNames() const;

    std::map<std::string, std::unique_ptr<Context>, std::less<>> mContexts;
    KeyBindings mDefaults;
    KeyBindings mOverrides;
    std::string mOverridesPath;
    std::vector<host::ShortcutManager::PopulateFunction> mPopulated;
    std::map<std::string, host::UTF16String, std::less<>> mMenuNames;
    const Context* mActive = nullptr;
    bool mIsExclusive = false;
    QPointer<QWidget> mWindow;
    /// The window's child.
    QPointer<QObject> mPassingKeys;
    QPointer<HeldKey> mHeldKey;
    std::map<QKeySequence, QPointer<QShortcut>> mShortcuts;
};

}  // namespace desk
