#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/FolderStoreImpl.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

constexpr std::chrono::seconds kRetryDelay{5};

}  // namespace

void FolderStoreImpl::OnFolderChanged(const host::UTF16String& path, FolderChange&& change) {
    if (Folder* folder = FindFolder(path)) folder->mPending.Merge(std::move(change));
}

void FolderStoreImpl::OnRootMonitored(const host::UTF16String& root) {
    SendQuestions();
    MakeLane();
    for (const auto& [path, folder] : mFolders) {
        if (!folder->mItems || folder->mIsFollowed || !mMonitor.IsMonitored(path) || !IsSameOrBelow(path, root))
            continue;
        folder->mPending.AddWhole();
        folder->mAreChangesWanted = true;
        Post([this, folder = folder] { StartNext(folder); });
    }
}

void FolderStoreImpl::OnFollowingEnded(const host::UTF16String& path) {
    if (Folder* folder = FindFolder(path)) folder->mIsFollowed = false;
}

void FolderStoreImpl::PollFolder(const host::UTF16String& path) {
    const FolderPtr folder = FindFolderPtr(path);
    if (folder && folder->mJob == Job::None) return StartListing(folder, Job::Poll);
    mMonitor.FinishPoll(path, {});
}

void FolderStoreImpl::StartNext(const FolderPtr& folder) {
    if (!IsCurrent(folder)) return;
    if (folder->mJob == Job::Poll && folder->mAreChangesWanted && TakeFound(folder)) {
        folder->mListedGeneration = folder->mGeneration;
        folder->mAreChangesWanted = folder->mPending.mIsWhole || !folder->mPending.mNames.empty();
    }
    if (folder->mJob != Job::None) return;
    if (std::ranges::any_of(folder->mSubscribers, &Subscriber::mIsWaiting))
        return IsAnsweredByWhatIsKnown(*folder) ? StartContents(folder) : StartListing(folder, Job::Listing);
    if (std::exchange(folder->mAreChangesWanted, false)) StartChanges(folder);
}

void FolderStoreImpl::StartChanges(const FolderPtr& folder) {
    const bool hasFound = TakeFound(folder);
    FolderChange change = std::exchange(folder->mPending, {});
    if (!change.mIsWhole && change.mNames.empty() && hasFound) return;
    if (!folder->mItems || change.mIsWhole || change.mNames.empty()) return StartListing(folder, Job::Listing);
    StartNames(folder, std::move(change));
}

bool FolderStoreImpl::IsAnsweredByWhatIsKnown(const Folder& folder) const {
    if (!folder.mItems || !folder.mIsFollowed || folder.mSystemError != 0) return false;
    if (std::ranges::any_of(folder.mSubscribers, &Subscriber::mAsksAgain)) return false;
    if (std::ranges::all_of(folder.mSubscribers, &Subscriber::mHasContent)) return true;
    if (folder.mFound || folder.mPending.mIsWhole || !folder.mPending.mNames.empty()) return false;
    return !mMonitor.IsPolled(folder.mPath->mText) ||
           GetServices().mMainThread->Now() - folder.mListedAt < FolderPoller::kInterval;
}

void FolderStoreImpl::ServeWaiting(Folder& folder) {
    for (Subscriber& subscriber : folder.mSubscribers) {
        subscriber.mIsBeingServed |= std::exchange(subscriber.mIsWaiting, false);
        subscriber.mAsksAgain = false;
    }
}

void FolderStoreImpl::StartContents(const FolderPtr& folder) {
    folder->mJob = Job::Contents;
    folder->mIsShared = true;
    ServeWaiting(*folder);
    const bool isWanted = std::ranges::any_of(folder->mSubscribers, [](const Subscriber& subscriber) {
        return !subscriber.mHasContent && subscriber.mWantsContent;
    });
    const auto result = std::make_shared<FolderListing::Result>();
    result->mKnown = folder->mItems;
    const auto finish = mLifetime.Guard([this, folder, result] { FinishContents(folder, std::move(*result)); });
    GetServices().mWorkerPool->Submit([isWanted, path = folder->mPath, result, finish] {
        if (isWanted) result->mContents = FolderListing::MakeContents(*path, *result->mKnown);
        GetServices().mMainThread->Post(finish);
    });
}

void FolderStoreImpl::FinishContents(const FolderPtr& folder, FolderListing::Result&& result) {
    folder->mJob = Job::None;
    if (result.mKnown == folder->mItems) folder->mIsShared = false;
    if (!IsCurrent(folder)) return;
    Serve(folder, result, Changes(*folder));
    StartNext(folder);
}

void FolderStoreImpl::StartListing(const FolderPtr& folder, Job job) {
    folder->mJob = job;
    folder->mListedGeneration = folder->mGeneration;
    FolderListing::Request request;
    request.mFolder = folder->mPath;
    request.mKnown = folder->mItems;
    request.mIsRoot = mMonitor.IsRoot(folder->mPath->mText);
    request.mIsLost = mMonitor.IsLost(folder->mPath->mText);
    request.mWatcher = mMonitor.GetWatcher();
    request.mAnswerWatch = mMonitor.GetAnswerWatch();
    request.mSpeed = mSpeed;
    request.mLane = mLane;
    request.mIsPoll = job == Job::Poll;
    request.mMemory = folder->mMemory;
    request.mSweep = mSweep;
    for (const Subscriber& subscriber : folder->mSubscribers)
        request.mIsContentWanted |= !subscriber.mHasContent && subscriber.mWantsContent;
    if (job == Job::Listing) ServeWaiting(*folder);
    folder->mIsShared = folder->mItems != nullptr;
    if (job == Job::Listing) folder->mPending = {};
    const auto done = mLifetime.Guard([this, folder](FolderListing::Result result) {
        result.mIsFirst ? TakeFirst(folder, std::move(result)) : FinishListing(folder, std::move(result));
    });
    auto task = [request, done] { FolderListing::Run(request, done); };
    WorkerPool& pool = *GetServices().mWorkerPool;
    job == Job::Poll ? pool.SubmitLast(std::move(task)) : pool.Submit(std::move(task));
}

/// What has been found out while the rest of a listing goes on.
void FolderStoreImpl::TakeFirst(const FolderPtr& folder, FolderListing::Result&& result) {
    if (!IsCurrent(folder) || folder->mListedGeneration != folder->mGeneration) return;
    folder->mJob == Job::Poll ? TakePoll(folder, std::move(result)) : TakeListing(folder, std::move(result));
    folder->mListedGeneration = folder->mGeneration;
}

void FolderStoreImpl::FinishListing(const FolderPtr& folder, FolderListing::Result&& result) {
    const Job job = std::exchange(folder->mJob, Job::None);
    const host::UTF16String& path = folder->mPath->mText;
    if (result.mKnown == folder->mItems) folder->mIsShared = false;
    if (!IsCurrent(folder)) {
        if (!FindFolder(path)) mMonitor.Forget(path);
        return;
    }
    folder->mIsFollowed = mMonitor.FinishListing(path, result.mFollowing, result.mSystemError);
    if (job == Job::Poll) mMonitor.FinishPoll(path, result.mDuration);
    if (result.mSystemError == 0) folder->mListedAt = GetServices().mMainThread->Now();
    if (result.mSystemError != 0)
        FailListing(folder, result);
    else if (folder->mListedGeneration == folder->mGeneration)
        job == Job::Poll ? TakePoll(folder, std::move(result)) : TakeListing(folder, std::move(result));
    else if (job == Job::Listing)
        return StartListing(folder, job);
    StartNext(folder);
}

/// Nothing counts as deleted: what is known stays.
void FolderStoreImpl::FailListing(const FolderPtr& folder, const FolderListing::Result& result) {
    // A folder that was deleted is no failure: the listing of its parent tells.
    const bool isExpected = result.mSystemError == ENOENT && !mMonitor.IsRoot(folder->mPath->mText);
    if (std::exchange(folder->mSystemError, result.mSystemError) != result.mSystemError)
        Log(isExpected ? LogLevel::Info : LogLevel::Error, result.mErrorText);
    for (Subscriber& subscriber : folder->mSubscribers) {
        if (!std::exchange(subscriber.mIsBeingServed, false)) continue;
        Delivery delivery;
        delivery.mDelivery = {host::ContentDelivery::Extent::Change, {}, true, result.mSystemError};
        Deliver(folder, subscriber, std::move(delivery));
    }
    DeliverNext(folder);
}

/// False when no poll has found anything.
bool FolderStoreImpl::TakeFound(const FolderPtr& folder) {
    if (!folder->mFound) return false;
    TakeListing(folder, std::move(*std::exchange(folder->mFound, nullptr)));
    return true;
}

/// What a poll has found waits until the views want it: they may be holding changes back.
void FolderStoreImpl::TakePoll(const FolderPtr& folder, FolderListing::Result&& result) {
    const bool isKnown = folder->mItems != nullptr;
    if (isKnown != (result.mKnown != nullptr)) return;
    if (isKnown && result.mUpdates.empty()) {
        folder->mFound.reset();
        folder->mSystemError = 0;
        return;
    }
    folder->mFound = std::make_unique<FolderListing::Result>(std::move(result));
    mMonitor.Announce(folder->mPath->mText);
}

void FolderStoreImpl::TakeListing(const FolderPtr& folder, FolderListing::Result&& result) {
    folder->mSystemError = 0;
    folder->mHasLoggedFacts = false;
    folder->mFound.reset();
    Changes changes(*folder);
    if (folder->mItems) {
        changes = Apply(*folder, std::move(result.mUpdates));
    } else {
        folder->mItems = std::move(result.mItems);
        folder->mNames.reset();
        ++folder->mGeneration;
    }
    Serve(folder, result, std::move(changes));
}

void FolderStoreImpl::StartNames(const FolderPtr& folder, FolderChange&& change) {
    folder->mJob = Job::Names;
    const auto updates = std::make_shared<std::vector<ItemUpdate>>();
    const auto finish = mLifetime.Guard([this, folder, updates] { FinishNames(folder, std::move(*updates)); });
    auto task = [path = folder->mPath, names = std::move(change.mNames),
                 answerWatch = mMonitor.GetAnswerWatch(), updates, finish] {
        AnswerWatch::Call call(answerWatch, path);
        *updates = ReadChanged(*path, names, call);
        GetServices().mMainThread->Post(finish);
    };
    GetServices().mWorkerPool->Submit(std::move(task));
}

void FolderStoreImpl::FinishNames(const FolderPtr& folder, std::vector<ItemUpdate>&& updates) {
    folder->mJob = Job::None;
    if (!IsCurrent(folder)) return;
    DeliverChanges(folder, Apply(*folder, std::move(updates)));
    DeliverNext(folder);
    StartNext(folder);
}

FolderStoreImpl::Changes FolderStoreImpl::Apply(Folder& folder, std::vector<ItemUpdate>&& updates) {
    Changes changes(folder);
    FolderItems& items = Writable(folder);
    for (ItemUpdate& update : updates) {
        FolderItems::Item* item = items.Find(update.mName);
        if (update.mIsGone && item) {
            items.Remove(update.mName);
            folder.mNames.reset();
            changes.mRemovedPaths.push_back(JoinPath(folder.mPath->mText, update.mName));
            ++folder.mGeneration;
        }
        if (!update.mIsGone && update.mSystemError != 0) RetryLater(folder, update.mName);
        if (update.mIsGone || update.mSystemError != 0) continue;
        const bool isNew = item == nullptr;
        if (isNew) {
            item = &items.Add(update.mName);
            folder.mNames.reset();
            ++folder.mGeneration;
        }
        item->Set(FolderItems::kIsOutrun,
                  item->Has(FolderItems::kIsAsked) && update.mFacts.mStatus.has_value());
        item->Set(FolderItems::kIsUnreadable, false);
        if (Merge(folder, *item, update) || isNew)
            changes.mContent.Add(update.mName, item->mFacts.mKind == ItemKind::Folder);
    }
    for (const host::UTF16String& removed : changes.mRemovedPaths) ForgetFoldersBelow(removed);
    return changes;
}

void FolderStoreImpl::TakeFacts(std::vector<FactReader::Answer>&& answers, bool areAll) {
    if (!std::ranges::is_sorted(answers, {}, &FactReader::Answer::mFolder))
        std::ranges::sort(answers, {}, &FactReader::Answer::mFolder);
    for (auto begin = answers.begin(); begin != answers.end();) {
        const auto end = std::find_if(begin, answers.end(),
                                      [&](const auto& answer) { return answer.mFolder != begin->mFolder; });
        const FolderPtr folder = FindFolderPtr(begin->mFolder->mText);
        if (!folder || !folder->mItems) {
            begin = end;
            continue;
        }
        Changes changes(*folder);
        changes.mIsFactsOnly = true;
        for (; begin != end; ++begin) TakeAnswer(*folder, begin->mUpdate, changes);
        changes.mAreFactsComplete = areAll && begin == answers.end();
        DeliverChanges(folder, std::move(changes));
        DeliverNext(folder);
    }
}

void FolderStoreImpl::TakeAnswer(Folder& folder, ItemUpdate& update, Changes& changes) {
    FolderItems::Item* item = Writable(folder).Find(update.mName, folder.mNextItem);
    if (!item) return;
    item->Set(FolderItems::kIsAsked, false);
    if (item->Has(FolderItems::kIsOutrun)) return item->Set(FolderItems::kIsOutrun, false);
    if (update.mIsGone || update.mSystemError != 0) return TakeFailure(folder, *item, update);
    const bool wasFolder = item->mFacts.mKind == ItemKind::Folder;
    if (!Merge(folder, *item, update)) return;
    const bool isFolder = item->mFacts.mKind == ItemKind::Folder;
    changes.mContent.Add(update.mName, isFolder);
    changes.mIsFactsOnly &= isFolder == wasFolder;
}

/// The facts of an item could not be read.
void FolderStoreImpl::TakeFailure(Folder& folder, FolderItems::Item& item, const ItemUpdate& update) {
    item.Set(FolderItems::kIsUnreadable, true);
    if (update.mIsGone) {
        folder.mPending.Add(update.mName);
        return Post([this, path = folder.mPath] { mMonitor.Announce(path->mText); });
    }
    RetryLater(folder, update.mName);
    if (!std::exchange(folder.mHasLoggedFacts, true))
        Log(LogLevel::Warning,
            host::FileException("read status of", JoinPath(folder.mPath->mText, update.mName),
                                update.mSystemError)
                .what());
}

/// A volume that failed a call may answer the next one: the item counts as changed again after a while.
void FolderStoreImpl::RetryLater(Folder& folder, const host::UTF16String& name) {
    folder.mPending.Add(name);
    if (std::exchange(folder.mIsRetrying, true)) return;
    GetServices().mMainThread->PostDelayed(mLifetime.Guard([this, path = folder.mPath] {
        Folder* retried = FindFolder(path->mText);
        if (!retried) return;
        retried->mIsRetrying = false;
        mMonitor.Announce(path->mText);
    }),
                                           kRetryDelay);
}

}  // namespace desk
