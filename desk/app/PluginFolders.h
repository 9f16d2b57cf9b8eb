#pragma once

#include <string>
#include <vector>

namespace desk {

/// Where panels are looked for, in order: the folders of the command line, those of $ZUHOST_PLUGIN_PATH
/// (separated by ":"), "plugins" in the user's data folder, and the installed ones beside the program. Paths
/// are bytes. Needs an application object for the program's own place.
std::vector<std::string> GetPluginFolders(const std::vector<std::string>& fromCommandLine);

}  // namespace desk
