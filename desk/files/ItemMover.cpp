#include <atomic>
#include <cerrno>
#include <mutex>
#include <optional>
#include <ranges>

#include "desk/core/Log.h"
#include "desk/core/Services.h"
#include "desk/core/WorkProgress.h"
#include "desk/files/FolderPath.h"
#include "desk/files/ItemCopier.h"
#include "desk/files/ItemTree.h"
#include "desk/files/PartFile.h"
#include "desk/files/PosixErrors.h"
#include "desk/files/SharedWork.h"

namespace desk {

namespace {

FileSystem& Disk() {
    return *GetServices().mFileSystem;
}

/// What stands there; absent when nothing does, or when the volume does not tell (`isGone` says which).
std::optional<ItemStatus> Look(const std::string& path, bool& isGone) {
    isGone = false;
    try {
        return Disk().Status(path, false);
    } catch (const host::FileException& exception) {
        isGone = exception.SystemError() == ENOENT;
        return std::nullopt;
    }
}

/// A rename cannot be undone safely by now: that it may be lost with the power is told in the log.
void FlushAfterRename(const std::string& folder) {
    try {
        Disk().FlushFolder(folder);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Warning, exception.what());
    }
}

bool HasMoved(const std::string& from, const ItemStatus& before, const std::string& to) {
    bool isGone = false;
    if (Look(from, isGone) || !isGone) return false;
    const auto found = Look(to, isGone);
    return found && found->mKind == before.mKind &&
           (before.mKind == ItemKind::Folder || found->mSize == before.mSize);
}

/// A move from one volume to another.
class MoveAcross {
public:
    MoveAcross(const std::string& source, const std::string& destination, WorkProgress& progress)
        : mSource(source), mDestination(destination), mProgress(progress), mPart(destination) {}

    ItemMove Run() {
        Disk().TryToChangeFolder(FolderOf(mSource));
        mTree = ReadItemTree(mSource, TreeExtent::Everything, mProgress);
        ThrowIfNotMovable();
        mProgress.AddToTotal(mTree.mBytes);
        mPart.Copy(mTree, mProgress);
        ThrowIfChanged();
        mPart.Publish();
        try {
            Disk().FlushFolder(FolderOf(mDestination));
            RemoveSource();
        } catch (const host::FileException&) {
            mPart.TakeBack();
            throw;
        }
        FlushAfterRename(FolderOf(mSource));
        mMove.mIsFolder = mTree.IsFolder();
        return mMove;
    }

private:
    void ThrowIfNotMovable() const {
        if (mTree.IsFolder() && IsSameOrBelow(mDestination, mSource))
            ThrowFileException("move into itself", mSource, EINVAL);
        if (!mTree.mOthers.empty())
            ThrowFileException("move to another volume", mTree.PathOf(mTree.mOthers.front()), EINVAL);
        for (const TreeItem& folder : mTree.mFolders) Disk().TryToChangeFolder(mTree.PathOf(folder));
    }

    void ThrowIfChanged() const {
        for (const auto* items : {&mTree.mFolders, &mTree.mFiles, &mTree.mLinks})
            RunShared(items->size(), [&](std::size_t index) { ThrowIfChanged((*items)[index]); });
    }

    void ThrowIfChanged(const TreeItem& item) const {
        mProgress.ThrowIfCancelled("move", mSource);
        const std::string path = mTree.PathOf(item);
        if (!IsUnchanged(item.mStatus, Disk().Status(path, false)))
            ThrowFileException("move (it has changed meanwhile)", path, EBUSY);
    }

    /// As long as nothing is removed yet, a failure throws; from then on the copy is what there is, and what
    /// cannot be removed stays.
    void RemoveSource() {
        RemoveItems(mTree.mFiles);
        RemoveItems(mTree.mLinks);
        for (const TreeItem& folder : mTree.mFolders | std::views::reverse) RemoveIfUnchanged(folder, true);
    }

    void RemoveItems(const std::vector<TreeItem>& items) {
        std::size_t first = 0;
        while (first < items.size() && !mIsAnyRemoved) RemoveIfUnchanged(items[first++], false);
        RunShared(items.size() - first,
                  [&](std::size_t index) { RemoveIfUnchanged(items[first + index], false); });
    }

    void RemoveIfUnchanged(const TreeItem& item, bool isFolder) {
        const std::string path = mTree.PathOf(item);
        try {
            // The time of a folder has changed with what has been removed from it.
            if (!isFolder && !IsUnchanged(item.mStatus, Disk().Status(path, false)))
                ThrowFileException("remove (it has changed meanwhile)", path, EBUSY);
            Disk().RemoveFromTree(mSource, item.mBelow, isFolder);
        } catch (const host::FileException& exception) {
            bool isGone = false;
            Look(path, isGone);
            if (!isGone && !mIsAnyRemoved) throw;
            if (!isGone) LeaveBehind(path, exception);
        }
        mIsAnyRemoved = true;
    }

    void LeaveBehind(const std::string& path, const host::FileException& exception) {
        Log(LogLevel::Info, std::string("not removed after its move: ") + exception.what());
        const std::lock_guard lock(mMutex);
        if (!mMove.mLeftBehind.empty()) return;
        mMove.mLeftBehind = path;
        mMove.mSystemError = exception.SystemError();
    }

    const std::string& mSource;
    const std::string& mDestination;
    WorkProgress& mProgress;
    PartFile mPart;
    ItemTree mTree;
    std::mutex mMutex;
    ItemMove mMove;
    std::atomic<bool> mIsAnyRemoved = false;
};

}  // namespace

void MoveOnVolume(const std::string& from, const std::string& to) {
    const ItemStatus before = Disk().Status(from, false);
    try {
        Disk().RenameNew(from, to);
    } catch (const host::FileException&) {
        if (!HasMoved(from, before, to)) throw;
    }
    FlushAfterRename(FolderOf(to));
    if (FolderOf(from) != FolderOf(to)) FlushAfterRename(FolderOf(from));
}

ItemMove MoveItem(const std::string& source, const std::string& destination, WorkProgress& progress) {
    const ItemStatus before = Disk().Status(source, false);
    try {
        MoveOnVolume(source, destination);
        return {before.mKind == ItemKind::Folder, {}, 0};
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != EXDEV) throw;
    }
    return MoveAcross(source, destination, progress).Run();
}

}  // namespace desk
