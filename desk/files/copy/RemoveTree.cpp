#include <cerrno>

#include "desk/core/durable/Presence.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/files/copy/ItemCopier.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

class TreeRemoval {
public:
    TreeRemoval(FileSystem& disk, const std::string& root) : mDisk(disk), mRoot(root) {}

    void Remove(const std::string& below, ItemKind kind) {
        if (kind == ItemKind::Unknown) kind = mDisk.Status(PathOf(below), false).mKind;
        if (kind == ItemKind::Folder) Empty(below);
        try {
            mDisk.RemoveFromTree(mRoot, below, kind == ItemKind::Folder);
        } catch (const host::FileException& exception) {
            // The reply to what was done may be lost.
            if (IsRefusal(exception.SystemError()) || FindPresence(mDisk, PathOf(below)) != Presence::Gone)
                throw;
        }
    }

private:
    std::string PathOf(const std::string& below) const {
        return below.empty() ? mRoot : JoinPath<std::string>(mRoot, below);
    }

    void Empty(const std::string& folder) {
        try {
            mDisk.TryToChangeFolder(PathOf(folder));
        } catch (const host::FileException& exception) {
            if (exception.SystemError() == EACCES) mDisk.MakeFolderChangeable(PathOf(folder));
        }
        for (const FolderEntry& entry : mDisk.ListFolder(PathOf(folder)))
            Remove(folder.empty() ? entry.mName : JoinPath<std::string>(folder, entry.mName), entry.mKind);
    }

    FileSystem& mDisk;
    const std::string& mRoot;
};

}  // namespace

void RemoveTree(FileSystem& fileSystem, const std::string& path) {
    TreeRemoval(fileSystem, path).Remove({}, ItemKind::Unknown);
}

void RemoveTree(const std::string& path) {
    RemoveTree(*GetServices().mFileSystem, path);
}

}  // namespace desk
