#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>

#include "desk/files/FileDescriptor.h"
#include "desk/files/PosixErrors.h"
#include "desk/files/PosixFileSystem.h"
#include "desk/files/PosixWriting.h"

namespace desk {

namespace {

bool IsNothingAt(const std::string& path) {
    struct stat facts;
    return ::lstat(path.c_str(), &facts) != 0 && errno == ENOENT;
}

/// The file at `path` is the one of which `facts` were read. Volumes that lie about inode numbers make it say
/// no.
bool IsSameFile(const std::string& path, const struct stat& facts) {
    struct stat found;
    return ::lstat(path.c_str(), &found) == 0 && found.st_dev == facts.st_dev && found.st_ino == facts.st_ino &&
           found.st_size == facts.st_size && found.st_mtim.tv_sec == facts.st_mtim.tv_sec &&
           found.st_mtim.tv_nsec == facts.st_mtim.tv_nsec;
}

/// The second half of a rename by link. A volume may fail a call that it has carried out: the new name goes
/// only where the old one is seen.
int RemoveOldName(const std::string& from, const std::string& to, const struct stat& facts) {
    int error = 0;
    for (int tries = 1; tries <= 2; ++tries) {
        if (::unlink(from.c_str()) == 0) return 0;
        error = errno;
        if (IsNothingAt(from)) return 0;
    }
    if (IsSameFile(from, facts)) ::unlink(to.c_str());
    return error;
}

/// For volumes without an atomic "rename without replacing". Returns 0 or an errno.
int RenameByLink(const std::string& from, const std::string& to) {
    struct stat facts;
    if (::lstat(from.c_str(), &facts) != 0) return errno;
    const bool wasFree = IsNothingAt(to);
    if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) == 0) return RemoveOldName(from, to, facts);
    const int error = errno;
    if (wasFree && IsSameFile(to, facts)) return RemoveOldName(from, to, facts);
    if (!HasNoLinks(error)) return error;
    if (!wasFree || !IsNothingAt(to)) return EEXIST;
    return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

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

void PosixFileSystem::RenameNew(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
    int error = errno;
    if (error == EINVAL || error == ENOSYS || error == EOPNOTSUPP) error = RenameByLink(from, to);
    if (error == EEXIST) ThrowFileException("rename (the new name exists)", to, error);
    if (error != 0) ThrowFileException("rename", from, error);
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
