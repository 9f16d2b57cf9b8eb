#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "desk/core/edges/FileSystem.h"

namespace desk {

class WorkProgress;

/// An item of a tree, as it was read or copied.
struct TreeItem {
    /// Its path below the tree's root; empty for the root itself.
    std::string mBelow;
    ItemStatus mStatus;
};

/// A file, link or folder with all that is in it.
struct ItemTree {
    std::string mRoot;
    /// Parents before what is in them.
    std::vector<TreeItem> mFolders;
    std::vector<TreeItem> mFiles;
    std::vector<TreeItem> mLinks;
    /// Pipes, devices, sockets.
    std::vector<TreeItem> mOthers;
    /// Of all files.
    std::uint64_t mBytes = 0;

    bool IsFolder() const { return !mFolders.empty(); }
    std::string PathOf(const TreeItem& item) const;
};

enum class TreeExtent {
    /// Without lock files, the host's own hidden files and what network file systems leave for open files.
    Content,
    Everything
};

/// Reads the status of all that stands at and below `root`; follows no link. Throws `host::FileException` when
/// anything cannot be read, and when `progress` is cancelled. Waits for the volume: for a worker.
ItemTree ReadItemTree(const std::string& root, TreeExtent extent, const WorkProgress& progress);

}  // namespace desk
