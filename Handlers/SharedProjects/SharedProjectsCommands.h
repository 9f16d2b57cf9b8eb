#pragma once

#include <optional>
#include <span>

#include "host/core/Strings.h"

namespace HandlerSharedProjects {

using namespace host;

class SharedProjectsTabView;

/// Whether a command can be carried out now; absent when the panel declines to say: then its base is asked.
using CommandStatus = std::optional<bool>;

/// A command of the panel, and what its view does for it. UI thread.
struct PanelCommand {
    /// See `CommandIdentifiers.h`.
    int mID;
    /// Asked often; waits for nothing.
    CommandStatus (*mStatus)(const SharedProjectsTabView& panel);
    /// False to decline: then the base is asked. May wait for the volume and for the user.
    bool (*mObey)(SharedProjectsTabView& panel);
    /// The menu text while the command is enabled; null for the menu's own.
    UTF16String (*mText)(const SharedProjectsTabView& panel) = nullptr;
};

/// The commands by topic: on files and folders, on projects, on the view itself.
std::span<const PanelCommand> GetFileCommands();
std::span<const PanelCommand> GetProjectCommands();
std::span<const PanelCommand> GetViewCommands();

}  // namespace HandlerSharedProjects
