#include "desk/project/production/CopyDirectoryTree.h"

#include <cerrno>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/durable/Presence.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/ItemCopier.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

FileSystem& Disk() {
    return *GetServices().mFileSystem;
}

void RemoveEmptyFolder(const std::string& path) {
    Disk().RemoveFromTree(path, {}, true);
}

/// Copies a folder to where an empty one stands. The copy is made under a hidden name beside it, and comes to
/// its place in one step when it is complete. Beside both lies a mark meanwhile, by which a sweep can tell the
/// empty folder of a process that was killed.
class TreeCopy {
public:
    TreeCopy(const std::string& from, const std::string& to)
        : mFrom(from),
          mTo(to),
          mMark(Beside(MakeFolderCopyName(NameOf(to)))),
          mCopy(Beside(MakeTemporaryName())) {}

    /// After a failure: it is not known whether the copy stands in its place.
    bool MayBeDone() const { return mMayBeInPlace; }

    void Run(WorkProgress& progress) {
        progress.SetItem(host::UTF8to16(NameOf(mFrom)));
        ThrowUnlessEmpty();
        try {
            Disk().CreateFolder(mMark, 0700);
            CopyItem(mFrom, mCopy, progress);
            PutInPlace();
        } catch (...) {
            Undo();
            throw;
        }
        const int flushError = TryToFlushFolder(Disk(), FolderOf(mTo));
        RemoveMark();
        mMayBeInPlace = true;
        if (flushError != 0) ThrowFileException("flush folder of", mTo, flushError);
    }

private:
    std::string Beside(const std::string& name) const { return JoinPath<std::string>(FolderOf(mTo), name); }
    bool IsEmpty() const { return Disk().ListFolder(mTo).empty(); }

    void ThrowUnlessEmpty() const {
        try {
            if (IsEmpty()) return;
        } catch (const host::FileException&) {
            TryTo([this] { RemoveEmptyFolder(mTo); });
            throw;
        }
        ThrowFileException("copy to", mTo, ENOTEMPTY);
    }

    void PutInPlace() {
        const bool isCopyEmpty = Disk().ListFolder(mCopy).empty();
        mMayBeInPlace = true;
        try {
            Disk().Rename(mCopy, mTo);
        } catch (const host::FileException& exception) {
            const bool isRefused = IsRefusal(exception.SystemError()) || exception.SystemError() == EEXIST;
            if (!isRefused && IsKnownToBeInPlace(isCopyEmpty)) return;
            mMayBeInPlace = !isRefused && !IsKnownToBeAside();
            // It is refused when somebody has put something there, or when the volume replaces no folders.
            if (!isRefused || !IsEmpty()) throw;
            PutInPlaceOfNothing(exception);
        }
    }

    void PutInPlaceOfNothing(const host::FileException& refusal) {
        TryTo([this] { RemoveEmptyFolder(mTo); });
        mMayBeInPlace = true;
        try {
            MoveOnVolume(mCopy, mTo);
        } catch (const host::FileException& exception) {
            mMayBeInPlace = !IsKnownToBeAside();
            if (exception.SystemError() == EEXIST) throw refusal;
            throw;
        }
    }

    /// That it has lost its hidden name is not enough: somebody else may have removed it.
    bool IsKnownToBeInPlace(bool isCopyEmpty) const {
        const auto found = FindPresence(Disk(), {mCopy, mTo});
        return found[0] == Presence::Gone && found[1] == Presence::There && IsEmpty() == isCopyEmpty;
    }

    /// That it stands under its hidden name is not enough: what the volume says after an error may be old.
    bool IsKnownToBeAside() const {
        const auto found = FindPresence(Disk(), {mCopy, mTo});
        return found[0] == Presence::There && (found[1] == Presence::Gone || IsEmpty());
    }

    /// What somebody else has put into the folder meanwhile stays, and the folder with it.
    void Undo() noexcept {
        if (mMayBeInPlace) {
            Log(LogLevel::Warning, "not known whether " + mCopy + " has become " + mTo + ": it stays as it is");
        } else {
            TryTo([this] { RemoveTree(mCopy); });
        }
        TryTo([this] { RemoveEmptyFolder(mTo); });
        if (!mMayBeInPlace) RemoveMark();
    }

    void RemoveMark() noexcept {
        if (TryTo([this] { RemoveEmptyFolder(mMark); })) return;
        // A volume that has just failed may fail again; and where its making was, it may not show yet.
        Disk().WaitForCaches(FolderOf(mMark));
        TryTo([this] { RemoveEmptyFolder(mMark); });
    }

    /// False when the volume does not do it.
    template <class Action>
    static bool TryTo(Action action) noexcept {
        try {
            action();
            return true;
        } catch (const host::FileException& exception) {
            const int error = exception.SystemError();
            if (error != ENOENT && error != ENOTEMPTY) Log(LogLevel::Warning, exception.what());
            return false;
        }
    }

    const std::string mFrom;
    const std::string mTo;
    const std::string mMark;
    const std::string mCopy;
    /// `mCopy` and `mTo` may be one folder.
    bool mMayBeInPlace = false;
};

}  // namespace

void CopyDirectoryTree(const std::string& from, const std::string& to, WorkProgress& progress) {
    TreeCopy copy(from, to);
    try {
        copy.Run(progress);
    } catch (const host::FileException& exception) {
        // A step that was in doubt is none of the caller's, once the whole is known to be undone.
        const host::FileException reason = exception;
        if (copy.MayBeDone()) throw MoveInDoubt(reason, from, to);
        throw reason;
    }
}

}  // namespace desk
