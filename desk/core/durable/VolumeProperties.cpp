#include "desk/core/durable/VolumeProperties.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace desk {
namespace {

using std::chrono::seconds;

/// What the client keeps at most when nothing is said: nfs(5) 60 seconds, sshfs(1) 20. No mount says what
/// another FUSE program chose; one second is the default of libfuse, and some take more. Others keep about one.
seconds DefaultTime(std::string_view type) {
    if (type == "nfs" || type == "nfs4") return seconds(60);
    if (type == "fuse.sshfs") return seconds(20);
    if (type == "fuse" || type.starts_with("fuse.")) return seconds(5);
    return seconds(1);
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

bool IsTime(std::string_view name) {
    return name == "acregmax" || name == "acdirmax" || name == "actimeo" || name == "closetimeo";
}

/// The ID of the mount that holds `path`, as mountinfo names it; empty when the system does not tell.
std::string FindMountID(const std::string& path) {
    struct statx status {};
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_MNT_ID, &status) != 0) return {};
    return status.stx_mask & STATX_MNT_ID ? std::to_string(status.stx_mnt_id) : std::string();
}

/// A line ends, behind " - ", with type, source and the file system's own options.
seconds FindCacheTimeInLine(const std::string& line) {
    const std::size_t dash = line.find(" - ");
    if (dash == std::string::npos) return DefaultTime({});
    std::istringstream rest(line.substr(dash + 3));
    std::string type, source, options;
    rest >> type >> source >> options;
    return FindCacheTime(type, options);
}

}  // namespace

bool DoesVolumeReportChanges(long type) {
    // From statfs(2) and linux/magic.h. What is not here (NFS, SMB, 9p, every FUSE file system, ...) may be
    // changed by other machines without a word.
    static constexpr long kLocalTypes[] = {
        0xEF53,      // ext2, ext3, ext4
        0x58465342,  // xfs
        0x9123683E,  // btrfs
        0x01021994,  // tmpfs
        0x858458F6,  // ramfs
        0x794C7630,  // overlayfs
        0xF2F52010,  // f2fs
        0x2FC12FC1,  // zfs
        0xCA451A4E,  // bcachefs
        0x3153464A,  // jfs
        0x52654973,  // reiserfs
        0x3434,      // nilfs2
        0x4D44,      // vfat
        0x2011BAB0,  // exfat
        0x7366746E,  // ntfs3
        0x482B,      // hfs+
        0x9660,      // iso9660
        0x15013346,  // udf
        0x73717368,  // squashfs
    };
    return std::find(std::begin(kLocalTypes), std::end(kLocalTypes), type) != std::end(kLocalTypes);
}

bool HasWindowsNames(long type) {
    // From linux/magic.h and the file systems' own headers.
    static constexpr long kTypes[] = {
        0x4D44,      // vfat
        0x2011BAB0,  // exfat
        0x7366746E,  // ntfs3
        0x5346544E,  // ntfs
        0x517B,      // smb
        0xFF534D42,  // cifs
        0xFE534D42,  // smb2
    };
    return std::find(std::begin(kTypes), std::end(kTypes), type) != std::end(kTypes);
}

seconds FindCacheTime(std::string_view type, std::string_view options) {
    seconds longest(-1);
    for (const std::string_view option : Split(options, ',')) {
        if (option == "noac") return seconds(0);
        const std::size_t equals = option.find('=');
        if (equals == std::string_view::npos || !IsTime(option.substr(0, equals))) continue;
        long value = 0;
        std::from_chars(option.data() + equals + 1, option.data() + option.size(), value);
        longest = std::max(longest, seconds(std::clamp(value, 0L, 600L)));
    }
    const bool isSaid = longest >= seconds(0);
    // nfs(5): a maximum that is the default is not listed.
    const bool isWhole = options.find("acregmax") == std::string_view::npos ||
                         options.find("acdirmax") == std::string_view::npos;
    if (isSaid && type.starts_with("nfs") && isWhole && options.find("actimeo") == std::string_view::npos)
        return std::max(longest, DefaultTime(type));
    return isSaid ? longest : DefaultTime(type);
}

std::optional<seconds> FindCacheTime(const std::string& path) noexcept {
    try {
        const std::string id = FindMountID(path);
        std::ifstream file("/proc/self/mountinfo");
        for (std::string line; !id.empty() && std::getline(file, line);)
            if (line.starts_with(id + ' ')) return FindCacheTimeInLine(line);
    } catch (...) {
        // Not told.
    }
    return {};
}

}  // namespace desk
