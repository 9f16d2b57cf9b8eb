#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// A file of settings in the user's profile that several programs read and write, each its own part. Who
/// changes it reads it anew under a `Lock` and replaces it under the same one. The profile is on a disk of this
/// machine, or on the one that holds the user's home: all may wait for it. UI thread.
class ZUHOST_API SharedSettingsFile {
public:
    /// The largest file that is read and written, in bytes.
    static constexpr std::size_t kLimit = std::size_t{256} << 20;

    /// How long a lock is waited for.
    static constexpr std::chrono::milliseconds kPatience{2000};

    /// The disk is not touched.
    explicit SharedSettingsFile(UTF16String path);

    /// The whole content; absent when there is no such file. Throws `FileException` when the disk refuses,
    /// which the user is told once; `std::runtime_error` with the reason (English, a clause with "it") for what
    /// can never be read: more than `kLimit` bytes, no regular file, a symbolic link (`SetAside`).
    std::optional<std::string> Read() const;

    /// Replaces the file whole or not at all. Throws `FileException`, EFBIG for more than `kLimit` bytes: then
    /// the old file stands.
    void Replace(const std::string& bytes) const;

    /// Keeps what stands there, and cannot be used, under another name, "<name>.unreadable-<n>", and tells the
    /// user so; `reason` (English, a clause with "it") goes to the log. False when that failed, which the user
    /// is told as well: then the file must not be replaced.
    bool SetAside(std::string_view reason) const;

    /// Keeps the other programs from changing the file for as long as it lives. Reading needs none.
    class ZUHOST_API Lock {
    public:
        /// Waits for `patience` at most. What a program that was killed has left is no obstacle.
        explicit Lock(const SharedSettingsFile& file, std::chrono::milliseconds patience = kPatience);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

        /// False when another program has the file for longer, or the profile cannot be written or has no
        /// locks, which the user is told once; logged: then the file must not be changed.
        bool IsHeld() const;

    private:
        struct Impl;
        std::unique_ptr<Impl> mImpl;
    };

private:
    UTF16String mPath;
};

}  // namespace host
