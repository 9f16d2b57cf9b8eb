#include "desk/files/search/FolderFollower.h"

#include <algorithm>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/DirectoryMonitor.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace desk {

FolderFollower::FolderFollower(host::UTF16String root, Receiver receiver)
    : mRoot(std::move(root)), mReceiver(std::move(receiver)) {
    host::AddListener(host::kStation_DirectoryChanges, this);
}

FolderFollower::~FolderFollower() {
    host::RemoveListener(host::kStation_DirectoryChanges, this);
    if (FolderStore* store = GetServices().mFolderStore) store->Forget(mRoot, this);
}

void FolderFollower::Follow(const host::UTF16StringVec& folders, std::size_t wanted) {
    for (std::size_t i = 0; i < folders.size(); ++i)
        i < wanted ? AddWithThoseAbove(folders[i]) : Add(folders[i], false);
    StartNext();
}

void FolderFollower::AddWithThoseAbove(const host::UTF16String& folder) {
    if (folder.size() > mRoot.size() && !mFolders.contains(folder))
        AddWithThoseAbove(host::UTF16String(FolderOf(folder)));
    Add(folder, true);
}

void FolderFollower::Add(const host::UTF16String& folder, bool isWanted) {
    if (!IsSameOrBelow(folder, mRoot)) return;
    const auto [entry, isNew] = mFolders.try_emplace(folder);
    if (isNew) mWaiting.push_back(folder);
    FolderStore* store = GetServices().mFolderStore;
    if (!store || !isWanted || entry->second.mState != State::Waiting || entry->second.mIsOnDemand) return;
    entry->second.mIsOnDemand = true;
    store->RequestNamesOnDemand(folder, MakeReceiver(), this);
}

FolderStore::Receiver FolderFollower::MakeReceiver() {
    return [self = weak_from_this()](const FolderStore::Delivery& delivery) {
        if (const auto follower = self.lock()) follower->Receive(delivery);
    };
}

std::shared_ptr<const FolderNames> FolderFollower::FollowListed(const host::UTF16String& folder) {
    FolderStore* store = GetServices().mFolderStore;
    const auto known = mFolders.find(folder);
    if (!store || (known != mFolders.end() && known->second.mState != State::Waiting)) return {};
    std::shared_ptr<const FolderNames> names = store->FollowListed(folder, MakeReceiver(), this);
    if (!names) return {};
    const auto added = mFolders.try_emplace(folder).first;
    FinishListing(added);
    added->second.mHasNames = true;
    return names;
}

bool FolderFollower::WillTell(const host::UTF16String& folder) const {
    const auto known = mFolders.find(folder);
    if (known == mFolders.end()) return false;
    return known->second.mHasNames || known->second.mState == State::UnderWay ||
           (known->second.mState == State::Waiting && !IsFull());
}

bool FolderFollower::IsFull() const {
    return mPolled >= kMostPolled || mListed + mUnderWay >= kMostFollowed;
}

void FolderFollower::StartNext() {
    FolderStore* store = GetServices().mFolderStore;
    while (store && !mWaiting.empty() && mUnderWay < kMostAtATime && !IsFull()) {
        const host::UTF16String path = std::move(mWaiting.front());
        mWaiting.pop_front();
        const auto folder = mFolders.find(path);
        if (folder == mFolders.end() || folder->second.mState != State::Waiting) continue;
        folder->second.mState = State::UnderWay;
        ++mUnderWay;
        store->RequestNames(path, MakeReceiver(), this);
    }
}

void FolderFollower::ListenToMessage(const host::Message& message) {
    const auto* changed = host::MessageCast<host::DirectoryChangedMessage>(message);
    const auto folder = changed ? mFolders.find(changed->GetPath()) : mFolders.end();
    FolderStore* store = GetServices().mFolderStore;
    if (store && folder != mFolders.end() && folder->second.mState != State::Waiting)
        store->RequestChanges(folder->first);
}

void FolderFollower::Receive(const FolderStore::Delivery& delivery) {
    const auto folder = mFolders.find(delivery.mFolder);
    if (folder == mFolders.end()) return;
    if (delivery.mDelivery.mIsLast && folder->second.mState != State::Listed) FinishListing(folder);
    const auto names =
        folder->second.mHasNames ? nullptr : GetServices().mFolderStore->GetNames(delivery.mFolder);
    folder->second.mHasNames |= names != nullptr;
    for (const host::UTF16String& path : delivery.mDelivery.mRemovedPaths) Drop(path);
    if (names)
        for (const host::UTF16String& below : names->FindFolders()) Add(below, false);
    else if (delivery.mContent)
        FollowNew(*delivery.mContent);
    mReceiver({names, delivery.mContent.get(), delivery.mDelivery.mRemovedPaths});
    StartNext();
}

void FolderFollower::FinishListing(Folders::iterator folder) {
    if (folder->second.mState == State::UnderWay) --mUnderWay;
    folder->second.mState = State::Listed;
    ++mListed;
    folder->second.mIsPolled = GetServices().mFolderStore->GetMonitor().IsPolled(folder->first);
    mPolled += folder->second.mIsPolled;
}

void FolderFollower::Drop(const host::UTF16String& path) {
    for (auto folder = mFolders.lower_bound(path);
         folder != mFolders.end() && folder->first.starts_with(path);) {
        const Folder& state = folder->second;
        if (!IsSameOrBelow(folder->first, path)) {
            ++folder;
            continue;
        }
        mUnderWay -= state.mState == State::UnderWay;
        mListed -= state.mState == State::Listed;
        mPolled -= state.mIsPolled;
        folder = mFolders.erase(folder);
    }
    if (FolderStore* store = GetServices().mFolderStore) store->Forget(path, this);
}

void FolderFollower::FollowNew(const host::DirectoryContent& content) {
    const FolderStore& store = *GetServices().mFolderStore;
    for (const auto item : content) {
        if (!item.mIsFolder) continue;
        const host::UTF16String path = content.PathOf(item);
        const ItemFacts* facts = store.Find(path);
        if (facts && facts->mKind == ItemKind::Folder && !facts->mIsLink) Add(path, false);
    }
}

}  // namespace desk
