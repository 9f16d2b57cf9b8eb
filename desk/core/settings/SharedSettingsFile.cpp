#include "host/core/SharedSettingsFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "desk/core/durable/CacheWaits.h"
#include "desk/core/durable/FileDescriptor.h"
#include "desk/core/durable/ReplaceFile.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/settings/JsonFile.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"

namespace host {
namespace {

constexpr std::chrono::milliseconds kBetweenTries(5);
constexpr char kLockSuffix[] = ".lock";

/// Takes the lock of an open file (flock(2)), which ends with the process at the latest. Returns 0 or an errno.
int LockWithin(int file, std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) return errno;
        if (std::chrono::steady_clock::now() >= deadline) return EWOULDBLOCK;
        std::this_thread::sleep_for(kBetweenTries);
    }
    return 0;
}

/// What does not pass by itself is not told anew with every save.
void TellOnce(const UTF16String& text) {
    static std::mutex sMutex;
    static std::set<UTF16String> sTold;
    const std::lock_guard lock(sMutex);
    if (sTold.insert(text).second) desk::TellUser(text);
}

}  // namespace

SharedSettingsFile::SharedSettingsFile(UTF16String path) : mPath(std::move(path)) {}

std::optional<std::string> SharedSettingsFile::Read() const {
    try {
        return desk::GetServices().mFileSystem->ReadSmallFile(UTF16to8(mPath), kLimit);
    } catch (const FileException& exception) {
        if (exception.SystemError() == ENOENT) return {};
        const std::string reason = desk::FindReasonAgainstUse(exception, kLimit);
        if (!reason.empty()) throw std::runtime_error(reason);
        TellOnce(desk::DescribeUnreadableSettings(UTF16to8(mPath), std::strerror(exception.SystemError())));
        throw;
    }
}

void SharedSettingsFile::Replace(const std::string& bytes) const {
    if (bytes.size() > kLimit) throw FileException("write", mPath, EFBIG);
    const desk::ScNoCacheWaits noWaits;
    desk::ReplaceFileOrThrow(*desk::GetServices().mFileSystem, UTF16to8(mPath), bytes);
}

bool SharedSettingsFile::SetAside(std::string_view reason) const {
    const desk::KeptAside kept = desk::KeepAside(UTF16to8(mPath), std::string(reason));
    desk::TellUser(kept.mNotice);
    return kept.mIsMoved;
}

/// The file that is locked stands beside the settings, which are another file after each change. It is empty,
/// and stays.
struct SharedSettingsFile::Lock::Impl {
    Impl(const std::string& path, std::chrono::milliseconds patience)
        : mFile(::open((path + kLockSuffix).c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600)),
          mError(mFile.IsOpen() ? LockWithin(mFile.Get(), patience) : errno) {}

    desk::FileDescriptor mFile;
    int mError;
};

SharedSettingsFile::Lock::Lock(const SharedSettingsFile& file, std::chrono::milliseconds patience)
    : mImpl(std::make_unique<Impl>(UTF16to8(file.mPath), patience)) {
    if (IsHeld()) return;
    // Who waits for another program saves with the next change; the rest stays as it is.
    if (mImpl->mError != EWOULDBLOCK)
        TellOnce(
            ZString("$$$/Desk/Settings/NotChanged=The settings in “@0” cannot be changed: @1. What you set is "
                    "not remembered.",
                    {file.mPath, UTF8to16(std::strerror(mImpl->mError))}));
    desk::Log(desk::LogLevel::Warning,
              "The settings in \"" + UTF16to8(file.mPath) + "\" are not changed: " +
                  (mImpl->mError == EWOULDBLOCK
                       ? "another program keeps them locked"
                       : "locking them failed: " + std::string(std::strerror(mImpl->mError))));
}

SharedSettingsFile::Lock::~Lock() = default;

bool SharedSettingsFile::Lock::IsHeld() const {
    return mImpl->mError == 0;
}

}  // namespace host
