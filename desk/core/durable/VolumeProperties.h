#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "host/core/Export.h"

namespace desk {

/// True when a file system of this type number (statfs(2) f_type) reports every change of its files through
/// inotify: the known local ones. Any thread.
ZUHOST_API bool DoesVolumeReportChanges(long type);

/// True when a file system of this type number refuses the names that Windows refuses, or shows them to others
/// under other names: vfat, exfat, ntfs and cifs. Any thread.
ZUHOST_API bool HasWindowsNames(long type);

/// For how long a volume with these mount options (nfs(5), mount.cifs(8): "acregmax", "acdirmax", "actimeo",
/// "closetimeo", "noac", in seconds) may show old content. `type` is the file system's name; network file
/// systems that name no time get their default. Any thread.
ZUHOST_API std::chrono::seconds FindCacheTime(std::string_view type, std::string_view options);

/// The same for the volume that holds `path` (bytes), by statx(2) and /proc/self/mountinfo (proc(5)). Absent
/// when the system does not tell the volume, as after `path` was renamed. May wait for the volume; any thread;
/// never throws.
ZUHOST_API std::optional<std::chrono::seconds> FindCacheTime(const std::string& path) noexcept;

}  // namespace desk
