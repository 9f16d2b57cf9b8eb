#pragma once

#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "desk/files/copy/ItemCopier.h"
#include "desk/files/copy/ItemTree.h"

namespace desk {

/// The last step of a move to another volume: removes the source item by item, as long as each is what was
/// copied. Files and links go first, then lock files, but for those of projects that stay, then folders. What
/// cannot go stays, and the rest goes on. For a worker.
class SourceRemoval {
public:
    /// `tree` is what was copied; it is not owned.
    explicit SourceRemoval(const ItemTree& tree) : mTree(tree) {}

    /// Waits for the volume.
    LeftBehind Run();

private:
    using Items = std::vector<const TreeItem*>;
    struct Failure {
        const TreeItem* mItem;
        int mSystemError;
    };

    /// Folders each after what is in it.
    void RemoveAll(Items items, bool areFolders);
    void Remove(const TreeItem& item, bool isFolder);
    bool IsAnyLeftBelow(const std::string& folder) const;
    void ForgetDoubtsBelow(const TreeItem& folder);
    /// Decides on the doubtful ones; those that are still there.
    std::vector<Failure> Judge();
    void LeaveBehind(const Failure& failure, bool isInDoubt);

    const ItemTree& mTree;
    std::mutex mMutex;
    /// Those whose removal may have been done or not.
    std::vector<Failure> mDoubtful;
    /// Those that stay, or may.
    std::set<std::string> mLeft;
    LeftBehind mFirst;
};

}  // namespace desk
