#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "desk/core/durable/FileDescriptor.h"
#include "desk/core/durable/PosixErrors.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/files/disk/PosixWriting.h"

namespace desk {

namespace {

int CheckSize(const std::string& path, std::size_t size) {
    struct stat facts;
    if (::lstat(path.c_str(), &facts) != 0) return errno;
    return static_cast<std::size_t>(facts.st_size) == size ? 0 : EIO;
}

/// Writes the whole of a new file and flushes it. Returns 0, or an errno; what was made is then gone, unless
/// the making itself was done and reported as failed.
int WriteNewFile(const std::string& path, const std::string& bytes, mode_t mode) {
    FileDescriptor file(RetryInterrupted(
        [&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600); }));
    if (!file.IsOpen()) return errno;
    if (mode != 0600) static_cast<void>(::fchmod(file.Get(), mode));  // some volumes keep one mode for all
    int error = WriteAll(file.Get(), bytes);
    if (error == 0) error = Flush(file.Get());
    int closeError = file.Close();
    if (error == 0) error = closeError;
    if (error == 0) error = CheckSize(path, bytes.size());
    if (error != 0) ::unlink(path.c_str());
    return error;
}

}  // namespace

int WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t count = RetryInterrupted([&] { return ::write(file, bytes.data(), bytes.size()); });
        if (count < 0) return errno;
        if (count == 0) return ENOSPC;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return 0;
}

int Flush(int file) {
    return RetryInterrupted([&] { return ::fsync(file); }) == 0 ? 0 : errno;
}

int FlushFolderAt(const std::string& folder) {
    FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.IsOpen()) return errno;
    int error = Flush(descriptor.Get());
    return error == EINVAL || error == ENOTSUP ? 0 : error;
}

void PosixFileSystem::AppendToFile(const std::string& path, const std::string& bytes) {
    FileDescriptor file(RetryInterrupted([&] {
        return ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600);
    }));
    int error = file.IsOpen() ? WriteAll(file.Get(), bytes) : errno;
    int closeError = file.Close();
    if (error == 0) error = closeError;
    if (error != 0) ThrowFileException("append to", path, error);
}

void PosixFileSystem::CreateNewFile(const std::string& path, const std::string& bytes, unsigned mode) {
    if (int error = WriteNewFile(path, bytes, mode)) ThrowFileException("create", path, error);
}

void PosixFileSystem::Link(const std::string& from, const std::string& to) {
    if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) != 0)
        ThrowFileException("make link", to, errno);
}

void PosixFileSystem::RemoveFile(const std::string& path) {
    if (::unlink(path.c_str()) != 0) ThrowFileException("remove", path, errno);
}

}  // namespace desk
