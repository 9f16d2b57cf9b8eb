#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>

#include "desk/core/durable/FileDescriptor.h"
#include "desk/core/durable/PosixErrors.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/files/disk/PosixWriting.h"

namespace desk {

namespace {

/// Opens the folder in which `below` stands in the folder `root`, following no link on the way.
FileDescriptor OpenFolderOf(const std::string& root, const std::string& below) {
    FileDescriptor folder(
        RetryInterrupted([&] { return ::open(root.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
    const std::size_t slash = below.rfind('/');
    if (!folder.IsOpen() || slash == std::string::npos) return folder;
    open_how how{};
    how.flags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_BENEATH;
    const std::string way = below.substr(0, slash);
    return FileDescriptor(static_cast<int>(
        RetryInterrupted([&] { return ::syscall(SYS_openat2, folder.Get(), way.c_str(), &how, sizeof how); })));
}

}  // namespace

void PosixFileSystem::CreateFolder(const std::string& path, unsigned mode) {
    if (::mkdir(path.c_str(), mode) != 0) ThrowFileException("create folder", path, errno);
}

void PosixFileSystem::RenameNoReplace(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
    const int error = errno;
    ThrowFileException("rename", error == EEXIST ? to : from, error);
}

void PosixFileSystem::Rename(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) ThrowFileException("rename", from, errno);
}

void PosixFileSystem::RemoveFromTree(const std::string& root, const std::string& below, bool isFolder) {
    const int flags = isFolder ? AT_REMOVEDIR : 0;
    const std::string path = below.empty() ? root : root + '/' + below;
    if (below.empty()) {
        if (::unlinkat(AT_FDCWD, root.c_str(), flags) != 0) ThrowFileException("remove", path, errno);
        return;
    }
    const FileDescriptor folder = OpenFolderOf(root, below);
    if (!folder.IsOpen()) ThrowFileException("remove", path, errno);
    if (::unlinkat(folder.Get(), below.c_str() + below.rfind('/') + 1, flags) != 0)
        ThrowFileException("remove", path, errno);
}

void PosixFileSystem::TryToChangeFolder(const std::string& path) {
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) != 0)
        ThrowFileException("change folder", path, errno);
}

void PosixFileSystem::MakeFolderChangeable(const std::string& path) {
    // Not opened: it need not be readable. O_PATH does not follow, and the link of /proc leads to what it
    // found.
    FileDescriptor folder(::open(path.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat facts;
    if (!folder.IsOpen() || ::fstat(folder.Get(), &facts) != 0)
        ThrowFileException("change mode of", path, errno);
    const std::string same = "/proc/self/fd/" + std::to_string(folder.Get());
    if (::chmod(same.c_str(), (facts.st_mode & 07777) | S_IRWXU) != 0)
        ThrowFileException("change mode of", path, errno);
}

void PosixFileSystem::FlushFolder(const std::string& path) {
    if (int error = FlushFolderAt(path)) ThrowFileException("flush folder", path, error);
}

void PosixFileSystem::FlushVolume(const std::string& path) {
    FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
    if (!folder.IsOpen() || ::syncfs(folder.Get()) != 0) ThrowFileException("flush volume of", path, errno);
}

}  // namespace desk
