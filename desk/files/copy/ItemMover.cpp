#include <cerrno>

#include "desk/core/durable/PosixErrors.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/files/copy/ItemTree.h"
#include "desk/files/copy/PartFile.h"
#include "desk/files/copy/SourceRemoval.h"

namespace desk {

namespace {

FileSystem& Disk() {
    return *GetServices().mFileSystem;
}

/// A move from one volume to another.
class MoveAcross {
public:
    MoveAcross(const std::string& source, const std::string& destination, WorkProgress& progress)
        : mSource(source), mDestination(destination), mProgress(progress), mPart(destination) {}

    /// Nothing of the source is touched before the copy is published, and the copy stays from then on.
    ItemMove Run() {
        Disk().TryToChangeFolder(FolderOf(mSource));
        mTree = ReadItemTree(mSource, TreeExtent::Everything, mProgress);
        ThrowIfNotMovable();
        mProgress.AddToTotal(mTree.mBytes);
        mPart.Copy(mTree, mProgress);
        ThrowIfChanged();
        const VolumeMove published = Publish();
        if (published.mFlushError != 0) return {mTree.IsFolder(), {mSource, false, published.mFlushError}};
        const LeftBehind left = SourceRemoval(mTree).Run();
        TryToFlushFolder(Disk(), FolderOf(mSource));
        return {mTree.IsFolder(), left};
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

    VolumeMove Publish() {
        try {
            return mPart.Publish();
        } catch (const MoveInDoubt& doubt) {
            throw MoveInDoubt(doubt, mSource, mDestination);
        }
    }

    const std::string& mSource;
    const std::string& mDestination;
    WorkProgress& mProgress;
    PartFile mPart;
    ItemTree mTree;
};

}  // namespace

ItemMove MoveItem(const std::string& source, const std::string& destination, WorkProgress& progress,
                  FolderFlush flush) {
    try {
        const VolumeMove move = MoveOnVolume(Disk(), source, destination, flush);
        if (move.mOldPlace == Presence::Gone) return {move.mIsFolder, {}};
        return {move.mIsFolder, {source, move.mOldPlace == Presence::NotTold, move.mOldPlaceError}};
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != EXDEV) throw;
    }
    return MoveAcross(source, destination, progress).Run();
}

}  // namespace desk
