#pragma once

#include <initializer_list>
#include <optional>
#include <span>

#include "host/core/Strings.h"

namespace HandlerSharedProjects {

using namespace host;

class SharedProjectsTabView;

/// Why a command cannot be carried out now: a sentence for people, localised; empty when it can be. Absent when
/// the panel declines to say: then its base is asked.
using CommandStatus = std::optional<UTF16String>;

/// Enabled when `isPossible`; else the text of `reasonKey`, with `names` in it, says why not.
CommandStatus EnabledIf(bool isPossible, const char* reasonKey, std::initializer_list<UTF16String> names = {});

// Reasons that several commands share.

inline constexpr char kNoProductionIsOpen[] =
    "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NoProduction=No production is open.";
inline constexpr char kNothingIsSelected[] =
    "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NothingSelected=Nothing is selected.";
inline constexpr char kNoOpenProjectIsSelected[] =
    "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NoneOpen=No open project is selected.";

/// A command of the panel, and what its view does for it. UI thread.
struct PanelCommand {
    /// See `CommandIdentifiers.h`.
    int mID;
    /// Asked often, also for the reason beside a grey menu entry; waits for nothing.
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
