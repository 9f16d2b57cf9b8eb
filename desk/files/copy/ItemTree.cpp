#include "desk/files/copy/ItemTree.h"

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/core/work/WorkProgress.h"

namespace desk {

namespace {

/// Reads level by level, so that a volume that answers slowly is asked many questions at once.
class TreeReading {
public:
    TreeReading(TreeExtent extent, const WorkProgress& progress) : mExtent(extent), mProgress(progress) {}

    ItemTree Read(const std::string& root) {
        mTree.mRoot = root;
        std::vector<TreeItem> level(1);
        while (!level.empty()) {
            ReadStatus(level);
            const std::size_t firstFolder = mTree.mFolders.size();
            for (TreeItem& item : level) Sort(std::move(item));
            level = ListFolders(firstFolder);
        }
        return std::move(mTree);
    }

private:
    void ReadStatus(std::vector<TreeItem>& items) const {
        RunShared(items.size(), [&](std::size_t index) {
            const std::string path = mTree.PathOf(items[index]);
            mProgress.ThrowIfCancelled("read", path);
            items[index].mStatus = GetServices().mFileSystem->Status(path, false);
        });
    }

    void Sort(TreeItem&& item) {
        switch (item.mStatus.mKind) {
            case ItemKind::Folder:
                return mTree.mFolders.push_back(std::move(item));
            case ItemKind::File:
                mTree.mBytes += item.mStatus.mSize;
                return mTree.mFiles.push_back(std::move(item));
            case ItemKind::Link:
                return mTree.mLinks.push_back(std::move(item));
            default:
                return mTree.mOthers.push_back(std::move(item));
        }
    }

    /// What is in the folders from the one with this number on.
    std::vector<TreeItem> ListFolders(std::size_t first) const {
        std::vector<std::vector<FolderEntry>> entries(mTree.mFolders.size() - first);
        RunShared(entries.size(), [&](std::size_t index) {
            const std::string path = mTree.PathOf(mTree.mFolders[first + index]);
            mProgress.ThrowIfCancelled("read", path);
            entries[index] = GetServices().mFileSystem->ListFolder(path);
        });
        std::vector<TreeItem> items;
        for (std::size_t index = 0; index < entries.size(); ++index) {
            const std::string& folder = mTree.mFolders[first + index].mBelow;
            for (FolderEntry& entry : entries[index])
                if (IsWanted(entry.mName))
                    items.push_back(
                        {folder.empty() ? std::move(entry.mName) : JoinPath<std::string>(folder, entry.mName),
                         {}});
        }
        return items;
    }

    /// Folders that begin with a dot are content, though no view shows them.
    bool IsWanted(std::string_view name) const {
        return mExtent == TreeExtent::Everything || !IsHiddenName(name, ItemKind::File);
    }

    const TreeExtent mExtent;
    const WorkProgress& mProgress;
    ItemTree mTree;
};

}  // namespace

std::string ItemTree::PathOf(const TreeItem& item) const {
    return item.mBelow.empty() ? mRoot : JoinPath<std::string>(mRoot, item.mBelow);
}

ItemTree ReadItemTree(const std::string& root, TreeExtent extent, const WorkProgress& progress) {
    return TreeReading(extent, progress).Read(root);
}

}  // namespace desk
