#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <memory>

#include "desk/core/durable/FileDescriptor.h"
#include "desk/core/durable/PosixErrors.h"
#include "desk/files/disk/PosixFileSystem.h"
#include "desk/files/disk/PosixWriting.h"

namespace desk {

namespace {

/// How much is copied between two looks at whether to stop.
constexpr std::size_t kChunk = 4 * 1024 * 1024;
constexpr std::size_t kBuffer = 512 * 1024;
/// From this size on the system is told to begin writing at once, so that the flush at the end is short.
constexpr off_t kLargeFile = 1024 * 1024;

/// Copies content from one open file to another.
class ContentCopy {
public:
    ContentCopy(int from, int to, const struct stat& facts, const CopyStep& step)
        : mFrom(from), mTo(to), mFacts(facts), mStep(step) {}

    /// Returns 0 or an errno.
    int Run() {
        if (mFacts.st_size > 0 && ::ioctl(mTo, FICLONE, mFrom) == 0) {
            mCopied = mFacts.st_size;
            return Step(mFacts.st_size);
        }
        const bool hasHoles = mFacts.st_size > 0 && off_t{mFacts.st_blocks} * 512 < mFacts.st_size;
        if (const int error = hasHoles ? CopyBetweenHoles() : CopyRange(0, std::numeric_limits<off_t>::max()))
            return error;
        if (mCopied >= kLargeFile) ::sync_file_range(mTo, 0, 0, SYNC_FILE_RANGE_WRITE);
        return 0;
    }
    /// The size of the copy.
    off_t Copied() const { return mCopied; }

private:
    int Step(off_t bytes) const { return mStep(static_cast<std::uint64_t>(bytes)) ? 0 : ECANCELED; }

    int CopyBetweenHoles() {
        for (off_t at = 0; at < mFacts.st_size;) {
            const off_t data = ::lseek(mFrom, at, SEEK_DATA);
            if (data < 0 && errno != ENXIO) return CopyRange(at, std::numeric_limits<off_t>::max());
            const off_t begin = data < 0 ? mFacts.st_size : std::min(data, mFacts.st_size);
            if (const int error = Step(begin - at)) return error;
            const off_t hole = begin < mFacts.st_size ? ::lseek(mFrom, begin, SEEK_HOLE) : begin;
            if (const int error = CopyRange(begin, hole < 0 ? mFacts.st_size : hole)) return error;
            at = std::max(mCopied, begin);
            if (at < hole) break;  // it was cut meanwhile
        }
        if (::ftruncate(mTo, mFacts.st_size) != 0) return errno;
        mCopied = mFacts.st_size;
        return 0;
    }

    /// Until `end` or the end of the file.
    int CopyRange(off_t begin, off_t end) {
        for (off_t at = begin; at < end;) {
            const auto size = static_cast<std::size_t>(std::min<off_t>(end - at, kChunk));
            const ssize_t count = mDoesSystemCopy ? CopyBySystem(at, size) : CopyByHand(at, size);
            if (count < 0) return mError;
            if (count == 0) break;
            at += count;
            mCopied = at;
            if (const int error = Step(count)) return error;
        }
        return 0;
    }

    ssize_t CopyBySystem(off_t at, std::size_t size) {
        off_t from = at;
        off_t to = at;
        const ssize_t count =
            RetryInterrupted([&] { return ::copy_file_range(mFrom, &from, mTo, &to, size, 0); });
        if (count > 0) return count;
        // Also where it ends too early: some file systems tell no size, and some of them do not copy.
        if (count == 0 && at > 0 && at == mFacts.st_size) return 0;
        const bool isFault =
            count < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EIO || errno == EFBIG);
        if (isFault) return Fail(errno);
        mDoesSystemCopy = false;
        return CopyByHand(at, size);
    }

    ssize_t CopyByHand(off_t at, std::size_t size) {
        if (!mBuffer) mBuffer = std::make_unique_for_overwrite<char[]>(kBuffer);
        const ssize_t count =
            RetryInterrupted([&] { return ::pread(mFrom, mBuffer.get(), std::min(size, kBuffer), at); });
        if (count < 0) return Fail(errno);
        if (count == 0) return 0;
        if (::lseek(mTo, at, SEEK_SET) < 0) return Fail(errno);
        if (const int error = WriteAll(mTo, {mBuffer.get(), static_cast<std::size_t>(count)}))
            return Fail(error);
        return count;
    }

    ssize_t Fail(int error) {
        mError = error;
        return -1;
    }

    const int mFrom;
    const int mTo;
    const struct stat& mFacts;
    const CopyStep& mStep;
    off_t mCopied = 0;
    int mError = 0;
    bool mDoesSystemCopy = true;
    std::unique_ptr<char[]> mBuffer;
};

std::int64_t ToNanoseconds(const timespec& time) {
    return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

/// Copies content, permissions and times between open files, and checks. Returns 0 or an errno.
int CopyOpenFile(int from, FileDescriptor& to, const struct stat& facts, bool isFlushed, const CopyStep& step) {
    ContentCopy content(from, to.Get(), facts, step);
    if (const int error = content.Run()) return error;
    struct stat now;
    if (::fstat(from, &now) != 0) return errno;
    if (now.st_size != content.Copied() || ToNanoseconds(now.st_mtim) != ToNanoseconds(facts.st_mtim))
        return EBUSY;
    // Some volumes keep one mode for all, or times of their own.
    static_cast<void>(::fchmod(to.Get(), facts.st_mode & 0777));
    const timespec times[2] = {facts.st_atim, facts.st_mtim};
    static_cast<void>(::futimens(to.Get(), times));
    int error = isFlushed ? Flush(to.Get()) : 0;
    struct stat copy;
    if (error == 0 && ::fstat(to.Get(), &copy) != 0) error = errno;
    const int closeError = to.Close();
    if (error == 0) error = closeError;
    if (error == 0 && copy.st_size != now.st_size) error = EIO;
    return error;
}

}  // namespace

ItemStatus PosixFileSystem::CopyFile(const std::string& from, const std::string& to, bool isFlushed,
                                     const CopyStep& step) {
    const FileDescriptor source(RetryInterrupted(
        [&] { return ::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC); }));
    // ENXIO: a socket, or a device without its driver.
    if (!source.IsOpen()) ThrowFileException("copy", from, errno == ENXIO ? EINVAL : errno);
    struct stat facts;
    if (::fstat(source.Get(), &facts) != 0) ThrowFileException("copy", from, errno);
    if (!S_ISREG(facts.st_mode)) ThrowFileException("copy", from, EINVAL);
    FileDescriptor target(RetryInterrupted(
        [&] { return ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600); }));
    if (!target.IsOpen()) ThrowFileException("create copy", to, errno);
    if (const int error = CopyOpenFile(source.Get(), target, facts, isFlushed, step)) {
        target.Close();
        ::unlink(to.c_str());
        ThrowFileException("copy", from, error);
    }
    ItemStatus status;
    status.mKind = ItemKind::File;
    status.mSize = static_cast<std::uint64_t>(facts.st_size);
    status.mModified = ToNanoseconds(facts.st_mtim);
    return status;
}

void PosixFileSystem::CopyLink(const std::string& from, const std::string& to) {
    char text[PATH_MAX];
    const ssize_t size = ::readlink(from.c_str(), text, sizeof text);
    if (size < 0) ThrowFileException("copy link", from, errno);
    if (size == sizeof text) ThrowFileException("copy link", from, ENAMETOOLONG);
    struct stat facts;
    if (::lstat(from.c_str(), &facts) != 0) ThrowFileException("copy link", from, errno);
    if (::symlink(std::string(text, static_cast<std::size_t>(size)).c_str(), to.c_str()) != 0)
        ThrowFileException("copy link", to, errno);
    const timespec times[2] = {facts.st_atim, facts.st_mtim};
    static_cast<void>(::utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW));
}

void PosixFileSystem::CopyFolderAttributes(const std::string& from, const std::string& to) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    struct stat facts;
    if (::lstat(from.c_str(), &facts) != 0) ThrowFileException("read attributes of", from, errno);
    const FileDescriptor folder(::open(to.c_str(), kFlags));
    struct stat made;
    if (!folder.IsOpen() || ::fstat(folder.Get(), &made) != 0)
        ThrowFileException("set attributes of", to, errno);
    // The new parent decides on the group of what is made in it.
    static_cast<void>(::fchmod(folder.Get(), (facts.st_mode & 01777) | (made.st_mode & S_ISGID)));
    const timespec times[2] = {facts.st_atim, facts.st_mtim};
    static_cast<void>(::futimens(folder.Get(), times));
}

}  // namespace desk
