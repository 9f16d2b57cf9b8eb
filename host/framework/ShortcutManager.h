#pragma once

#include <memory>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// What kind of command is declared. The values are the host's.
enum class CommandKind {
    /// A command whose text comes from the menus that show it.
    MenuCommand = 0,
    /// A command with a label of its own, shown where commands are listed.
    LabelledCommand = 2,
};

/// A set of commands that can carry shortcuts while the views it belongs to are on duty. UI thread.
class ZUHOST_API CommandContext {
public:
    virtual ~CommandContext();

    /// Declares one command. `name` is unique in the context and is what shortcut sets refer to; `label`
    /// is a localisation key or empty; `iconName` may be null. With `isHidden` it is left out where
    /// commands are listed.
    virtual void DeclareCommand(std::string_view name, int id, CommandKind kind, std::string_view label,
                                const char* iconName, bool isHidden) = 0;
};

/// Keeps the command contexts and their shortcuts. UI thread.
class ZUHOST_API ShortcutManager {
public:
    /// Never null.
    static ShortcutManager* Instance();

    using PopulateFunction = void (*)(ShortcutManager* manager);

    /// Calls `populate` once, so that a module declares its contexts before any panel exists.
    void RegisterCommandContext(PopulateFunction populate);

    /// Adds a context and returns it; a context of that name that exists is returned as it is.
    CommandContext* AddContext(std::string_view name, const UTF16String& displayName);

    /// The context of that name, or null. "global" always exists.
    CommandContext* GetContext(std::string_view name);

    /// Makes the shortcuts of context `name` the active ones, beside the global ones; with `exclusive`
    /// alone. An unknown name leaves the active ones as they are.
    void ApplyContext(std::string_view name, bool exclusive);

    /// Tells which menu (by the ID of its resource) shows the commands of a context, and the menu's name
    /// for people.
    void AddWindowMenuID(std::string_view context, const UTF16String& menuDisplayName, std::string_view menuID);
};

}  // namespace host
