#include "desk/files/live/FolderStore.h"

#include <algorithm>

#include "desk/core/edges/Services.h"
#include "desk/files/live/ChangeSource.h"
#include "desk/files/live/FolderStoreImpl.h"
#include "host/files/PathUtils.h"

namespace desk {

std::unique_ptr<FolderStore> CreateFolderStore(FolderSweep sweep, std::unique_ptr<ChangeSource> source) {
    return std::make_unique<FolderStoreImpl>(std::move(sweep),
                                             source ? std::move(source) : CreateInotifySource());
}

FolderStoreImpl::FolderStoreImpl(FolderSweep sweep, std::unique_ptr<ChangeSource> source)
    : mSweep(std::move(sweep)), mMonitor(std::move(source), *this) {
    MakeLane();
}

FolderStoreImpl::~FolderStoreImpl() {
    if (mHolderTimer != 0) GetServices().mMainThread->StopTimer(mHolderTimer);
}

/// What another production's volume leaves unanswered keeps its places in the lane that it was asked by.
void FolderStoreImpl::MakeLane() {
    mSpeed = std::make_shared<VolumeSpeed>();
    mLane = std::make_shared<ReadingLane>();
    mFactReader = std::make_shared<FactReader>(
        mSpeed, mLane, mMonitor.GetAnswerWatch(),
        mLifetime.Guard([this](std::vector<FactReader::Answer> answers, bool areAll) {
            TakeFacts(std::move(answers), areAll);
        }));
}

void FolderStoreImpl::RequestListing(const host::UTF16String& path, Receiver receiver, const void* owner) {
    FolderPtr folder;
    Subscriber& subscriber = Subscribe(path, std::move(receiver), owner, folder);
    subscriber.mWantsContent = true;
    subscriber.mIsOnDemand = false;
    subscriber.mIsWaiting = true;
    subscriber.mAsksAgain = subscriber.mHasContent || subscriber.mIsBeingServed;
    StartNext(folder);
}

void FolderStoreImpl::RequestListingAhead(const host::UTF16String& path, Receiver receiver, const void* owner) {
    FolderPtr folder;
    Subscriber& subscriber = Subscribe(path, std::move(receiver), owner, folder);
    subscriber.mIsWaiting = true;
    subscriber.mHasContent = true;
    StartNext(folder);
}

void FolderStoreImpl::RequestNames(const host::UTF16String& path, Receiver receiver, const void* owner) {
    FolderPtr folder;
    Subscriber& subscriber = Subscribe(path, std::move(receiver), owner, folder);
    subscriber.mWantsContent = false;
    subscriber.mIsOnDemand = false;
    subscriber.mIsWaiting = true;
    StartNext(folder);
}

void FolderStoreImpl::RequestNamesOnDemand(const host::UTF16String& path, Receiver receiver,
                                           const void* owner) {
    FolderPtr folder;
    Subscriber& subscriber = Subscribe(path, std::move(receiver), owner, folder);
    subscriber.mWantsContent = false;
    if (!folder->mItems && folder->mJob == Job::None) {
        subscriber.mIsOnDemand = true;
        return;
    }
    subscriber.mIsWaiting = true;
    StartNext(folder);
}

FolderStoreImpl::Subscriber& FolderStoreImpl::Subscribe(const host::UTF16String& path, Receiver&& receiver,
                                                        const void* owner, FolderPtr& folder) {
    const host::UTF16String normalized = host::PathUtils::ToNormalizedPath(path);
    FolderPtr& known = mFolders[normalized];
    if (!known) {
        known = std::make_shared<Folder>();
        known->mPath = std::make_shared<FolderPath>(normalized);
    }
    folder = known;
    auto subscriber = std::ranges::find(folder->mSubscribers, owner, &Subscriber::mOwner);
    if (subscriber == folder->mSubscribers.end())
        subscriber = folder->mSubscribers.insert(subscriber, Subscriber{.mOwner = owner, .mReceiver = {}});
    subscriber->mReceiver = std::make_shared<Receiver>(std::move(receiver));
    return *subscriber;
}

void FolderStoreImpl::RequestChanges(const host::UTF16String& path) {
    const FolderPtr folder = FindFolderPtr(host::PathUtils::ToNormalizedPath(path));
    if (!folder) return;
    folder->mAreChangesWanted = true;
    Post([this, folder] { StartNext(folder); });
}

void FolderStoreImpl::RequestFacts(const host::UTF16String& path, const host::UTF16StringVec& names) {
    Folder* folder = FindFolder(host::PathUtils::ToNormalizedPath(path));
    if (!folder || !folder->mItems) return;
    for (const host::UTF16String& name : names)
        if (FolderItems::Item* item = folder->mItems->Find(name, folder->mNextItem)) Ask(*folder, *item);
}

void FolderStoreImpl::DropWaitingFacts() {
    std::vector<FactReader::Question> dropped = mFactReader->DropWaiting();
    std::ranges::move(mQuestions, std::back_inserter(dropped));
    mQuestions.clear();
    for (const FactReader::Question& question : dropped) {
        const Folder* folder = FindFolder(question.mFolder->mText);
        FolderItems::Item* item = folder && folder->mItems ? folder->mItems->Find(question.mName) : nullptr;
        if (item) item->Set(FolderItems::kIsAsked, false);
    }
}

void FolderStoreImpl::Forget(const host::UTF16String& path, const void* owner) {
    const host::UTF16String normalized = host::PathUtils::ToNormalizedPath(path);
    std::vector<host::UTF16String> forgotten;
    for (auto it = mFolders.lower_bound(normalized); it != mFolders.end() && it->first.starts_with(normalized);
         ++it) {
        if (!IsSameOrBelow(it->first, normalized)) continue;
        std::vector<Subscriber>& subscribers = it->second->mSubscribers;
        std::erase_if(subscribers, [&](const Subscriber& one) { return !owner || one.mOwner == owner; });
        if (subscribers.empty()) forgotten.push_back(it->first);
    }
    for (const host::UTF16String& folder : forgotten) {
        mLast = nullptr;
        mFolders.erase(folder);
        mMonitor.Forget(folder);
    }
}

void FolderStoreImpl::ForgetFoldersBelow(const host::UTF16String& path) {
    const auto folder = mFolders.lower_bound(path);
    if (folder != mFolders.end() && folder->first.starts_with(path)) Forget(path, nullptr);
}

bool FolderStoreImpl::IsListed(std::u16string_view path) const {
    const Folder* folder = FindFolder(path);
    return folder && folder->mItems && folder->mIsFollowed;
}

bool FolderStoreImpl::IsAwaited(std::u16string_view path) const {
    const Folder* folder = FindFolder(path);
    // One that could not be listed is polled until it can be, or nobody will ever tell.
    return folder && !folder->mItems && (folder->mSystemError == 0 || folder->mIsFollowed) &&
           mMonitor.IsMonitored(path);
}

const ItemFacts* FolderStoreImpl::Find(std::u16string_view path) const {
    Folder* folder = nullptr;
    if (const FolderItems::Item* item = FindItem(path, folder)) return &item->mFacts;
    static const ItemFacts kFolder{
        .mKind = ItemKind::Folder, .mHasLockFile = false, .mStatus = {}, .mLock = {}};
    return !folder && IsListed(path) ? &kFolder : nullptr;
}

const ItemFacts* FolderStoreImpl::FindAndRequest(std::u16string_view path) {
    Folder* folder = nullptr;
    FolderItems::Item* item = FindItem(path, folder);
    if (!item) {
        if (!folder) ListOnDemand(path);
        return Find(path);
    }
    Ask(*folder, *item);
    if (item->mFacts.mLock) WatchHolder(path, item->mFacts);
    return &item->mFacts;
}

void FolderStoreImpl::ListOnDemand(std::u16string_view itemPath) {
    const FolderPtr folder = FindFolderPtr(FolderOf(itemPath));
    if (!folder) return;
    bool isDemanded = false;
    for (Subscriber& subscriber : folder->mSubscribers) {
        if (!std::exchange(subscriber.mIsOnDemand, false)) continue;
        subscriber.mIsWaiting = true;
        isDemanded = true;
    }
    if (isDemanded) StartNext(folder);
}

FolderStoreImpl::Folder* FolderStoreImpl::FindFolder(std::u16string_view path) const {
    if (mLast && mLast->mPath->mText == path) return mLast;
    const auto found = mFolders.find(path);
    return found == mFolders.end() ? nullptr : mLast = found->second.get();
}

FolderStoreImpl::FolderPtr FolderStoreImpl::FindFolderPtr(std::u16string_view path) const {
    const auto found = mFolders.find(path);
    return found == mFolders.end() ? nullptr : found->second;
}

/// False when the folder has been forgotten meanwhile.
bool FolderStoreImpl::IsCurrent(const FolderPtr& folder) const {
    return FindFolder(folder->mPath->mText) == folder.get();
}

/// The item at `path`, and its folder if that is listed.
FolderItems::Item* FolderStoreImpl::FindItem(std::u16string_view path, Folder*& folder) const {
    const std::size_t slash = path.rfind(u'/');
    if (slash == std::u16string_view::npos || slash + 1 == path.size()) return nullptr;
    folder = FindFolder(path.substr(0, std::max<std::size_t>(slash, 1)));
    if (!folder || !folder->mItems || !folder->mIsFollowed) {
        folder = nullptr;
        return nullptr;
    }
    return folder->mItems->Find(path.substr(slash + 1), folder->mNextItem);
}

FolderItems& FolderStoreImpl::Writable(Folder& folder) {
    if (std::exchange(folder.mIsShared, false)) folder.mItems = std::make_shared<FolderItems>(*folder.mItems);
    return *folder.mItems;
}

void FolderStoreImpl::Ask(Folder& folder, FolderItems::Item& item) {
    const bool isMissing = !item.mFacts.mStatus || (item.mFacts.mHasLockFile && !item.mFacts.mLock);
    if (!isMissing || (item.mFlags & (FolderItems::kIsAsked | FolderItems::kIsUnreadable)) != 0) return;
    item.Set(FolderItems::kIsAsked, true);
    item.Set(FolderItems::kIsOutrun, false);
    if (mQuestions.empty()) Post([this] { SendQuestions(); });
    mQuestions.push_back(
        {folder.mPath, host::UTF16String(folder.mItems->NameOf(item)), item.mFacts.mHasLockFile});
}

void FolderStoreImpl::SendQuestions() {
    mFactReader->Ask(std::exchange(mQuestions, {}));
}

void FolderStoreImpl::Post(std::function<void()> task) {
    GetServices().mMainThread->Post(mLifetime.Guard(std::move(task)));
}

}  // namespace desk
