#include "desk/core/settings/Profile.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "host/core/Strings.h"
#include "host/files/FileException.h"

namespace desk {
namespace {

constexpr const char* kFolderName = "/production-desk";

std::string HomeFolder() {
    if (const char* home = std::getenv("HOME"); home && *home == '/') return home;
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

std::string BaseFolder(const char* variable, const char* belowHome) {
    const char* value = std::getenv(variable);
    return (value && *value == '/' ? value : HomeFolder() + belowHome) + kFolderName;
}

std::string AbsoluteFolder(const std::string& folder) {
    std::string path = std::filesystem::absolute(folder).lexically_normal().string();
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

bool IsFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

void MakePrivateFolder(const std::string& path) {
    if (IsFolder(path)) return;
    const std::size_t slash = path.find_last_of('/');
    if (slash != std::string::npos && slash > 0) MakePrivateFolder(path.substr(0, slash));
    if (mkdir(path.c_str(), 0700) == 0) return;
    const int error = errno;
    // Somebody else may have made it meanwhile.
    if (!IsFolder(path))
        throw host::FileException("create folder", host::UTF8to16(path), error == EEXIST ? ENOTDIR : error);
}

Profile::Profile(const std::string& folder)
    : mFolder(AbsoluteFolder(folder.empty() ? DefaultFolder() : folder)) {
    MakePrivateFolder(mFolder);
}

std::string Profile::PathOf(std::string_view name) const {
    return mFolder + '/' + std::string(name);
}

std::string Profile::DefaultFolder() {
    return BaseFolder("XDG_CONFIG_HOME", "/.config");
}

std::string Profile::UserDataFolder() {
    return BaseFolder("XDG_DATA_HOME", "/.local/share");
}

}  // namespace desk
