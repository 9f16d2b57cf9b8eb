// The names of listed folders, for searches.
#include <algorithm>
#include <optional>

#include "desk/files/live/FolderStoreImpl.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

/// How an item is searched for; absent for what is not found.
std::optional<FolderNames::Kind> KindOf(std::u16string_view name, const ItemFacts& facts) {
    using Kind = FolderNames::Kind;
    if (facts.mKind == ItemKind::Folder) return facts.mIsLink ? Kind::FolderLink : Kind::Folder;
    if (facts.mKind == ItemKind::Unknown && facts.mIsLink) return Kind::Link;
    const bool isFile = facts.mKind == ItemKind::File || facts.mKind == ItemKind::Unknown;
    if (isFile && FolderNames::IsProject(name)) return Kind::Project;
    return {};
}

}  // namespace

std::shared_ptr<const FolderNames> FolderStoreImpl::GetNames(std::u16string_view path) {
    Folder* folder = FindFolder(path);
    return folder && folder->mItems && folder->mIsFollowed ? NamesOf(*folder) : nullptr;
}

std::vector<KnownNames> FolderStoreImpl::GetNamesBelow(std::u16string_view root, const void* owner) {
    std::vector<KnownNames> known;
    for (auto it = mFolders.lower_bound(root); it != mFolders.end() && it->first.starts_with(root); ++it) {
        Folder& folder = *it->second;
        if (!folder.mItems || !folder.mIsFollowed || !IsSameOrBelow<std::u16string_view>(it->first, root))
            continue;
        const auto isOwner = [owner](const Subscriber& one) { return one.mOwner == owner && one.mHasContent; };
        const bool isTold = owner && std::ranges::any_of(folder.mSubscribers, isOwner);
        known.push_back({NamesOf(folder),
                         isTold ? KnownNames::Following::Told : KnownNames::Following::NotAsked,
                         folder.mSystemError});
    }
    return known;
}

std::shared_ptr<const FolderNames> FolderStoreImpl::FollowListed(const host::UTF16String& path,
                                                                 Receiver receiver, const void* owner) {
    FolderPtr folder = FindFolderPtr(host::PathUtils::ToNormalizedPath(path));
    if (!folder || !folder->mItems || !folder->mIsFollowed) return {};
    Subscriber& subscriber = Subscribe(path, std::move(receiver), owner, folder);
    subscriber.mWantsContent = false;
    subscriber.mHasContent = true;
    // What somebody else holds back.
    if (folder->mFound || folder->mPending.mIsWhole || !folder->mPending.mNames.empty()) RequestChanges(path);
    return NamesOf(*folder);
}

std::shared_ptr<const FolderNames> FolderStoreImpl::NamesOf(Folder& folder) {
    if (folder.mNames) return folder.mNames;
    FolderNames::Maker maker(folder.mPath->mText);
    for (const FolderItems::Item& item : folder.mItems->Get()) {
        const std::u16string_view name = folder.mItems->NameOf(item);
        if (const auto kind = KindOf(name, item.mFacts)) maker.Add(name, *kind);
    }
    return folder.mNames = std::move(maker).Make();
}

/// Brings an item in line with what was read of it, which it takes; false when nothing was new.
bool FolderStoreImpl::Merge(Folder& folder, FolderItems::Item& item, ItemUpdate& update) {
    const auto findKind = [&] { return KindOf(folder.mItems->NameOf(item), item.mFacts); };
    if (!folder.mNames) return MergeFacts(item.mFacts, std::move(update.mFacts), update.mIsLockKnown);
    const auto kind = findKind();
    const bool hasChanged = MergeFacts(item.mFacts, std::move(update.mFacts), update.mIsLockKnown);
    if (findKind() != kind) folder.mNames.reset();
    return hasChanged;
}

}  // namespace desk
