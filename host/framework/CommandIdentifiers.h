#pragma once

/// The numbers by which panels and the host name commands to each other.
namespace host::CommandID {

// Those of the Production panel, in its command context.

inline constexpr int kNewFolder = 1296191078;
inline constexpr int kNewProject = 30303;
inline constexpr int kAddProject = 30304;
inline constexpr int kOpenProject = 30305;
inline constexpr int kCloseProject = 30306;
inline constexpr int kRefreshProject = 30307;
inline constexpr int kRenameItem = 30308;
inline constexpr int kRevealRootInSystem = 30309;
inline constexpr int kRevealItemInSystem = 30310;
/// Its menu text says what it would do, while it can do something.
inline constexpr int kToggleLock = 30311;
inline constexpr int kToggleShowPath = 30312;
inline constexpr int kMoveHome = 30313;
inline constexpr int kMoveEnd = 30314;
inline constexpr int kMovePageDown = 30315;
inline constexpr int kMovePageUp = 30316;
inline constexpr int kEmptyTrash = 30317;
inline constexpr int kRenameProduction = 30318;
inline constexpr int kMakeACopy = 30319;
inline constexpr int kRefreshAllProjects = 30320;
inline constexpr int kSaveAllProjects = 30321;
inline constexpr int kCloseAllProjects = 30322;
inline constexpr int kZoomIn = 30323;
inline constexpr int kZoomOut = 30324;
inline constexpr int kMoveToTrash = 30325;

// The host's own, which panels answer as far as they apply to them.

inline constexpr int kCloseAllOtherProjects = 11215;
inline constexpr int kDeselectAll = 11303;
inline constexpr int kSelectAll = 57642;
inline constexpr int kFind = 11311;
inline constexpr int kNextPanel = 11916;
inline constexpr int kPreviousPanel = 11917;

// The host's own, which panels send.

/// Has the user choose the production to work in.
inline constexpr int kOpenProduction = 60002;

/// The Production panel has been closed while no project is open: the host has the user back, and gives the
/// keyboard to where work can go on.
inline constexpr int kPanelClosedWithoutProjects = 30392;

}  // namespace host::CommandID
