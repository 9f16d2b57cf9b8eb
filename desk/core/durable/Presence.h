#pragma once

#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "host/core/Export.h"

namespace desk {

class FileSystem;

/// What a look at a place has come to.
enum class Presence {
    There,
    Gone,
    /// The volume does not tell, or may have answered from what it knew some time ago.
    NotTold
};

/// Whether something stands at each of `paths` (bytes), which are of one volume, after a call there has failed.
/// Names are kept for seconds on network mounts: first waits until they are forgotten, then asks by name and by
/// listing the folder, and once more where the two disagree, when listings that agree decide. `NotTold` when
/// the folder cannot be listed (it may have been renamed: what stood in it stands elsewhere), and always where
/// names are kept for longer than anybody waits. Proves enough to say what has happened; it never proves that
/// the other one of two names may be removed. Waits for the volume: for a worker.
ZUHOST_API std::vector<Presence> FindPresence(FileSystem& fileSystem, const std::vector<std::string>& paths);
ZUHOST_API Presence FindPresence(FileSystem& fileSystem, const std::string& path);

/// Throws with EEXIST (`operation`, `path`) when a look finds something at `path`, and why it could not look:
/// before something is to be made there, which itself must not replace anything. Waits for the volume: for a
/// worker.
ZUHOST_API void ThrowIfTaken(FileSystem& fileSystem, std::string_view operation, const std::string& path);
/// True when its folder, listed afresh, has an entry of the name of `path`. Throws when it cannot be listed.
/// Waits for the volume: for a worker.
ZUHOST_API bool IsListed(FileSystem& fileSystem, const std::string& path);

/// True when the file at `path` is told to hold just `bytes`; false also when it cannot be read. Waits for the
/// volume: for a worker.
ZUHOST_API bool DoesHold(FileSystem& fileSystem, const std::string& path, const std::string& bytes);

/// True for the errors that say that nothing stands there, which the volume may say of old. Any thread.
inline bool IsAbsence(int systemError) {
    return systemError == ENOENT || systemError == ENOTDIR;
}
/// True for the errors with which a volume refuses a call and does nothing (no permission, read-only, full, a
/// name that is too long, …). After any other, a lost reply among them, the call may have been carried out. Any
/// thread.
ZUHOST_API bool IsRefusal(int systemError);

}  // namespace desk
