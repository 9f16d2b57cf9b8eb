#include "desk/app/PluginFolders.h"

#include <QCoreApplication>
#include <cstdlib>
#include <sstream>

#include "desk/app/FolderCheck.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/Profile.h"

namespace desk {

std::vector<std::string> GetPluginFolders(const std::vector<std::string>& fromCommandLine) {
    std::vector<std::string> folders = fromCommandLine;
    if (const char* variable = std::getenv("ZUHOST_PLUGIN_PATH")) {
        std::istringstream list(variable);
        for (std::string folder; std::getline(list, folder, ':');)
            if (!folder.empty()) folders.push_back(folder);
    }
    folders.push_back(Profile::UserDataFolder() + "/plugins");
    const std::string program = ToUTF8(QCoreApplication::applicationDirPath());
    folders.push_back(ToAbsolutePath(program + "/../" ZU_LIBRARY_FOLDER "/production-desk/plugins"));
    folders.push_back(ToAbsolutePath(program + "/../plugins"));  // Where the build puts them.
    return folders;
}

}  // namespace desk
