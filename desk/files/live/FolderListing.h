#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "desk/core/work/ParallelWork.h"
#include "desk/files/live/AnswerWatch.h"
#include "desk/files/live/FolderItems.h"
#include "desk/files/live/FolderWatcher.h"
#include "desk/files/live/ItemReading.h"
#include "desk/files/live/ReadingLane.h"

namespace desk {

/// What one listing of a folder leaves for the next one; used by one listing at a time.
struct ListingMemory {
    /// Size and time of the lock files that have been read.
    std::map<host::UTF16String, std::pair<std::uint64_t, std::int64_t>> mLockStamps;
    /// The type of the volume when the folder was not empty.
    std::optional<long> mVolumeType;
};

/// Lists a folder on workers: follows it first, then lists it, then compares with what was known or, the
/// first time, builds the folder's items and content, sorted by name. The facts that are known are read again
/// last of all, and take long on a slow volume: if names or locks have changed, they come in a result before.
class FolderListing : public std::enable_shared_from_this<FolderListing> {
public:
    /// Longer contents are delivered in parts: a small one first, so that something shows soon.
    static constexpr std::size_t kLongestWhole = 2000;
    static constexpr std::size_t kFirstPartSize = 1000;
    static constexpr std::size_t kPartSize = 3000;

    using Contents = std::vector<std::shared_ptr<const host::DirectoryContent>>;

    struct Request {
        std::shared_ptr<const FolderPath> mFolder;
        /// What is known of the folder; null the first time.
        std::shared_ptr<const FolderItems> mKnown;
        /// The whole content is wanted.
        bool mIsContentWanted = false;
        /// A monitored root, where a volume may be mounted.
        bool mIsRoot = false;
        /// Its watch was lost: an empty folder may be what a volume was mounted on.
        bool mIsLost = false;
        std::shared_ptr<FolderWatcher> mWatcher;
        std::shared_ptr<AnswerWatch> mAnswerWatch;
        std::shared_ptr<VolumeSpeed> mSpeed;
        std::shared_ptr<ReadingLane> mLane;
        /// Others read before it.
        bool mIsPoll = false;
        std::shared_ptr<ListingMemory> mMemory;
        /// May be empty.
        FolderSweep mSweep;
    };
    struct Result {
        std::shared_ptr<const FolderItems> mKnown;
        Following mFollowing;
        /// The names, and where locks are; the result with all facts follows.
        bool mIsFirst = false;
        /// 0, or why the folder could not be listed.
        int mSystemError = 0;
        std::string mErrorText;
        /// The first time.
        std::shared_ptr<FolderItems> mItems;
        /// The whole content, if it was wanted.
        Contents mContents;
        /// What has changed since.
        std::vector<ItemUpdate> mUpdates;
        std::chrono::milliseconds mDuration{0};
    };
    using Completion = std::function<void(Result)>;

    /// Lists the folder; `completion` is called on the UI thread, once or twice. On a worker.
    static void Run(Request request, Completion completion);

    /// The content of a folder, sorted, in one piece or in parts. Any thread.
    static Contents MakeContents(const FolderPath& folder, const FolderItems& items);

    FolderListing(Request request, Completion completion);

private:
    struct Found {
        /// What is known, while the volume has not been asked again.
        ItemKind GetKind() const;

        host::UTF16String mName;
        ItemFacts mFacts;
        const FolderItems::Item* mKnown = nullptr;
        bool mIsProject = false;
        bool mIsKept = true;
    };

    void List();
    void SweepIfNeeded(const std::vector<FolderEntry>& entries);
    /// Items, and projects beside which a lock file stands.
    struct Taken {
        std::vector<Found> mFound;
        std::vector<host::UTF16String> mLocked;
    };
    void TakeEntries(const std::vector<FolderEntry>& entries);
    void TakeEntry(const FolderEntry& entry, Taken& taken) const;
    void MarkLocked();
    void ChooseUnknown();
    void ChooseKnown();
    void ReadChosen(void (FolderListing::*then)());
    void Read(Found& found);
    void ReadLock(Found& found);
    void CompleteNames();
    void Complete();
    void Try(const std::function<void()>& step);
    void PostFirst();
    void DropStamps();
    bool IsVolumeGone();
    void BuildItems();
    void SortFound();
    void MakeContentsAndItems();
    struct Named {
        std::u16string_view mName;
        ItemKind mKind;
    };
    /// Of items that stand in their order.
    static Contents MakeContents(const FolderPath& folder, const std::vector<Named>& items);
    std::vector<ItemUpdate> Compare() const;
    void Fail(int systemError, std::string text);
    static void Post(Completion completion, Result&& result, std::chrono::steady_clock::time_point begin);

    const Request mRequest;
    Completion mCompletion;
    Result mResult;
    std::vector<Found> mFound;
    /// Projects beside which a lock file stands.
    std::vector<host::UTF16String> mLocked;
    /// Places in `mFound`.
    std::vector<std::size_t> mToRead;
    /// Guards the memory of lock files while several workers read.
    std::mutex mMutex;
    const std::chrono::steady_clock::time_point mBegin = std::chrono::steady_clock::now();
};

}  // namespace desk
