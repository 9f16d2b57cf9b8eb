#include "desk/core/durable/VolumeMove.h"

#include <cerrno>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"

namespace desk {

namespace {

using host::FileException;

bool HasNoRenameFlags(int systemError) {
    return systemError == EINVAL || systemError == ENOSYS || systemError == EOPNOTSUPP;
}

/// One call of `MoveOnVolume`.
class Move {
public:
    Move(FileSystem& disk, const std::string& from, const std::string& to)
        : mDisk(disk), mFrom(from), mTo(to), mBefore(disk.Status(from, false)) {}

    VolumeMove Run(FolderFlush flush) {
        mMove.mIsFolder = mBefore.mKind == ItemKind::Folder;
        if (!RenameNoReplace()) MoveWithoutFlags();
        if (flush == FolderFlush::ByCaller) return mMove;
        mMove.mFlushError = TryToFlushFolder(mDisk, FolderOf(mTo));
        if (FolderOf(mFrom) != FolderOf(mTo)) TryToFlushFolder(mDisk, FolderOf(mFrom));
        return mMove;
    }

private:
    /// False when the volume has no such rename.
    bool RenameNoReplace() {
        try {
            mDisk.RenameNoReplace(mFrom, mTo);
        } catch (const FileException& exception) {
            if (HasNoRenameFlags(exception.SystemError())) return false;
            ThrowUnlessRenamed(exception);
        }
        return true;
    }

    void MoveWithoutFlags() {
        ThrowIfTaken(mDisk, "rename", mTo);
        if (!mMove.mIsFolder) {
            // What could not be removed here gets no second name there.
            mDisk.TryToChangeFolder(FolderOf(mFrom));
            if (Link()) return RemoveOldName();
        }
        Rename();
    }

    /// False when the volume has no links.
    bool Link() {
        try {
            mDisk.Link(mFrom, mTo);
        } catch (const FileException& exception) {
            if (HasNoLinks(exception.SystemError())) return false;
            ThrowUnlessLinked(exception);
        }
        return true;
    }

    void ThrowUnlessLinked(const FileException& failure) {
        if (IsRefusal(failure.SystemError())) throw failure;
        const Presence presence = FindPresence(mDisk, mTo);
        const Likeness likeness = presence == Presence::Gone ? Likeness::Other : Compare(mTo);
        if (likeness == Likeness::Other) throw failure;
        if (presence == Presence::NotTold || likeness == Likeness::Unclear) ThrowInDoubt(failure);
    }

    void RemoveOldName() {
        const int error = TryToRemoveOldName();
        if (error == 0 || (IsStillOurs() && TryToRemoveOldName() == 0)) return;
        mMove.mOldPlace = FindPresence(mDisk, mFrom);
        if (mMove.mOldPlace != Presence::Gone) mMove.mOldPlaceError = error;
    }

    /// Somebody may have taken the old name since it was removed.
    bool IsStillOurs() const {
        return mDisk.WaitForCaches(FolderOf(mFrom)) && Compare(mFrom) == Likeness::Same;
    }

    /// Returns 0 or an errno.
    int TryToRemoveOldName() {
        try {
            mDisk.RemoveFile(mFrom);
            return 0;
        } catch (const FileException& exception) {
            Log(LogLevel::Info, exception.what());
            return exception.SystemError();
        }
    }

    /// Would replace what is at the new name.
    void Rename() {
        if (IsListed(mDisk, mTo)) ThrowFileException("rename", mTo, EEXIST);
        try {
            mDisk.Rename(mFrom, mTo);
        } catch (const FileException& exception) {
            ThrowUnlessRenamed(exception);
        }
    }

    void ThrowUnlessRenamed(const FileException& failure) {
        if (IsRefusal(failure.SystemError())) throw failure;
        const std::vector<Presence> presence = FindPresence(mDisk, {mFrom, mTo});
        const Presence from = presence.front(), to = presence.back();
        const auto hasStayed = [&] {
            return to != Presence::There || Compare(mFrom) == Likeness::Same || Compare(mTo) == Likeness::Other;
        };
        if (from == Presence::There && hasStayed()) throw failure;
        const bool isMoved = from == Presence::Gone && to == Presence::There && IsOfKindAndSize(mTo);
        if (!isMoved) ThrowInDoubt(failure);
        Log(LogLevel::Info, std::string("done nevertheless: ") + failure.what());
    }

    [[noreturn]] void ThrowInDoubt(const FileException& failure) const {
        Log(LogLevel::Info, failure.what());
        throw MoveInDoubt(failure, mFrom, mTo);
    }

    /// Whether the item at `path` is ours. Of a volume that lies about inode numbers that is never clear.
    enum class Likeness { Same, Other, Unclear };
    Likeness Compare(const std::string& path) const {
        try {
            const ItemStatus found = mDisk.Status(path, false);
            const bool isSameItem = found.mInode == mBefore.mInode;
            if (isSameItem != IsUnchanged(mBefore, found)) return Likeness::Unclear;
            return isSameItem ? Likeness::Same : Likeness::Other;
        } catch (const FileException&) {
            return Likeness::Unclear;
        }
    }
    bool IsOfKindAndSize(const std::string& path) const {
        try {
            const ItemStatus found = mDisk.Status(path, false);
            return found.mKind == mBefore.mKind && (mMove.mIsFolder || found.mSize == mBefore.mSize);
        } catch (const FileException&) {
            return false;
        }
    }

    FileSystem& mDisk;
    const std::string& mFrom;
    const std::string& mTo;
    const ItemStatus mBefore;
    VolumeMove mMove;
};

}  // namespace

int TryToFlushFolder(FileSystem& fileSystem, const std::string& folder) noexcept {
    try {
        fileSystem.FlushFolder(folder);
        return 0;
    } catch (const FileException& exception) {
        Log(LogLevel::Warning, exception.what());
        return exception.SystemError();
    }
}

MoveInDoubt::MoveInDoubt(const FileException& reason, const std::string& from, const std::string& to)
    : FileException("move to " + to + ", perhaps done, from", host::UTF8to16(from),
                    reason.SystemError() == EEXIST ? EIO : reason.SystemError()),
      mTo(host::UTF8to16(to)) {}

MoveInDoubt::~MoveInDoubt() = default;

void ThrowUnlessDurable(const VolumeMove& move, const std::string& from, const std::string& to) {
    if (move.mFlushError == 0) return;
    throw MoveInDoubt(FileException("flush folder of", host::UTF8to16(to), move.mFlushError), from, to);
}

VolumeMove MoveOnVolume(FileSystem& fileSystem, const std::string& from, const std::string& to,
                        FolderFlush flush) {
    return Move(fileSystem, from, to).Run(flush);
}

VolumeMove MoveOnVolume(const std::string& from, const std::string& to) {
    return MoveOnVolume(*GetServices().mFileSystem, from, to);
}

}  // namespace desk
