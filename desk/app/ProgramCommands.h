#pragma once

namespace desk {

/// The program's own commands. Their entries stand in resources/main_menu.json, their keys in
/// resources/shortcuts.json.
inline constexpr int kCommandNewProduction = 60001;
inline constexpr int kCommandOpenProduction = 60002;
inline constexpr int kCommandCloseProduction = 60003;
inline constexpr int kCommandQuit = 60004;
inline constexpr int kCommandAbout = 60005;
inline constexpr int kCommandShowPlaces = 60006;

/// Declares them in the global shortcut context, under their names ("cmd.production.open"). UI thread.
void DeclareProgramCommands();

}  // namespace desk
