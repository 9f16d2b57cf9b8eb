#pragma once

#include <string>
#include <vector>

#include "desk/core/edges/Desktop.h"

namespace desk {

/// Shows items through the session bus (freedesktop.org's file manager interface, org.freedesktop.FileManager1:
/// ShowItems, ShowFolders), asked by a worker. Where nobody answers to it, xdg-open(1) opens the folders, each
/// once. UI thread.
ZUHOST_API void ShowInFileBrowser(const std::vector<std::string>& paths, Desktop::Reveal reveal,
                                  Desktop::RevealFailed failed);

}  // namespace desk
