#include "desk/files/VolumeTypes.h"

#include <algorithm>
#include <iterator>

namespace desk {

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

}  // namespace desk
