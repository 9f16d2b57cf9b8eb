#pragma once

#include <string>
#include <string_view>

#include "host/core/Export.h"

namespace desk {

/// The folder of the user's settings, logs and recent list. Paths are byte strings as the kernel takes them.
class ZUHOST_API Profile {
public:
    /// Opens `folder`, or the default one when it is empty, and makes it (mode 0700, with its parents) when it
    /// is not there. Throws `host::FileException` when it cannot be made or is no folder. May wait for the
    /// disk.
    explicit Profile(const std::string& folder = {});

    /// Absolute, without a trailing separator.
    const std::string& Folder() const { return mFolder; }
    /// The path of a file of the profile.
    std::string PathOf(std::string_view name) const;

    /// "$XDG_CONFIG_HOME/production-desk", else "~/.config/production-desk" (freedesktop.org's base
    /// directories: a relative value counts as not set). The disk is not touched.
    static std::string DefaultFolder();
    /// "$XDG_DATA_HOME/production-desk", else "~/.local/share/production-desk": where the sample production
    /// and the user's panels are. The disk is not touched.
    static std::string UserDataFolder();

private:
    std::string mFolder;
};

/// Makes a folder and its parents with mode 0700 where they are not there. Throws `host::FileException`.
ZUHOST_API void MakePrivateFolder(const std::string& path);

}  // namespace desk
