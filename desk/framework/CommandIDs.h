#pragma once

/// Commands that the program itself defines and panels may answer.
namespace desk {

inline constexpr int kCommandCloseAllOtherProjects = 11215;
inline constexpr int kCommandDeselectAll = 11303;
inline constexpr int kCommandFind = 11311;
inline constexpr int kCommandNextPanel = 11916;
inline constexpr int kCommandPreviousPanel = 11917;
inline constexpr int kCommandSelectAll = 57642;

}  // namespace desk
