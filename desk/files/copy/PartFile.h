#pragma once

#include <string>

#include "desk/core/durable/VolumeMove.h"
#include "desk/files/copy/ItemTree.h"

namespace desk {

class WorkProgress;

/// A copy in the making: a file, link or folder under a hidden name beside its destination. What has not been
/// published when it is destroyed is removed. When it is not known whether it was published, a folder stays:
/// what is removed in it may be removed from what has its name by now. Where it stays under its hidden name,
/// the log says so, and a sweep of what processes have left removes it. For a worker.
class PartFile {
public:
    /// Makes nothing yet. Throws with EEXIST when something stands at `destination`: before anything is copied;
    /// what comes to stand there meanwhile is told by `Publish`.
    explicit PartFile(const std::string& destination);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    /// Copies all of `tree` but its pipes and devices, and makes it durable. The status of each file becomes
    /// what was copied of it. Adds to what `progress` has done.
    void Copy(ItemTree& tree, WorkProgress& progress);
    /// Gives it its name (`MoveOnVolume`): throws with EEXIST when that is taken.
    VolumeMove Publish();

private:
    enum class State { NotBegun, Begun, PublishedPerhaps, Published };

    void CopyAll(ItemTree& tree);
    void CopyFolders(const ItemTree& tree);
    void CopyFiles(ItemTree& tree, bool isFlushed);
    void CopyFile(const ItemTree& tree, TreeItem& file, bool isFlushed);
    void FinishFolders(const ItemTree& tree, bool isFlushed);
    bool ShouldFlushEach(const ItemTree& tree) const;
    std::string PathOf(const TreeItem& item) const;
    void Remove() noexcept;

    const std::string mDestination;
    const std::string mPath;
    State mState = State::NotBegun;
    bool mIsFolder = false;
    /// Its making was answered with an error and may have been done: that it is not there may be an old answer.
    bool mMayBeUnseen = false;
    WorkProgress* mProgress = nullptr;
};

}  // namespace desk
