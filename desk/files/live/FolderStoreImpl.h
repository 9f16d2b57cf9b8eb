#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "desk/core/work/Lifetime.h"
#include "desk/files/live/DirectoryMonitor.h"
#include "desk/files/live/FactReader.h"
#include "desk/files/live/FolderItems.h"
#include "desk/files/live/FolderListing.h"
#include "desk/files/live/FolderStore.h"

namespace desk {

/// The folder store. All state is the UI thread's; workers get copies and post what they find. A folder has one
/// job under way at most: a listing, a poll (a listing that nobody asked for), or the reading of changed names.
class FolderStoreImpl final : public FolderStore, private DirectoryMonitor::Client {
public:
    FolderStoreImpl(FolderSweep sweep, std::unique_ptr<ChangeSource> source);
    ~FolderStoreImpl() override;

    void RequestListing(const host::UTF16String& path, Receiver receiver, const void* owner) override;
    void RequestNames(const host::UTF16String& path, Receiver receiver, const void* owner) override;
    void RequestNamesOnDemand(const host::UTF16String& path, Receiver receiver, const void* owner) override;
    std::shared_ptr<const FolderNames> FollowListed(const host::UTF16String& path, Receiver receiver,
                                                    const void* owner) override;
    void RequestListingAhead(const host::UTF16String& path, Receiver receiver, const void* owner) override;
    void RequestChanges(const host::UTF16String& path) override;
    void RequestFacts(const host::UTF16String& path, const host::UTF16StringVec& names) override;
    void DropWaitingFacts() override;
    void Forget(const host::UTF16String& path, const void* owner) override;
    bool IsListed(std::u16string_view path) const override;
    std::shared_ptr<const FolderNames> GetNames(std::u16string_view path) override;
    std::vector<KnownNames> GetNamesBelow(std::u16string_view root, const void* owner) override;
    bool IsAwaited(std::u16string_view path) const override;
    const ItemFacts* Find(std::u16string_view path) const override;
    const ItemFacts* FindAndRequest(std::u16string_view path) override;
    void VisitLocks(std::u16string_view path, bool recursive, const LockVisitor& visitor) const override;
    DirectoryMonitor& GetMonitor() override { return mMonitor; }

private:
    struct Subscriber {
        const void* mOwner = nullptr;
        std::shared_ptr<Receiver> mReceiver;
        bool mHasContent = false;
        /// Is told of a listing, and gets its content; false: is told only.
        bool mWantsContent = true;
        /// Asks for a listing as soon as somebody asks for an item.
        bool mIsOnDemand = false;
        /// Has asked for a listing that has not begun, or is under way.
        bool mIsWaiting = false;
        /// Has the content, and has asked again: the folder is to be listed anew.
        bool mAsksAgain = false;
        bool mIsBeingServed = false;
    };
    struct QueuedDelivery {
        std::shared_ptr<Receiver> mReceiver;
        Delivery mDelivery;
    };
    enum class Job { None, Listing, Poll, Names, Contents };
    struct Folder {
        std::shared_ptr<const FolderPath> mPath;
        /// Null until the folder has been listed.
        std::shared_ptr<FolderItems> mItems;
        /// Where the item that is asked for next is looked for first.
        std::size_t mNextItem = 0;
        /// The items' names; null until somebody asks, and again when they change.
        std::shared_ptr<const FolderNames> mNames;
        /// A job reads the items: they are copied before they are changed.
        bool mIsShared = false;
        /// Counts the changes of what items there are.
        unsigned mGeneration = 0;
        bool mIsFollowed = false;
        Job mJob = Job::None;
        /// The generation that the listing under way has seen, or made with its first result.
        unsigned mListedGeneration = 0;
        std::chrono::steady_clock::time_point mListedAt{};
        bool mAreChangesWanted = false;
        int mSystemError = 0;
        bool mHasLoggedFacts = false;
        /// Items whose facts could not be read will be read again.
        bool mIsRetrying = false;
        FolderChange mPending;
        /// What a poll has found, until it is asked for.
        std::unique_ptr<FolderListing::Result> mFound;
        std::shared_ptr<ListingMemory> mMemory = std::make_shared<ListingMemory>();
        std::vector<Subscriber> mSubscribers;
        std::deque<QueuedDelivery> mDeliveries;
        bool mIsDelivering = false;
    };
    using FolderPtr = std::shared_ptr<Folder>;
    /// What came of updates: deliveries of the extent `Change`.
    struct Changes {
        explicit Changes(const Folder& folder) : mContent(folder.mPath->mText) {}

        host::DirectoryContent mContent;
        host::UTF16StringVec mRemovedPaths;
        bool mAreFactsComplete = false;
        bool mIsFactsOnly = false;
        bool IsEmpty() const { return mContent.empty() && mRemovedPaths.empty(); }
    };

    // The monitor's reports.
    void OnFolderChanged(const host::UTF16String& path, FolderChange&& change) override;
    void PollFolder(const host::UTF16String& path) override;
    void OnRootMonitored(const host::UTF16String& root) override;
    void OnFollowingEnded(const host::UTF16String& path) override;

    // Folders and items.
    void MakeLane();
    Folder* FindFolder(std::u16string_view path) const;
    FolderPtr FindFolderPtr(std::u16string_view path) const;
    bool IsCurrent(const FolderPtr& folder) const;
    FolderItems::Item* FindItem(std::u16string_view path, Folder*& folder) const;
    Subscriber& Subscribe(const host::UTF16String& path, Receiver&& receiver, const void* owner,
                          FolderPtr& folder);
    void ListOnDemand(std::u16string_view itemPath);
    static bool VisitLocksIn(const Folder& folder, const LockVisitor& visitor);
    static FolderItems& Writable(Folder& folder);
    static std::shared_ptr<const FolderNames> NamesOf(Folder& folder);
    static bool Merge(Folder& folder, FolderItems::Item& item, ItemUpdate& update);
    void ForgetFoldersBelow(const host::UTF16String& path);
    void Ask(Folder& folder, FolderItems::Item& item);
    void SendQuestions();
    void WatchHolder(std::u16string_view path, const ItemFacts& facts);
    void LookForHolders();

    // Jobs.
    void StartNext(const FolderPtr& folder);
    void StartListing(const FolderPtr& folder, Job job);
    bool IsAnsweredByWhatIsKnown(const Folder& folder) const;
    void StartContents(const FolderPtr& folder);
    void FinishContents(const FolderPtr& folder, FolderListing::Result&& result);
    static void ServeWaiting(Folder& folder);
    void StartChanges(const FolderPtr& folder);
    void StartNames(const FolderPtr& folder, FolderChange&& change);
    void TakeFirst(const FolderPtr& folder, FolderListing::Result&& result);
    void FinishListing(const FolderPtr& folder, FolderListing::Result&& result);
    void FinishNames(const FolderPtr& folder, std::vector<ItemUpdate>&& updates);
    void FailListing(const FolderPtr& folder, const FolderListing::Result& result);
    bool TakeFound(const FolderPtr& folder);
    void TakePoll(const FolderPtr& folder, FolderListing::Result&& result);
    void TakeListing(const FolderPtr& folder, FolderListing::Result&& result);
    void TakeFacts(std::vector<FactReader::Answer>&& answers, bool areAll);
    void TakeAnswer(Folder& folder, ItemUpdate& update, Changes& changes);
    void TakeFailure(Folder& folder, FolderItems::Item& item, const ItemUpdate& update);
    Changes Apply(Folder& folder, std::vector<ItemUpdate>&& updates);

    // Deliveries.
    void Serve(const FolderPtr& folder, const FolderListing::Result& result, Changes&& changes);
    void DeliverContents(const FolderPtr& folder, Subscriber& subscriber, const FolderListing::Result& result);
    void DeliverChanges(const FolderPtr& folder, Changes&& changes);
    void Deliver(const FolderPtr& folder, const Subscriber& subscriber, Delivery&& delivery);
    void DeliverNext(const FolderPtr& folder);
    void RetryLater(Folder& folder, const host::UTF16String& name);
    void Post(std::function<void()> task);

    std::map<host::UTF16String, FolderPtr, std::less<>> mFolders;
    /// The folder that was looked up last.
    mutable Folder* mLast = nullptr;
    std::shared_ptr<VolumeSpeed> mSpeed;
    std::shared_ptr<ReadingLane> mLane;
    const FolderSweep mSweep;
    DirectoryMonitor mMonitor;
    std::shared_ptr<FactReader> mFactReader;
    /// Asked for in this turn of the event loop.
    std::vector<FactReader::Question> mQuestions;
    /// Items that somebody has asked for whose locks processes of this machine hold.
    std::set<host::UTF16String, std::less<>> mHolders;
    MainThread::TimerID mHolderTimer = 0;
    Lifetime mLifetime;
};

}  // namespace desk
