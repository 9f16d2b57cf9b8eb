#include "benchmarks/slow_volume/NodeTable.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace slowvolume {

namespace {
constexpr std::uint64_t kRootNumber = 1;
}

Node::~Node() {
    if (mDescriptor >= 0) ::close(mDescriptor);
}

std::string Node::ProcPath() const {
    return "/proc/self/fd/" + std::to_string(mDescriptor);
}

NodeTable::NodeTable(const std::string& source) {
    mRoot.mDescriptor = ::open(source.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (mRoot.mDescriptor < 0) throw std::system_error(errno, std::generic_category(), source);
}

Node& NodeTable::Get(std::uint64_t number) {
    return number == kRootNumber ? mRoot : *reinterpret_cast<Node*>(number);
}

std::uint64_t NodeTable::LookUp(Node& parent, const char* name, struct stat& status) {
    auto node = std::make_unique<Node>();
    node->mDescriptor = ::openat(parent.mDescriptor, name, O_PATH | O_NOFOLLOW | O_CLOEXEC);
    if (node->mDescriptor < 0) return 0;
    if (::fstatat(node->mDescriptor, "", &status, AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW) != 0) return 0;
    node->mDevice = status.st_dev;
    node->mInode = status.st_ino;
    std::lock_guard lock(mMutex);
    auto& known = mNodes[{status.st_dev, status.st_ino}];
    if (!known) known = std::move(node);
    ++known->mLookups;
    return reinterpret_cast<std::uint64_t>(known.get());
}

void NodeTable::Forget(std::uint64_t number, std::uint64_t lookups) {
    if (number == kRootNumber) return;
    std::lock_guard lock(mMutex);
    Node& node = Get(number);
    node.mLookups -= lookups;
    if (node.mLookups == 0) mNodes.erase({node.mDevice, node.mInode});
}

}  // namespace slowvolume
