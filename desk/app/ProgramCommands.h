#pragma once

#include "host/framework/CommandIdentifiers.h"

namespace desk {

/// The program's own commands. Their entries stand in resources/main_menu.json, their keys in
/// resources/shortcuts.json.
inline constexpr int kCommandNewProduction = 60001;
inline constexpr int kCommandOpenProduction = host::CommandID::kOpenProduction;
inline constexpr int kCommandCloseProduction = 60003;
inline constexpr int kCommandQuit = 60004;
inline constexpr int kCommandAbout = 60005;
inline constexpr int kCommandShowPlaces = 60006;

/// On the project in front.
inline constexpr int kCommandOpenProject = 60010;
inline constexpr int kCommandSaveProject = 60011;
inline constexpr int kCommandSaveAllProjects = 60012;
inline constexpr int kCommandSaveProjectAsCopy = 60013;
inline constexpr int kCommandReloadProject = 60014;
inline constexpr int kCommandCloseProject = 60015;
inline constexpr int kCommandCloseOtherProjects = 60016;
inline constexpr int kCommandCloseAllProjects = 60017;
inline constexpr int kCommandToggleReadOnly = 60018;
inline constexpr int kCommandBreakLock = 60019;
inline constexpr int kCommandRevealProject = 60020;
inline constexpr int kCommandTrashProject = 60024;

/// What earlier sessions have left.
inline constexpr int kCommandReopenSession = 60021;
inline constexpr int kCommandReopenSessionAtStart = 60022;
inline constexpr int kCommandRecoverText = 60023;

/// In its editor.
inline constexpr int kCommandUndo = 60030;
inline constexpr int kCommandRedo = 60031;
inline constexpr int kCommandCut = 60032;
inline constexpr int kCommandCopy = 60033;
inline constexpr int kCommandPaste = 60034;

/// What the Return key does in trees.
inline constexpr int kCommandReturnRenames = 60041;
inline constexpr int kCommandReturnOpens = 60042;

/// The shortcut context of the place for open projects.
inline constexpr char kProjectsContext[] = "projects";

/// Declares them in the global shortcut context and in that of the place for open projects, under their names
/// ("cmd.production.open"). UI thread.
void DeclareProgramCommands();

}  // namespace desk
