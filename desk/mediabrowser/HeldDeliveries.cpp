#include "desk/mediabrowser/HeldDeliveries.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace desk {

namespace {

using Delivery = FolderStore::Delivery;
using Extent = host::ContentDelivery::Extent;

bool IsChange(const Delivery& delivery) {
    return delivery.mContent && delivery.mDelivery.mExtent == Extent::Change;
}

/// Takes out of `delivery` the items that are `named` already, and adds its own to these.
void LeaveOutNamed(Delivery& delivery, std::set<host::UTF16String>& named) {
    auto content = std::make_shared<host::DirectoryContent>(delivery.mFolder);
    for (const auto item : *delivery.mContent)
        if (named.insert(content->PathOf(item)).second) content->Add(item.mName, item.mIsFolder);
    std::erase_if(delivery.mDelivery.mRemovedPaths,
                  [&](const host::UTF16String& path) { return !named.insert(path).second; });
    delivery.mContent = std::move(content);
}

Delivery Join(const Delivery& earlier, const Delivery& later) {
    Delivery joined = later;
    auto content = std::make_shared<host::DirectoryContent>(*earlier.mContent);
    for (const auto item : *later.mContent) content->Add(item.mName, item.mIsFolder);
    joined.mContent = std::move(content);
    const host::UTF16StringVec& removed = earlier.mDelivery.mRemovedPaths;
    joined.mDelivery.mRemovedPaths.insert(joined.mDelivery.mRemovedPaths.begin(), removed.begin(),
                                          removed.end());
    joined.mDelivery.mIsLast |= earlier.mDelivery.mIsLast;
    joined.mDelivery.mAreFactsComplete |= earlier.mDelivery.mAreFactsComplete;
    joined.mDelivery.mIsFactsOnly &= earlier.mDelivery.mIsFactsOnly;
    return joined;
}

/// One delivery for each run of changes.
void JoinChanges(std::vector<Delivery>& deliveries) {
    std::vector<Delivery> joined;
    std::set<host::UTF16String> named;
    for (auto delivery = deliveries.rbegin(); delivery != deliveries.rend(); ++delivery) {
        const bool continues = !joined.empty() && IsChange(joined.back()) && IsChange(*delivery);
        if (!continues) named.clear();
        if (IsChange(*delivery)) LeaveOutNamed(*delivery, named);
        if (continues)
            joined.back() = Join(*delivery, joined.back());
        else
            joined.push_back(std::move(*delivery));
    }
    std::ranges::reverse(joined);
    deliveries = std::move(joined);
}

/// What comes before a whole content says nothing any more, but that an answer was the last one.
void LeaveOutReplaced(std::vector<Delivery>& deliveries) {
    const auto isWhole = [](const Delivery& delivery) {
        return delivery.mContent && delivery.mDelivery.mExtent == Extent::Whole;
    };
    const auto whole = std::find_if(deliveries.rbegin(), deliveries.rend(), isWhole);
    if (whole == deliveries.rend()) return;
    whole->mDelivery.mIsLast |= std::any_of(std::next(whole), deliveries.rend(),
                                            [](const Delivery& each) { return each.mDelivery.mIsLast; });
    deliveries.erase(deliveries.begin(), std::prev(whole.base()));
}

}  // namespace

std::vector<Delivery> HeldDeliveries::Take() {
    std::map<host::UTF16String, std::size_t> places;
    std::vector<std::vector<Delivery>> folders;
    for (Delivery& delivery : std::exchange(mDeliveries, {})) {
        const auto [place, isNew] = places.emplace(delivery.mFolder, folders.size());
        if (isNew) folders.emplace_back();
        folders[place->second].push_back(std::move(delivery));
    }
    std::vector<Delivery> taken;
    for (std::vector<Delivery>& folder : folders) {
        LeaveOutReplaced(folder);
        JoinChanges(folder);
        std::ranges::move(folder, std::back_inserter(taken));
    }
    return taken;
}

}  // namespace desk
