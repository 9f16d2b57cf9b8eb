#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// The facts of one file, as they stood when the object was built.
///
/// Where the file's folder has been listed and is watched or polled, the facts come from there and
/// the disk is not touched; a fact that the volume has not told yet is absent, is asked for in the
/// background, and the row that shows the file is delivered again when it has come. Elsewhere the
/// constructor asks the disk and may wait for the volume. UI thread.
class ZUHOST_API File {
public:
    explicit File(const UTF16String& path);

    /// True when the file was there, and when the disk refused to tell for another reason than its absence
    /// (asking for a fact then throws): a volume that does not answer has lost no file.
    bool Exists() const { return mExists; }

    /// Time of the last modification, in seconds since the epoch; absent while it is not known.
    /// Throws `FileException` when the disk refused to tell.
    std::optional<std::time_t> Modified() const;

    /// Time of birth, in seconds since the epoch; absent while it is not known and on volumes that do
    /// not record it. Throws `FileException` when the disk refused to tell.
    std::optional<std::time_t> Created() const;

    /// Size in bytes; absent while it is not known. Throws `FileException` when the disk refused to tell.
    std::optional<std::uint64_t> Size() const;

private:
    void ThrowIfRefused() const;

    UTF16String mPath;
    bool mExists = false;
    int mSystemError = 0;
    std::optional<std::time_t> mModified;
    std::optional<std::time_t> mCreated;
    std::optional<std::uint64_t> mSize;
};

/// A file size as people read it, in the user's locale ("212 KB", "4.18 MB"): three significant
/// digits, units of 1000 bytes. UI thread.
ZUHOST_API UTF16String GetDisplayStringOfFileSize(unsigned long long bytes);

}  // namespace host
