#include "desk/files/FolderFollower.h"

#include <algorithm>
#include <utility>

#include "desk/core/MainThread.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/DirectoryMonitor.h"
#include "desk/files/FolderPath.h"
#include "host/files/DirectoryChangeMonitor.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

bool IsRealFolder(const host::UTF16String& path) {
    try {
        return GetServices().mFileSystem->Status(host::UTF16to8(path), false).mKind == ItemKind::Folder;
    } catch (const host::FileException&) {
        return false;
    }
}

}  // namespace

std::shared_ptr<FolderFollower> FolderFollower::Get(const host::UTF16String& root) {
    static std::map<host::UTF16String, std::weak_ptr<FolderFollower>> sFollowers;
    FolderStore* store = GetServices().mFolderStore;
    if (!store || !store->GetMonitor().IsMonitored(root)) return {};
    std::erase_if(sFollowers, [](const auto& follower) { return follower.second.expired(); });
    std::shared_ptr<FolderFollower> follower = sFollowers[root].lock();
    if (!follower) sFollowers[root] = follower = std::make_shared<FolderFollower>(root);
    return follower;
}

FolderFollower::FolderFollower(host::UTF16String root) : mRoot(std::move(root)) {
    host::AddListener(host::kStation_DirectoryChanges, this);
}

FolderFollower::~FolderFollower() {
    host::RemoveListener(host::kStation_DirectoryChanges, this);
    if (FolderStore* store = GetServices().mFolderStore) store->Forget(mRoot, this);
}

void FolderFollower::AddReceiver(const void* owner, Receiver receiver) {
    mReceivers.emplace_back(owner, std::move(receiver));
}

void FolderFollower::RemoveReceiver(const void* owner) {
    std::erase_if(mReceivers, [owner](const auto& receiver) { return receiver.first == owner; });
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
    store->RequestListingOnDemand(folder, MakeReceiver(), this);
}

FolderStore::Receiver FolderFollower::MakeReceiver() {
    return [self = weak_from_this()](const FolderStore::Delivery& delivery) {
        if (const auto follower = self.lock()) follower->Receive(delivery);
    };
}

void FolderFollower::StartNext() {
    FolderStore* store = GetServices().mFolderStore;
    while (store && !mWaiting.empty() && mUnderWay < kMostAtATime && mPolled < kMostPolled &&
           mListed + mUnderWay < kMostFollowed) {
        const host::UTF16String path = std::move(mWaiting.front());
        mWaiting.pop_front();
        const auto folder = mFolders.find(path);
        if (folder == mFolders.end() || folder->second.mState != State::Waiting) continue;
        folder->second.mState = State::UnderWay;
        ++mUnderWay;
        store->RequestListing(path, MakeReceiver(), this);
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
    host::UTF16StringVec removed = delivery.mDelivery.mRemovedPaths;
    const bool isListed = delivery.mIsLast && folder->second.mState != State::Listed;
    if (isListed) FinishListing(folder);
    if (isListed && delivery.mContent) AppendVanished(delivery.mFolder, removed);
    for (const host::UTF16String& path : removed) DropBelow(path);
    if (delivery.mContent) FollowNew(*delivery.mContent);
    const News news{delivery.mFolder, delivery.mContent.get(), removed, isListed && delivery.mContent};
    for (const auto& receiver : std::vector(mReceivers)) receiver.second(news);
    StartNext();
}

void FolderFollower::FinishListing(Folders::iterator folder) {
    if (folder->second.mState == State::UnderWay) --mUnderWay;
    folder->second.mState = State::Listed;
    ++mListed;
    folder->second.mIsPolled = GetServices().mFolderStore->GetMonitor().IsPolled(folder->first);
    mPolled += folder->second.mIsPolled;
}

/// Folders that were found in `folder` before it was listed, and are not there any more.
void FolderFollower::AppendVanished(const host::UTF16String& folder, host::UTF16StringVec& paths) const {
    const FolderStore& store = *GetServices().mFolderStore;
    const host::UTF16String prefix = JoinPath<host::UTF16String>(folder, {});
    for (auto below = mFolders.lower_bound(prefix); below != mFolders.end() && below->first.starts_with(prefix);
         ++below)
        if (FolderOf(below->first) == folder && !store.Find(below->first)) paths.push_back(below->first);
}

void FolderFollower::DropBelow(const host::UTF16String& path) {
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
    host::UTF16StringVec unknown;
    for (const host::PropertyMap& item : content) {
        const auto* path = item.Find<host::UTF16String>(host::MediaBrowserContentManager::kPathField);
        const ItemFacts* facts = path ? store.Find(*path) : nullptr;
        if (facts && facts->mKind == ItemKind::Folder && !mFolders.contains(*path)) unknown.push_back(*path);
    }
    if (!unknown.empty()) FollowUnlessLinks(std::move(unknown));
}

void FolderFollower::FollowUnlessLinks(host::UTF16StringVec paths) {
    GetServices().mWorkerPool->SubmitLast([self = weak_from_this(), paths = std::move(paths)] {
        host::UTF16StringVec folders;
        std::ranges::copy_if(paths, std::back_inserter(folders), IsRealFolder);
        if (folders.empty()) return;
        GetServices().mMainThread->Post([self, folders = std::move(folders)] {
            if (const auto follower = self.lock()) follower->Follow(folders, 0);
        });
    });
}

}  // namespace desk
