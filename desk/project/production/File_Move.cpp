#include <cerrno>
#include <optional>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/FileMoves.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/files/live/LookAgain.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/project/lock/LockProtocol.h"
#include "desk/project/production/TrashRecords.h"
#include "host/core/Localizer.h"
#include "host/files/File.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"

namespace host {

namespace {

constexpr int kNotMoved = -1;

/// One call of `File::Move`.
class FileMove {
public:
    FileMove(const UTF16String& source, const UTF16String& destination)
        : mSource(PathUtils::ToNormalizedPath(source)), mDestination(PathUtils::ToNormalizedPath(destination)) {
        if (IsInZuProductionTrash(mDestination, false))
            mTrashFolder = UTF16to8(GetZuProductionTrashDirectoryPath());
        if (!IsVantorProjectFile(mSource)) return;
        mLockPath = desk::GetLockPath(mSource);
        if (const desk::HeldLockPtr lock = desk::LockKeeper::Instance().Find(mLockPath))
            mHeldNonce = lock->GetRecord().mNonce;
    }

    int Run() {
        try {
            desk::RunLongWork(
                ZString("$$$/Vantor/Desk/Files/Moving=Moving “@0”", {PathUtils::GetFullFilePart(mSource)}),
                [this](desk::WorkProgress& progress) { Work(progress); });
        } catch (const FileException& exception) {
            desk::TellNotMoved(mSource, exception);
            LookAgain();
            throw;
        }
        return mMove ? Finish() : Refuse();
    }

private:
    // On a worker.
    void Work(desk::WorkProgress& progress) {
        if (!mTrashFolder.empty()) desk::IsTrashFolderThere(*desk::GetServices().mFileSystem, mTrashFolder);
        mIsThere = IsThere();
        if (!mIsThere || (!mLockPath.empty() && !mIsFolder && IsHeldByAnother())) return;
        mMove = desk::MoveItem(UTF16to8(mSource), UTF16to8(mDestination), progress);
    }

    bool IsThere() {
        try {
            const desk::ItemStatus status = desk::GetServices().mFileSystem->Status(UTF16to8(mSource), false);
            mIsFolder = status.mKind == desk::ItemKind::Folder;
            return true;
        } catch (const FileException& exception) {
            if (exception.SystemError() == ENOENT || exception.SystemError() == ENOTDIR) return false;
            throw;
        }
    }

    bool IsHeldByAnother() {
        const desk::Desktop& desktop = *desk::GetServices().mDesktop;
        mHolder = desk::ReadLockRecord(*desk::GetServices().mFileSystem, mLockPath);
        if (!mHolder) return false;
        if (!mHolder->mIsReadable) return true;
        // A lock that was lost is not held any more, whatever its nonce.
        const bool isOurs = mHolder->mNonce == mHeldNonce ||
                            desk::AreOfOneProcess(*mHolder, desk::MakeLockRecord(desktop, {}, {}));
        return !isOurs && !desk::IsLockStale(*mHolder, desktop);
    }

    // On the UI thread.
    int Refuse() const {
        const UTF16String name = PathUtils::GetFullFilePart(mSource);
        if (!mIsThere)
            desk::TellUser(
                ZString("$$$/Vantor/Desk/Files/Gone=“@0” was not moved. It is not there any more.", {name}));
        else if (mHolder && mHolder->mIsReadable)
            desk::TellUser(ZString("$$$/Vantor/Desk/Files/Locked=“@0” was not moved. @1 has it open on @2.",
                                   {name, mHolder->mUser, mHolder->mMachine}));
        else
            desk::TellUser(ZString(
                "$$$/Vantor/Desk/Files/LockedUnknown=“@0” was not moved. Somebody has it open.", {name}));
        return kNotMoved;
    }

    int Finish() const {
        const desk::MovedItem item{UTF16to8(mSource), UTF16to8(mDestination), mMove->mIsFolder};
        std::vector<desk::LockRemains> locks;
        if (item.mIsFolder) locks = desk::LockKeeper::Instance().FollowMove(item.mFrom, item.mTo);
        desk::NoteMove(item);
        if (!mMove->mLeftBehind.mPath.empty()) {
            GiveUpThere(locks);
            TellLeftBehind(mMove->mLeftBehind);
        }
        LookAgain();
        return 0;
    }

    /// This process goes on with its locks at the new place: what is left at the old one is anybody's.
    static void GiveUpThere(const std::vector<desk::LockRemains>& locks) {
        if (locks.empty()) return;
        desk::RunLongWork(ZString("$$$/Desk/Project/Locking=Locking Project"), [&](desk::WorkProgress&) {
            desk::LockProtocol protocol(*desk::GetServices().mFileSystem, *desk::GetServices().mDesktop);
            for (const desk::LockRemains& lock : locks) protocol.RemoveLeftBehind(lock.mPath, lock.mNonce);
        });
    }

    void LookAgain() const {
        desk::LookAgainAround(mSource);
        desk::LookAgainAround(mDestination);
    }

    void TellLeftBehind(const desk::LeftBehind& left) const {
        const UTF16String path = UTF8to16(left.mPath);
        const char* const text =
            left.mIsInDoubt
                ? "$$$/Vantor/Desk/Files/LeftBehindPerhaps=“@0” was moved to “@1”, but “@2” may also still be there. @3"
                : "$$$/Vantor/Desk/Files/LeftBehind=“@0” was moved to “@1”, but “@2” is also still there. @3";
        desk::TellUser(ZString(text, {PathUtils::GetFullFilePart(mSource), mDestination, path,
                                      desk::DescribeReason({"remove", path, left.mSystemError})}));
    }

    const UTF16String mSource;
    const UTF16String mDestination;
    /// Empty for what does not move to the trash.
    std::string mTrashFolder;
    /// Empty for what is no project.
    std::string mLockPath;
    /// Empty when this process does not hold the lock.
    std::string mHeldNonce;
    bool mIsThere = false;
    /// A folder can be called like a project.
    bool mIsFolder = false;
    std::optional<desk::LockRecord> mHolder;
    /// Absent when it was refused.
    std::optional<desk::ItemMove> mMove;
};

}  // namespace

int File::Move(const UTF16String& source, const UTF16String& destination) {
    return FileMove(source, destination).Run();
}

}  // namespace host
