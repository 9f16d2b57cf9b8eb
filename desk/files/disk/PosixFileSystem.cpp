#include "desk/files/disk/PosixFileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <thread>

#include "desk/core/durable/CacheWaits.h"
#include "desk/core/durable/FileDescriptor.h"
#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/VolumeProperties.h"

namespace desk {

namespace {

constexpr std::size_t kListingBuffer = 256 * 1024;
constexpr std::chrono::seconds kLongestWait(5);

ItemKind KindOfEntry(unsigned char type) {
    switch (type) {
        case DT_UNKNOWN:
            return ItemKind::Unknown;
        case DT_REG:
            return ItemKind::File;
        case DT_DIR:
            return ItemKind::Folder;
        case DT_LNK:
            return ItemKind::Link;
        default:
            return ItemKind::Other;
    }
}

ItemKind KindOfMode(unsigned mode) {
    if (S_ISREG(mode)) return ItemKind::File;
    if (S_ISDIR(mode)) return ItemKind::Folder;
    if (S_ISLNK(mode)) return ItemKind::Link;
    return ItemKind::Other;
}

bool IsSelfOrParent(std::string_view name) {
    return name == "." || name == "..";
}

/// Adds the records of one getdents64(2) reply.
void AddEntries(const char* records, long size, std::vector<FolderEntry>& entries) {
    constexpr std::size_t kLengthAt = offsetof(dirent64, d_reclen);
    for (long at = 0; at < size;) {
        unsigned short length;
        std::memcpy(&length, records + at + kLengthAt, sizeof length);
        const char* name = records + at + offsetof(dirent64, d_name);
        auto type = static_cast<unsigned char>(records[at + static_cast<long>(offsetof(dirent64, d_type))]);
        if (!IsSelfOrParent(name)) entries.push_back({name, KindOfEntry(type)});
        at += length;
    }
}

std::int64_t ToNanoseconds(const struct statx_timestamp& time) {
    constexpr std::int64_t kSecond = 1'000'000'000;
    constexpr std::int64_t kLimit = std::numeric_limits<std::int64_t>::max() / kSecond - 1;
    return std::clamp<std::int64_t>(time.tv_sec, -kLimit, kLimit) * kSecond + time.tv_nsec;
}

FileDescriptor OpenFolder(const std::string& path) {
    FileDescriptor folder(RetryInterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC); }));
    if (!folder.IsOpen()) ThrowFileException("list folder", path, errno);
    return folder;
}

}  // namespace

std::vector<FolderEntry> PosixFileSystem::ListFolder(const std::string& path) {
    const FileDescriptor folder = OpenFolder(path);
    std::vector<FolderEntry> entries;
    const auto records = std::make_unique_for_overwrite<char[]>(kListingBuffer);
    for (;;) {
        long size = RetryInterrupted(
            [&] { return ::syscall(SYS_getdents64, folder.Get(), records.get(), kListingBuffer); });
        if (size < 0) ThrowFileException("list folder", path, errno);
        if (size == 0) return entries;
        AddEntries(records.get(), size, entries);
    }
}

void PosixFileSystem::TryFolder(const std::string& path) {
    OpenFolder(path);
}

ItemStatus PosixFileSystem::Status(const std::string& path, bool followLink) {
    struct statx facts;
    int flags = AT_STATX_SYNC_AS_STAT | (followLink ? 0 : AT_SYMLINK_NOFOLLOW);
    unsigned wanted = STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_MTIME | STATX_BTIME | STATX_INO;
    if (RetryInterrupted([&] { return ::statx(AT_FDCWD, path.c_str(), flags, wanted, &facts); }) != 0)
        ThrowFileException("read status of", path, errno);
    ItemStatus status;
    status.mKind = KindOfMode(facts.stx_mode);
    status.mSize = facts.stx_size;
    status.mModified = ToNanoseconds(facts.stx_mtime);
    status.mMode = facts.stx_mode & 07777u;
    status.mInode = facts.stx_ino;
    if (facts.stx_mask & STATX_BTIME) status.mCreated = ToNanoseconds(facts.stx_btime);
    return status;
}

std::string PosixFileSystem::ReadSmallFile(const std::string& path, std::size_t limit) {
    constexpr std::string_view kOperation = "read";
    FileDescriptor file(RetryInterrupted(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC); }));
    // ENXIO: a socket, or a device without its driver.
    if (!file.IsOpen()) ThrowFileException(kOperation, path, errno == ENXIO ? EINVAL : errno);
    struct stat facts;
    if (::fstat(file.Get(), &facts) != 0) ThrowFileException(kOperation, path, errno);
    if (!S_ISREG(facts.st_mode)) ThrowFileException(kOperation, path, EINVAL);
    if (static_cast<std::uint64_t>(facts.st_size) > limit) ThrowFileException(kOperation, path, EFBIG);

    // One byte more than told: the end of the file must be seen, and the file may grow meanwhile.
    std::string bytes(std::min<std::size_t>(static_cast<std::size_t>(facts.st_size), limit) + 1, '\0');
    std::size_t size = 0;
    for (;;) {
        ssize_t count =
            RetryInterrupted([&] { return ::read(file.Get(), bytes.data() + size, bytes.size() - size); });
        if (count < 0) ThrowFileException(kOperation, path, errno);
        size += static_cast<std::size_t>(count);
        if (size > limit) ThrowFileException(kOperation, path, EFBIG);
        if (count == 0) break;
        if (size == bytes.size()) bytes.resize(std::min(size * 2, limit + 1));
    }
    bytes.resize(size);
    return bytes;
}

std::string PosixFileSystem::ResolveLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    if (!resolved) ThrowFileException("follow links of", path, errno);
    return resolved.get();
}

long PosixFileSystem::VolumeType(const std::string& path) {
    struct statfs facts;
    if (RetryInterrupted([&] { return ::statfs(path.c_str(), &facts); }) != 0)
        ThrowFileException("read volume type of", path, errno);
    return static_cast<long>(facts.f_type);
}

bool PosixFileSystem::WaitForCaches(const std::string& path) noexcept {
    struct statfs facts;
    if (::statfs(path.c_str(), &facts) == 0 && DoesVolumeReportChanges(static_cast<long>(facts.f_type)))
        return true;
    const auto told = FindCacheTime(path);
    if (!told) return false;
    const std::chrono::seconds time = *told;
    if (ScNoCacheWaits::AreOff()) return time.count() == 0;
    // A tenth of a second more: the clocks of the caches are coarse.
    if (time.count() > 0)
        std::this_thread::sleep_for(std::min(time, kLongestWait) + std::chrono::milliseconds(100));
    return time <= kLongestWait;
}

}  // namespace desk
