#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace slowvolume {

/// An item that the kernel knows of: a path-only descriptor (open(2), O_PATH) of it in the source folder.
struct Node {
    int mDescriptor = -1;
    dev_t mDevice = 0;
    ino_t mInode = 0;
    /// How many references the kernel holds (lookups not yet forgotten).
    std::uint64_t mLookups = 0;

    ~Node();
    /// The name by which the item itself is opened anew, whatever it is called by now (proc(5)).
    std::string ProcPath() const;
};

/// The items that the kernel knows of, one node for each device and inode. Its node numbers are addresses;
/// the root is number 1 (FUSE_ROOT_ID). Any thread.
class NodeTable {
public:
    /// Throws std::system_error when `source` cannot be opened.
    explicit NodeTable(const std::string& source);

    Node& Get(std::uint64_t number);
    /// Finds `name` in `parent` and counts one lookup. Returns the node's number and fills `status`; 0 with
    /// errno set when there is no such item.
    std::uint64_t LookUp(Node& parent, const char* name, struct stat& status);
    void Forget(std::uint64_t number, std::uint64_t lookups);

private:
    using Key = std::pair<dev_t, ino_t>;

    Node mRoot;
    std::mutex mMutex;
    std::map<Key, std::unique_ptr<Node>> mNodes;
};

}  // namespace slowvolume
