#pragma once

#define FUSE_USE_VERSION 312
#include <fuse_lowlevel.h>

#include <array>
#include <atomic>
#include <chrono>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/slow_volume/NodeTable.h"

namespace slowvolume {

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

/// Makes every `mEvery`-th call of an operation fail: before it is done, or after, so that its reply is lost.
struct Fault {
    Operation mOperation;
    unsigned mEvery = 1;
    int mError = 0;
    bool mIsAfter = false;
};

struct Options {
    std::string mSource;
    std::string mMountPoint;
    /// What every operation costs before it is done; operations of parallel callers wait in parallel.
    std::chrono::milliseconds mDelay{10};
    /// How long the kernel may keep names and attributes, in seconds, as mounts of network volumes let it.
    double mCacheSeconds = 1;
    /// Most operations at a time.
    unsigned mThreads = 64;
    std::vector<Fault> mFaults;
    /// Prints how often each operation was asked for when the volume is unmounted.
    bool mStatistics = false;
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

    /// Answers a request with an error when a fault is due before (or after) the operation; true when it was.
    bool Fails(fuse_req_t request, Operation operation, bool isAfter);
    /// Does an operation that answers with nothing but success or errno, and is subject to faults.
    template <class Call>
    void Perform(fuse_req_t request, Operation operation, Call call);

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
    /// Calls that each fault has met.
    std::vector<std::atomic<std::uint64_t>> mFaultCounts;
};

/// The operation of that name, as the statistics print it.
std::optional<Operation> FindOperation(std::string_view name);

/// Sets the operations on open files: open, read, write, create, release, sync. (SlowVolumeFiles.cpp)
void AddFileOperations(fuse_lowlevel_ops& operations);

/// Answers with errno when a system call has failed, else with success.
void ReplyResult(fuse_req_t request, int result);

template <class Call>
void SlowVolume::Perform(fuse_req_t request, Operation operation, Call call) {
    if (Fails(request, operation, false)) return;
    const int result = call();
    if (result >= 0 && Fails(request, operation, true)) return;
    ReplyResult(request, result);
}

}  // namespace slowvolume
