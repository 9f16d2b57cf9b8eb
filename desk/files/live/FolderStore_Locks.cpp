#include "desk/files/live/FolderStoreImpl.h"

namespace desk {

void FolderStoreImpl::VisitLocks(std::u16string_view path, bool recursive, const LockVisitor& visitor) const {
    if (!recursive) {
        if (const Folder* folder = FindFolder(path)) VisitLocksIn(*folder, visitor);
        return;
    }
    for (auto it = mFolders.lower_bound(path); it != mFolders.end() && it->first.starts_with(path); ++it)
        if (IsSameOrBelow<std::u16string_view>(it->first, path) && !VisitLocksIn(*it->second, visitor)) return;
}

bool FolderStoreImpl::VisitLocksIn(const Folder& folder, const LockVisitor& visitor) {
    if (!folder.mItems || !folder.mIsFollowed) return true;
    for (const FolderItems::Item& item : folder.mItems->Get())
        if (item.mFacts.mHasLockFile &&
            !visitor(JoinPath(folder.mPath->mText, folder.mItems->NameOf(item)), item.mFacts))
            return false;
    return true;
}

}  // namespace desk
