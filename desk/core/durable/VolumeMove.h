#pragma once

#include <string>

#include "desk/core/durable/Presence.h"
#include "host/core/Export.h"
#include "host/files/FileException.h"

/// Moves within one volume.
namespace desk {

class FileSystem;

/// What became of a move that did not throw: the item stands at its new place.
struct VolumeMove {
    bool mIsFolder = false;
    /// `There` when the item also still stands at its old place, `NotTold` when the volume does not tell
    /// whether it does; and why it was not removed there (an errno value).
    Presence mOldPlace = Presence::Gone;
    int mOldPlaceError = 0;
    /// Not 0 when the folder of the new place could not be flushed: the move may be lost with the power.
    int mFlushError = 0;
};

/// The volume does not tell whether an item was moved: it stands at its old place, at the new one, or at both.
/// Nothing was removed. Never bears EEXIST: that is taken for the proof that nothing was done.
class ZUHOST_API MoveInDoubt : public host::FileException {
public:
    /// `reason` is the failure that left it open. Both paths in the bytes of the disk.
    MoveInDoubt(const host::FileException& reason, const std::string& from, const std::string& to);
    ~MoveInDoubt() override;

    const host::UTF16String& From() const { return Path(); }
    const host::UTF16String& To() const { return mTo; }

private:
    host::UTF16String mTo;
};

/// Whether a move flushes the folders of both places, or leaves that to its caller, who moves several items
/// from and to the same folders (`TryToFlushFolder`): before anybody is told that they have moved.
enum class FolderFlush { AtOnce, ByCaller };

/// Moves the file, link or folder `from` to `to` on its volume, and flushes both folders. Nothing is replaced:
/// by a rename that does not (`FileSystem::RenameNoReplace`); where the volume has none, by a second name
/// (`Link`) and the removal of the old one; where there are no links (folders never have any) by a plain
/// rename, once a look and a listing have found the new name free.
///
/// After a failure that is no refusal it finds out what has happened (`FindPresence`), since its reply may have
/// been lost. Once the removal of the old name has been tried, the new one stays, whatever that came to. Throws
/// `host::FileException` when the item was not moved and stands as it was (EEXIST when something else stands at
/// `to`, EXDEV when the two are on two volumes), and `MoveInDoubt` when that is not known. Paths in bytes,
/// normalised. Waits for the volume: for a worker. The second uses `GetServices()`.
ZUHOST_API VolumeMove MoveOnVolume(FileSystem& fileSystem, const std::string& from, const std::string& to,
                                   FolderFlush flush = FolderFlush::AtOnce);
ZUHOST_API VolumeMove MoveOnVolume(const std::string& from, const std::string& to);

/// For callers to whom a move is done only when it survives a loss of power: throws `MoveInDoubt` when the
/// flush after `move` has failed.
void ThrowUnlessDurable(const VolumeMove& move, const std::string& from, const std::string& to);

/// Makes durable what was moved or removed in `folder`: returns 0, or an errno value when it may be lost with
/// the power, which the log says too. Waits for the volume: for a worker.
int TryToFlushFolder(FileSystem& fileSystem, const std::string& folder) noexcept;

}  // namespace desk
