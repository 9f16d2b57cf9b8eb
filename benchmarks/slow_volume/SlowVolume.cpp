#include "benchmarks/slow_volume/SlowVolume.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <memory>
#include <ostream>
#include <thread>
#include <vector>

namespace slowvolume {

namespace {

constexpr std::array<const char*, static_cast<std::size_t>(Operation::Count)> kOperationNames{
    "lookup",   "getattr", "setattr", "opendir", "readdir", "open",     "read",   "write", "release", "fsync",
    "fsyncdir", "create",  "mkdir",   "link",    "symlink", "readlink", "unlink", "rmdir", "rename",  "statfs"};

struct OpenFolder {
    DIR* mStream = nullptr;
    /// An entry that did not fit into the last answer.
    dirent* mPending = nullptr;
    off_t mOffset = 0;

    ~OpenFolder() { ::closedir(mStream); }
};

OpenFolder& FolderOf(fuse_file_info& info) {
    return *reinterpret_cast<OpenFolder*>(info.fh);
}

void Initialise(void* userData, fuse_conn_info* connection) {
    const auto& options = static_cast<SlowVolume*>(userData)->GetOptions();
    connection->want &= ~static_cast<unsigned>(FUSE_CAP_READDIRPLUS | FUSE_CAP_READDIRPLUS_AUTO);
    // Without it the kernel sends look-ups in one folder one after the other.
    connection->want |= connection->capable & FUSE_CAP_PARALLEL_DIROPS;
    connection->max_background = options.mThreads;
}

void LookUp(SlowVolume& volume, fuse_req_t request, fuse_ino_t parent, const char* name) {
    if (volume.GetOptions().mArmingName == name) volume.Arm();
    volume.ReplyEntry(request, volume.GetNodes().Get(parent), name);
}

void Forget(fuse_req_t request, fuse_ino_t number, std::uint64_t lookups) {
    static_cast<SlowVolume*>(fuse_req_userdata(request))->GetNodes().Forget(number, lookups);
    fuse_reply_none(request);
}

void ForgetMany(fuse_req_t request, std::size_t count, fuse_forget_data* forgotten) {
    auto& nodes = static_cast<SlowVolume*>(fuse_req_userdata(request))->GetNodes();
    for (std::size_t i = 0; i < count; ++i) nodes.Forget(forgotten[i].ino, forgotten[i].nlookup);
    fuse_reply_none(request);
}

void ReplyAttributes(fuse_req_t request, SlowVolume& volume, const Node& node) {
    struct stat status;
    if (::fstatat(node.mDescriptor, "", &status, AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW) != 0) {
        fuse_reply_err(request, errno);
    } else {
        fuse_reply_attr(request, &status, volume.GetOptions().mCacheSeconds);
    }
}

void GetAttributes(SlowVolume& volume, fuse_req_t request, fuse_ino_t number, fuse_file_info*) {
    ReplyAttributes(request, volume, volume.GetNodes().Get(number));
}

timespec ToTime(const struct stat& wanted, int changes, int set, int setNow, bool access) {
    if (changes & setNow) return {0, UTIME_NOW};
    if (changes & set) return access ? wanted.st_atim : wanted.st_mtim;
    return {0, UTIME_OMIT};
}

int ApplyAttributes(const std::string& path, const struct stat& wanted, int changes) {
    if ((changes & FUSE_SET_ATTR_MODE) && ::chmod(path.c_str(), wanted.st_mode) != 0) return -1;
    if (changes & (FUSE_SET_ATTR_UID | FUSE_SET_ATTR_GID)) {
        const uid_t user = changes & FUSE_SET_ATTR_UID ? wanted.st_uid : static_cast<uid_t>(-1);
        const gid_t group = changes & FUSE_SET_ATTR_GID ? wanted.st_gid : static_cast<gid_t>(-1);
        if (::chown(path.c_str(), user, group) != 0) return -1;
    }
    if ((changes & FUSE_SET_ATTR_SIZE) && ::truncate(path.c_str(), wanted.st_size) != 0) return -1;
    if (!(changes & (FUSE_SET_ATTR_ATIME | FUSE_SET_ATTR_MTIME))) return 0;
    const timespec times[2] = {ToTime(wanted, changes, FUSE_SET_ATTR_ATIME, FUSE_SET_ATTR_ATIME_NOW, true),
                               ToTime(wanted, changes, FUSE_SET_ATTR_MTIME, FUSE_SET_ATTR_MTIME_NOW, false)};
    return ::utimensat(AT_FDCWD, path.c_str(), times, 0);
}

void SetAttributes(SlowVolume& volume, fuse_req_t request, fuse_ino_t number, struct stat* wanted, int changes,
                   fuse_file_info*) {
    const Node& node = volume.GetNodes().Get(number);
    if (ApplyAttributes(node.ProcPath(), *wanted, changes) != 0) {
        fuse_reply_err(request, errno);
    } else {
        ReplyAttributes(request, volume, node);
    }
}

void OpenFolderOf(SlowVolume& volume, fuse_req_t request, fuse_ino_t number, fuse_file_info* info) {
    const int descriptor =
        ::openat(volume.GetNodes().Get(number).mDescriptor, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* stream = descriptor < 0 ? nullptr : ::fdopendir(descriptor);
    if (!stream) {
        fuse_reply_err(request, errno);
        if (descriptor >= 0) ::close(descriptor);
        return;
    }
    auto folder = std::make_unique<OpenFolder>();
    folder->mStream = stream;
    info->fh = reinterpret_cast<std::uint64_t>(folder.release());
    fuse_reply_open(request, info);
}

/// Appends the next entry to `answer`; false when there is none or it does not fit.
bool AppendEntry(fuse_req_t request, OpenFolder& folder, std::vector<char>& answer, std::size_t size) {
    if (!folder.mPending) folder.mPending = ::readdir(folder.mStream);
    if (!folder.mPending) return false;
    const dirent& entry = *folder.mPending;
    struct stat status {};
    status.st_ino = entry.d_ino;
    status.st_mode = static_cast<mode_t>(DTTOIF(entry.d_type));
    const std::size_t used = answer.size();
    const std::size_t needed = fuse_add_direntry(request, nullptr, 0, entry.d_name, &status, entry.d_off);
    if (used + needed > size) return false;
    answer.resize(used + needed);
    fuse_add_direntry(request, answer.data() + used, needed, entry.d_name, &status, entry.d_off);
    folder.mOffset = entry.d_off;
    folder.mPending = nullptr;
    return true;
}

void ReadFolder(SlowVolume&, fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset,
                fuse_file_info* info) {
    OpenFolder& folder = FolderOf(*info);
    if (offset != folder.mOffset) {
        ::seekdir(folder.mStream, offset);
        folder.mPending = nullptr;
        folder.mOffset = offset;
    }
    std::vector<char> answer;
    while (AppendEntry(request, folder, answer, size)) {
    }
    fuse_reply_buf(request, answer.data(), answer.size());
}

void ReleaseFolder(fuse_req_t request, fuse_ino_t, fuse_file_info* info) {
    delete &FolderOf(*info);
    fuse_reply_err(request, 0);
}

void SyncFolder(SlowVolume& volume, fuse_req_t request, fuse_ino_t, int, fuse_file_info* info) {
    volume.Perform(request, Operation::SyncFolder, [&] { return ::fsync(::dirfd(FolderOf(*info).mStream)); });
}

void MakeFolder(SlowVolume& volume, fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode) {
    Node& folder = volume.GetNodes().Get(parent);
    volume.PerformEntry(request, Operation::MakeFolder, folder, name,
                        [&] { return ::mkdirat(folder.mDescriptor, name, mode); });
}

void Link(SlowVolume& volume, fuse_req_t request, fuse_ino_t number, fuse_ino_t newParent,
          const char* newName) {
    if (!volume.GetOptions().mHasLinks) {
        fuse_reply_err(request, EPERM);
        return;
    }
    const std::string source = volume.GetNodes().Get(number).ProcPath();
    Node& folder = volume.GetNodes().Get(newParent);
    volume.PerformEntry(request, Operation::Link, folder, newName, [&] {
        return ::linkat(AT_FDCWD, source.c_str(), folder.mDescriptor, newName, AT_SYMLINK_FOLLOW);
    });
}

void SymbolicLink(SlowVolume& volume, fuse_req_t request, const char* target, fuse_ino_t parent,
                  const char* name) {
    Node& folder = volume.GetNodes().Get(parent);
    volume.PerformEntry(request, Operation::SymbolicLink, folder, name,
                        [&] { return ::symlinkat(target, folder.mDescriptor, name); });
}

void ReadLink(SlowVolume& volume, fuse_req_t request, fuse_ino_t number) {
    char target[PATH_MAX];
    const auto length = ::readlinkat(volume.GetNodes().Get(number).mDescriptor, "", target, sizeof(target) - 1);
    if (length < 0) return ReplyResult(request, -1);
    target[length] = 0;
    fuse_reply_readlink(request, target);
}

void Unlink(SlowVolume& volume, fuse_req_t request, fuse_ino_t parent, const char* name) {
    volume.Perform(request, Operation::Unlink,
                   [&] { return ::unlinkat(volume.GetNodes().Get(parent).mDescriptor, name, 0); });
}

void RemoveFolder(SlowVolume& volume, fuse_req_t request, fuse_ino_t parent, const char* name) {
    volume.Perform(request, Operation::RemoveFolder,
                   [&] { return ::unlinkat(volume.GetNodes().Get(parent).mDescriptor, name, AT_REMOVEDIR); });
}

void Rename(SlowVolume& volume, fuse_req_t request, fuse_ino_t parent, const char* name, fuse_ino_t newParent,
            const char* newName, unsigned flags) {
    // Most network volumes know plain renames only.
    if (flags != 0 && !volume.GetOptions().mHasRenameFlags) {
        fuse_reply_err(request, EINVAL);
        return;
    }
    auto& nodes = volume.GetNodes();
    volume.Perform(request, Operation::Rename, [&] {
        return ::renameat2(nodes.Get(parent).mDescriptor, name, nodes.Get(newParent).mDescriptor, newName,
                           flags);
    });
}

void VolumeStatus(SlowVolume& volume, fuse_req_t request, fuse_ino_t number) {
    struct statvfs status;
    if (::fstatvfs(volume.GetNodes().Get(number == 0 ? FUSE_ROOT_ID : number).mDescriptor, &status) != 0) {
        return ReplyResult(request, -1);
    }
    fuse_reply_statfs(request, &status);
}

}  // namespace

std::optional<Operation> FindOperation(std::string_view name) {
    const auto found = std::find(kOperationNames.begin(), kOperationNames.end(), name);
    if (found == kOperationNames.end()) return {};
    return static_cast<Operation>(found - kOperationNames.begin());
}

SlowVolume::SlowVolume(const Options& options)
    : mOptions(options),
      mNodes(options.mSource),
      mIsArmed(options.mArmingName.empty()),
      mFaultCounts(options.mFaults.size()) {}

fuse_lowlevel_ops SlowVolume::MakeOperations() const {
    fuse_lowlevel_ops operations{};
    operations.init = Initialise;
    operations.lookup = Guarded<Operation::LookUp, LookUp>::Call;
    operations.forget = Forget;
    operations.forget_multi = ForgetMany;
    operations.getattr = Guarded<Operation::GetAttributes, GetAttributes>::Call;
    operations.setattr = Guarded<Operation::SetAttributes, SetAttributes>::Call;
    operations.opendir = Guarded<Operation::OpenFolder, OpenFolderOf>::Call;
    operations.readdir = Guarded<Operation::ReadFolder, ReadFolder>::Call;
    operations.releasedir = ReleaseFolder;
    // Without it the kernel takes folders for durable, and asks no more.
    if (std::ranges::find(mOptions.mFaults, Operation::SyncFolder, &Fault::mOperation) !=
        mOptions.mFaults.end())
        operations.fsyncdir = Guarded<Operation::SyncFolder, SyncFolder>::Call;
    operations.mkdir = Guarded<Operation::MakeFolder, MakeFolder>::Call;
    operations.link = Guarded<Operation::Link, Link>::Call;
    operations.symlink = Guarded<Operation::SymbolicLink, SymbolicLink>::Call;
    operations.readlink = Guarded<Operation::ReadLink, ReadLink>::Call;
    operations.unlink = Guarded<Operation::Unlink, Unlink>::Call;
    operations.rmdir = Guarded<Operation::RemoveFolder, RemoveFolder>::Call;
    operations.rename = Guarded<Operation::Rename, Rename>::Call;
    operations.statfs = Guarded<Operation::VolumeStatus, VolumeStatus>::Call;
    AddFileOperations(operations);
    return operations;
}

void SlowVolume::PrintStatistics(std::ostream& out) const {
    for (std::size_t i = 0; i < mCounts.size(); ++i) {
        if (mCounts[i] != 0) out << kOperationNames[i] << ' ' << mCounts[i] << '\n';
    }
    for (std::size_t i = 0; i < mOptions.mFaults.size(); ++i) out << "failures " << CountFailures(i) << '\n';
}

SlowVolume& SlowVolume::Begin(fuse_req_t request, Operation operation) {
    auto& volume = *static_cast<SlowVolume*>(fuse_req_userdata(request));
    ++volume.mCounts[static_cast<std::size_t>(operation)];
    std::this_thread::sleep_for(volume.mOptions.mDelay);
    return volume;
}

std::uint64_t SlowVolume::CountFailures(std::size_t fault) const {
    const std::uint64_t failures = mFaultCounts[fault] / mOptions.mFaults[fault].mEvery;
    return mOptions.mFaults[fault].mIsOnce ? std::min<std::uint64_t>(failures, 1) : failures;
}

bool SlowVolume::Fails(fuse_req_t request, Operation operation, bool isAfter) {
    for (std::size_t i = 0; i < mOptions.mFaults.size(); ++i) {
        const Fault& fault = mOptions.mFaults[i];
        if (!mIsArmed || fault.mOperation != operation || fault.mIsAfter != isAfter) continue;
        const std::uint64_t call = ++mFaultCounts[i];
        if (fault.mIsOnce ? call != fault.mEvery : call % fault.mEvery != 0) continue;
        fuse_reply_err(request, fault.mError);
        return true;
    }
    return false;
}

bool SlowVolume::FillEntry(Node& parent, const char* name, fuse_entry_param& entry) {
    entry = {};
    entry.ino = mNodes.LookUp(parent, name, entry.attr);
    entry.attr_timeout = entry.entry_timeout = mOptions.mCacheSeconds;
    return entry.ino != 0;
}

void SlowVolume::ReplyEntry(fuse_req_t request, Node& parent, const char* name) {
    fuse_entry_param entry;
    const bool isThere = FillEntry(parent, name, entry);
    // Number 0 says that there is no such item, for as long as the entry may be kept.
    if (isThere || (errno == ENOENT && mOptions.mKeepsAbsence)) {
        fuse_reply_entry(request, &entry);
    } else {
        fuse_reply_err(request, errno);
    }
}

void ReplyResult(fuse_req_t request, int result) {
    fuse_reply_err(request, result < 0 ? errno : 0);
}

}  // namespace slowvolume
