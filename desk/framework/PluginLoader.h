#pragma once

#include <string>
#include <vector>

#include "host/core/Export.h"

namespace desk {

/// A file in a plug-in folder, judged by its entry record without running anything of it.
struct PluginFile {
    /// The library's path (bytes).
    std::string mPath;
    /// The name in the entry record; empty when there is none.
    std::string mName;
    unsigned mSdkVersion = 0;
    /// Why the file is not loaded, in words that follow its name ("has no entry record"); empty when it can be.
    std::string mRefusal;
};

/// Reads the entry record of a file (see `host/framework/PluginEntry.h`): ELF header, program headers and
/// notes only, bounded. Never throws. Any thread.
ZUHOST_API PluginFile InspectPlugin(const std::string& path);

/// The plug-ins of the folders, in order; of those with one file name the first that is not refused counts, so
/// that an old copy does not keep the program's own panel away. Refused files are listed too. Folders that do
/// not exist are passed over. Any thread.
ZUHOST_API std::vector<PluginFile> FindPlugins(const std::vector<std::string>& folders);

/// Loads the plug-ins that are not refused (RTLD_NOW | RTLD_LOCAL; they stay until the process ends), and calls
/// the module factories they registered. What cannot be loaded gets its refusal, which is logged with the
/// file's name. UI thread.
ZUHOST_API void LoadPlugins(std::vector<PluginFile>& plugins);

}  // namespace desk
