#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "desk/files/FileSystem.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/mediabrowser/MediaBrowserContentManager.h"

namespace desk {

struct LockRecord;

/// What is known of one item of a listed folder.
struct ItemFacts {
    /// `Folder` also for a link to a folder. `Unknown` for a link whose target is not known yet.
    ItemKind mKind = ItemKind::Unknown;
    /// Absent until it has been read, and while it is being read anew after a change.
    std::optional<ItemStatus> mStatus;
    /// A lock file stands beside the item (told by the listing alone).
    bool mHasLockFile = false;
    /// What the lock file says; null until it has been read.
    std::shared_ptr<const LockRecord> mLock;
};

/// What the UI thread knows of the volume: the listings of the folders that a view shows, kept current by
/// the change monitor, and the facts of their items as workers bring them. The one place where anything from
/// the volume reaches the UI thread. UI thread, but for what its workers do inside.
class ZUHOST_API FolderStore {
public:
    struct Delivery {
        host::UTF16String mFolder;
        host::ContentDelivery mDelivery;
        std::shared_ptr<const host::DirectoryContent> mContent;
        /// The last delivery of what was requested.
        bool mIsLast = true;
        /// The listing failed with this errno, and there is no content; 0 for success.
        int mSystemError = 0;
    };
    using Receiver = std::function<void(const Delivery&)>;

    virtual ~FolderStore() = default;

    /// Lists `folder` on a worker and hands its content to `receiver`: in one delivery, or, for a long first
    /// listing, in parts. Watches (or polls) the folder from before the listing on, if it lies below a
    /// monitored root. Kinds come from the directory entries; nothing is asked per file. From now on
    /// `receiver` also gets what `RequestChanges` and `RequestFacts` bring for the folder, until `Forget`.
    virtual void RequestListing(const host::UTF16String& folder, Receiver receiver) = 0;
    /// Brings what has changed in a listed folder since the last listing: only the items that the monitor
    /// named are read, or all of the folder when it could not name them.
    virtual void RequestChanges(const host::UTF16String& folder) = 0;
    /// Reads status and lock of items of a listed folder that are not known yet, newest request first; they are
    /// delivered with extent `Change`, many at a time. What is asked for already is not asked for again.
    virtual void RequestFacts(const host::UTF16String& folder, const host::UTF16StringVec& names) = 0;
    /// Drops requests for facts that no worker has begun (their rows have scrolled away).
    virtual void DropWaitingFacts() = 0;
    /// Forgets a folder and all folders below it.
    virtual void Forget(const host::UTF16String& folder) = 0;

    /// True when the folder's listing is known and current.
    virtual bool IsListed(std::u16string_view folder) const = 0;
    /// The facts of an item of a listed folder, by its path; null when its folder is not listed, or (told by
    /// `IsListed`) when the folder holds no such item. A pointer into the store: valid until the next change.
    virtual const ItemFacts* Find(std::u16string_view path) const = 0;
    /// Like `Find`; when status or lock are missing they are asked for in the background.
    virtual const ItemFacts* FindAndRequest(std::u16string_view path) = 0;
};

}  // namespace desk
