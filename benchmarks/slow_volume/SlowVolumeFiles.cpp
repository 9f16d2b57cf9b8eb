#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "benchmarks/slow_volume/SlowVolume.h"

namespace slowvolume {

namespace {

int DescriptorOf(const fuse_file_info& info) {
    return static_cast<int>(info.fh);
}

void Open(SlowVolume& volume, fuse_req_t request, fuse_ino_t number, fuse_file_info* info) {
    const std::string path = volume.GetNodes().Get(number).ProcPath();
    const int descriptor = ::open(path.c_str(), (info->flags & ~(O_NOFOLLOW | O_CREAT | O_EXCL)) | O_CLOEXEC);
    if (descriptor < 0) return ReplyResult(request, -1);
    info->fh = static_cast<std::uint64_t>(descriptor);
    fuse_reply_open(request, info);
}

void Create(SlowVolume& volume, fuse_req_t request, fuse_ino_t parent, const char* name, mode_t mode,
            fuse_file_info* info) {
    Node& folder = volume.GetNodes().Get(parent);
    const int descriptor =
        ::openat(folder.mDescriptor, name, (info->flags & ~O_NOFOLLOW) | O_CREAT | O_CLOEXEC, mode);
    if (descriptor < 0) return ReplyResult(request, -1);
    if (volume.Fails(request, Operation::Create, true)) {
        ::close(descriptor);
        return;
    }
    info->fh = static_cast<std::uint64_t>(descriptor);
    fuse_entry_param entry;
    if (volume.FillEntry(folder, name, entry)) {
        fuse_reply_create(request, &entry, info);
    } else {
        ReplyResult(request, -1);
        ::close(descriptor);
    }
}

void Read(SlowVolume&, fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset, fuse_file_info* info) {
    const auto buffer = std::make_unique<char[]>(size);
    const auto count = ::pread(DescriptorOf(*info), buffer.get(), size, offset);
    if (count < 0) return ReplyResult(request, -1);
    fuse_reply_buf(request, buffer.get(), static_cast<std::size_t>(count));
}

void Write(SlowVolume& volume, fuse_req_t request, fuse_ino_t, const char* bytes, std::size_t size,
           off_t offset, fuse_file_info* info) {
    const auto count = ::pwrite(DescriptorOf(*info), bytes, size, offset);
    if (count < 0) return ReplyResult(request, -1);
    if (volume.Fails(request, Operation::Write, true)) return;
    fuse_reply_write(request, static_cast<std::size_t>(count));
}

void Release(fuse_req_t request, fuse_ino_t, fuse_file_info* info) {
    SlowVolume::Begin(request, Operation::Release);
    ReplyResult(request, ::close(DescriptorOf(*info)));
}

void Sync(SlowVolume& volume, fuse_req_t request, fuse_ino_t, int dataOnly, fuse_file_info* info) {
    volume.Perform(request, Operation::Sync,
                   [&] { return dataOnly ? ::fdatasync(DescriptorOf(*info)) : ::fsync(DescriptorOf(*info)); });
}

}  // namespace

void AddFileOperations(fuse_lowlevel_ops& operations) {
    operations.open = Guarded<Operation::Open, Open>::Call;
    operations.create = Guarded<Operation::Create, Create>::Call;
    operations.read = Guarded<Operation::Read, Read>::Call;
    operations.write = Guarded<Operation::Write, Write>::Call;
    operations.release = Release;
    operations.fsync = Guarded<Operation::Sync, Sync>::Call;
}

}  // namespace slowvolume
