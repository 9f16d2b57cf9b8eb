#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "desk/files/live/FolderStoreImpl.h"
#include "host/core/Logging.h"

namespace desk {
namespace {

/// So many items are delivered in one turn of the event loop.
constexpr std::size_t kMostAtOnce = 1000;

/// Some items from the `begin`-th on; counts them there.
std::shared_ptr<const host::DirectoryContent> TakeSome(const host::DirectoryContent& content,
                                                       std::size_t& begin) {
    const auto some = std::make_shared<host::DirectoryContent>(content.GetFolder());
    for (const std::size_t end = std::min(begin + kMostAtOnce, content.size()); begin < end; ++begin)
        some->Add(content[begin].mName, content[begin].mIsFolder);
    return some;
}

}  // namespace

/// What has changed for those who have the content, the content for those who have not.
void FolderStoreImpl::Serve(const FolderPtr& folder, const FolderListing::Result& result, Changes&& changes) {
    DeliverChanges(folder, std::move(changes));
    for (Subscriber& subscriber : folder->mSubscribers)
        if (!subscriber.mHasContent) DeliverContents(folder, subscriber, result);
    for (Subscriber& subscriber : folder->mSubscribers) subscriber.mIsBeingServed = false;
    DeliverNext(folder);
}

/// The whole content, for one who has none yet; or word that there is one.
void FolderStoreImpl::DeliverContents(const FolderPtr& folder, Subscriber& subscriber,
                                      const FolderListing::Result& result) {
    using Extent = host::ContentDelivery::Extent;
    if (!subscriber.mWantsContent) {
        subscriber.mHasContent = true;
        Delivery delivery;
        delivery.mDelivery.mExtent = Extent::Change;
        delivery.mContent = std::make_shared<const host::DirectoryContent>(folder->mPath->mText);
        delivery.mDelivery.mIsLast = true;
        return Deliver(folder, subscriber, std::move(delivery));
    }
    if (result.mContents.empty()) return;
    subscriber.mHasContent = true;
    const bool areParts = result.mContents.size() > 1;
    std::size_t count = 0;
    for (const auto& content : result.mContents) count += content->size();
    for (const auto& content : result.mContents) {
        Delivery delivery;
        delivery.mDelivery.mExtent = areParts ? Extent::Part : Extent::Whole;
        if (areParts) delivery.mDelivery.mCountOfAllParts = std::exchange(count, 0);
        delivery.mContent = content;
        delivery.mDelivery.mIsLast = content == result.mContents.back();
        Deliver(folder, subscriber, std::move(delivery));
    }
}

/// What has changed, for all who have the rest. Those who asked for a listing are told also that nothing has.
void FolderStoreImpl::DeliverChanges(const FolderPtr& folder, Changes&& changes) {
    std::vector<Subscriber> subscribers;
    std::ranges::copy_if(folder->mSubscribers, std::back_inserter(subscribers), &Subscriber::mHasContent);
    const bool isAwaited = std::ranges::any_of(subscribers, &Subscriber::mIsBeingServed);
    std::size_t begin = 0;
    for (bool isMore = isAwaited || !changes.IsEmpty(); isMore;) {
        Delivery delivery;
        delivery.mDelivery.mExtent = host::ContentDelivery::Extent::Change;
        delivery.mDelivery.mRemovedPaths = std::exchange(changes.mRemovedPaths, {});
        delivery.mContent = TakeSome(changes.mContent, begin);
        isMore = begin < changes.mContent.size();
        delivery.mDelivery.mIsFactsOnly = changes.mIsFactsOnly;
        delivery.mDelivery.mAreFactsComplete = changes.mAreFactsComplete && !isMore;
        for (const Subscriber& subscriber : subscribers) {
            Delivery copy = delivery;
            copy.mDelivery.mIsLast = !isMore && subscriber.mIsBeingServed;
            if (copy.mDelivery.mIsLast || !copy.mContent->empty() || !copy.mDelivery.mRemovedPaths.empty())
                Deliver(folder, subscriber, std::move(copy));
        }
    }
}

void FolderStoreImpl::Deliver(const FolderPtr& folder, const Subscriber& subscriber, Delivery&& delivery) {
    delivery.mFolder = folder->mPath->mText;
    folder->mDeliveries.push_back({subscriber.mReceiver, std::move(delivery)});
}

/// One delivery in each turn of the event loop, in the order in which they came about.
void FolderStoreImpl::DeliverNext(const FolderPtr& folder) {
    if (folder->mDeliveries.empty() || std::exchange(folder->mIsDelivering, true)) return;
    const QueuedDelivery next = std::move(folder->mDeliveries.front());
    folder->mDeliveries.pop_front();
    try {
        (*next.mReceiver)(next.mDelivery);
    } catch (...) {
        host::LogCurrentException("FolderStore: delivery");
    }
    Post([this, folder] {
        folder->mIsDelivering = false;
        if (IsCurrent(folder)) DeliverNext(folder);
    });
}

}  // namespace desk
