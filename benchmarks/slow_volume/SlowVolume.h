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
    SyncFolder,
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

/// Makes every `mEvery`-th call of an operation fail, or only the `mEvery`-th: before it is done, or after, so
/// that its reply is lost.
struct Fault {
    Operation mOperation;
    unsigned mEvery = 1;
    int mError = 0;
    bool mIsAfter = false;
    bool mIsOnce = false;
};

struct Options {
    std::string mSource;
    std::string mMountPoint;
    /// What every operation costs before it is done; operations of parallel callers wait in parallel.
    std::chrono::milliseconds mDelay{10};
    /// How long the kernel may keep names and attributes, in seconds, as mounts of network volumes let it.
    double mCacheSeconds = 1;
    /// Keeps as long that a name is not there.
    bool mKeepsAbsence = false;
    /// Knows renameat2(2)'s flags, and hard links; without them EINVAL and EPERM.
    bool mHasRenameFlags = false;
    bool mHasLinks = true;
    /// Most operations at a time.
    unsigned mThreads = 64;
    std::vector<Fault> mFaults;
    /// Calls count for the faults from the first look at this name in the root on; empty: from the beginning.
    std::string mArmingName;
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
    fuse_lowlevel_ops MakeOperations() const;
    void PrintStatistics(std::ostream& out) const;

    /// The volume of a request, once the operation has been counted and its delay has passed.
    static SlowVolume& Begin(fuse_req_t request, Operation operation);

    /// Answers a request with an error when a fault is due before (or after) the operation; true when it was.
    bool Fails(fuse_req_t request, Operation operation, bool isAfter);
    /// Does an operation that answers with nothing but success or errno, unless its reply is to be lost.
    template <class Call>
    void Perform(fuse_req_t request, Operation operation, Call call);
    /// Likewise one that makes the item `name` of `parent`, and answers with it.
    template <class Call>
    void PerformEntry(fuse_req_t request, Operation operation, Node& parent, const char* name, Call call);

    void Arm() { mIsArmed = true; }

    const Options& GetOptions() const { return mOptions; }
    NodeTable& GetNodes() { return mNodes; }
    /// Answers a request with the item `name` of `parent`, which counts as one lookup, or with errno.
    void ReplyEntry(fuse_req_t request, Node& parent, const char* name);
    /// Fills `entry` likewise; false with errno set when there is no such item.
    bool FillEntry(Node& parent, const char* name, fuse_entry_param& entry);

private:
    std::uint64_t CountFailures(std::size_t fault) const;

    Options mOptions;
    NodeTable mNodes;
    std::array<std::atomic<std::uint64_t>, static_cast<std::size_t>(Operation::Count)> mCounts{};
    std::atomic<bool> mIsArmed;
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
    const int result = call();
    if (result >= 0 && Fails(request, operation, true)) return;
    ReplyResult(request, result);
}

template <class Call>
void SlowVolume::PerformEntry(fuse_req_t request, Operation operation, Node& parent, const char* name,
                              Call call) {
    if (call() != 0) return ReplyResult(request, -1);
    if (!Fails(request, operation, true)) ReplyEntry(request, parent, name);
}

/// A handler behind what all have in common: it is counted, takes its time, and fails when a fault is due
/// before it.
template <Operation kOperation, auto kHandler>
struct Guarded;
template <Operation kOperation, class... Arguments, void (*kHandler)(SlowVolume&, fuse_req_t, Arguments...)>
struct Guarded<kOperation, kHandler> {
    static void Call(fuse_req_t request, Arguments... arguments) {
        SlowVolume& volume = SlowVolume::Begin(request, kOperation);
        if (!volume.Fails(request, kOperation, false)) kHandler(volume, request, arguments...);
    }
};

}  // namespace slowvolume
