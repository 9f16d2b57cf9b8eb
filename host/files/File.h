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
/// background, and the row that shows the file is delivered again when it has come. The same holds while a
/// monitored folder's first listing is awaited. Elsewhere the constructor asks the disk and may wait for the
/// volume. UI thread.
class ZUHOST_API File {
public:
    explicit File(const UTF16String& path);

    /// True when the file was there, while that is awaited, and when the disk refused to tell for another
    /// reason than its absence (asking for a fact then throws): a volume that does not answer has lost no file.
    bool Exists() const { return mExists; }

    /// Time of the last modification, in seconds since the epoch; absent while it is not known.
    /// Throws `FileException` when the disk refused to tell.
    std::optional<std::time_t> Modified() const;

    /// Time of birth, in seconds since the epoch; absent while it is not known and on volumes that do
    /// not record it. Throws `FileException` when the disk refused to tell.
    std::optional<std::time_t> Created() const;

    /// Size in bytes; absent while it is not known. Throws `FileException` when the disk refused to tell.
    std::optional<std::uint64_t> Size() const;

    /// Moves a file or folder to `destination`, which must not exist: nothing is ever replaced, on any volume.
    /// On another volume it is copied, compared and only then removed at `source`. A symbolic link is moved as
    /// a link. The host takes note of the move: locks of this process that stood in a moved folder are from
    /// then on its locks at the new place, and what moves to the production's trash is recorded there.
    ///
    /// Returns 0 when all of it stands at `destination`. What could not be removed at `source`, or may still
    /// stand there, is no failure, but told with both places. Returns a negative number when nothing was done:
    /// nothing stands at `source`, or it is a project that somebody else has locked; the reason is told to the
    /// user and logged. Throws `FileException` with operation, path and reason when the disk refuses (EEXIST
    /// when something stands at `destination`, ECANCELED when the user cancelled, EBUSY when the source changed
    /// while it was copied); then the source stands as it was, and the user has been told why, unless they
    /// cancelled. Throws it too when the volume does not tell whether the move was done: then it stands at
    /// `source`, at `destination` or at both, which the user has been told. In no case does it stand nowhere.
    /// May wait for the volume, after an error until names that are kept are forgotten; events go on being
    /// handled when it takes long, but no command is let in. UI thread.
    static int Move(const UTF16String& source, const UTF16String& destination);

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
