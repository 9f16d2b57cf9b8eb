#pragma once

#define FUSE_USE_VERSION 312
#include <fuse_lowlevel.h>

#include <array>
#include <atomic>
#include <chrono>
#include <iosfwd>
#include <string>

#include "benchmarks/slow_volume/NodeTable.h"

namespace slowvolume {

struct Options {
    std::string mSource;
    std::string mMountPoint;
    /// What every operation costs before it is done; operations of parallel callers wait in parallel.
    std::chrono::milliseconds mDelay{10};
    /// How long the kernel may keep names and attributes, in seconds, as mounts of network volumes let it.
    double mCacheSeconds = 1;
    /// Most operations at a time.
    unsigned mThreads = 64;
    /// Prints how often each operation was asked for when the volume is unmounted.
    bool mStatistics = false;
};

enum class Operation : std::size_t {
    LookUp,
    GetAttributes,
    SetAttributes,
    OpenFolder,
    ReadFolder,
    Open,
    Read,
    Write,
    Release,
    Sync,
    Create,
    MakeFolder,
    Link,
    SymbolicLink,
    ReadLink,
    Unlink,
    RemoveFolder,
    Rename,
    VolumeStatus,
    Count
};

/// The folder `Options::mSource`, passed through with a delay for each operation. No folder entry brings
/// attributes with it (no readdirplus): a caller that wants them asks for each item. The volume reports no
/// changes that were made in the source folder, like a network volume.
class SlowVolume {
public:
    /// Throws std::system_error when the source cannot be opened.
    explicit SlowVolume(const Options& options);

    /// Fills the operations that are passed to fuse_session_new(3), with the volume as user data.
    static fuse_lowlevel_ops MakeOperations();
    void PrintStatistics(std::ostream& out) const;

    /// The volume of a request, once the operation has been counted and its delay has passed.
    static SlowVolume& Begin(fuse_req_t request, Operation operation);

    const Options& GetOptions() const { return mOptions; }
    NodeTable& GetNodes() { return mNodes; }
    /// Answers a request with the item `name` of `parent`, which counts as one lookup, or with errno.
    void ReplyEntry(fuse_req_t request, Node& parent, const char* name);
    /// Fills `entry` likewise; false with errno set when there is no such item.
    bool FillEntry(Node& parent, const char* name, fuse_entry_param& entry);

private:
    Options mOptions;
    NodeTable mNodes;
    std::array<std::atomic<std::uint64_t>, static_cast<std::size_t>(Operation::Count)> mCounts{};
};

/// Sets the operations on open files: open, read, write, create, release, sync. (SlowVolumeFiles.cpp)
void AddFileOperations(fuse_lowlevel_ops& operations);

/// Answers with errno when a system call has failed, else with success.
void ReplyResult(fuse_req_t request, int result);

}  // namespace slowvolume
