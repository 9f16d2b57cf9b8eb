#include "desk/files/live/FolderReadAhead.h"

#include <climits>
#include <ranges>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "host/files/PathUtils.h"

namespace desk {

FolderReadAhead::FolderReadAhead(host::UTF16String root) : mRoot(std::move(root)) {}

FolderReadAhead::~FolderReadAhead() {
    if (FolderStore* store = GetServices().mFolderStore) store->Forget(mRoot, this);
}

void FolderReadAhead::Start(const host::UTF16StringVec& folders) {
    for (const host::UTF16String& folder : std::views::reverse(folders))
        Add(host::PathUtils::ToNormalizedPath(folder));
    mNext.push_back(mRoot);
    StartNext();
}

void FolderReadAhead::Add(const host::UTF16String& folder) {
    // A path from a settings file may be no path at all.
    if (folder.size() <= mRoot.size() || folder.size() > PATH_MAX || !IsSameOrBelow(folder, mRoot)) return;
    if (!mFolders.insert(folder).second) return;
    const host::UTF16String above(FolderOf(folder));
    Add(above);
    mWaiting[above].push_back(folder);
}

void FolderReadAhead::StartNext() {
    FolderStore* store = GetServices().mFolderStore;
    while (store && !mNext.empty() && mUnderWay.size() < kMostAtATime) {
        const host::UTF16String folder = std::move(mNext.front());
        mNext.pop_front();
        mUnderWay.insert(folder);
        const auto receive = [self = weak_from_this()](const FolderStore::Delivery& delivery) {
            if (const auto readAhead = self.lock()) readAhead->Receive(delivery);
        };
        store->RequestListingAhead(folder, receive, this);
    }
}

void FolderReadAhead::Receive(const FolderStore::Delivery& delivery) {
    if (!delivery.mDelivery.mIsLast || mUnderWay.erase(delivery.mFolder) == 0) return;
    const FolderStore& store = *GetServices().mFolderStore;
    if (const auto waiting = mWaiting.find(delivery.mFolder); waiting != mWaiting.end()) {
        for (host::UTF16String& folder : waiting->second) {
            const ItemFacts* facts = store.Find(folder);
            if (facts && facts->mKind == ItemKind::Folder) mNext.push_back(std::move(folder));
        }
        mWaiting.erase(waiting);
    }
    StartNext();
}

}  // namespace desk
