#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "desk/core/edges/FileSystem.h"
#include "desk/files/live/Boxed.h"
#include "desk/files/live/FolderNames.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/mediabrowser/MediaBrowserContentManager.h"

namespace desk {

class ChangeSource;
class DirectoryMonitor;
struct LockRecord;

/// What is known of one item of a listed folder.
struct ItemFacts {
    /// `Folder` also for a link to a folder, `Link` for one that leads nowhere. `Unknown` while it is not known
    /// (volumes that do not tell; project files only, which are told by their names).
    ItemKind mKind = ItemKind::Unknown;
    /// The item is a symbolic link; what is known else is said of what it leads to.
    bool mIsLink = false;
    /// A lock file stands beside the item (told by the listing alone).
    bool mHasLockFile = false;
    /// Absent until it has been read. After a change it stays as it was until it has been read anew.
    Boxed<ItemStatus> mStatus;
    /// What the lock file says; null until it has been read.
    std::shared_ptr<const LockRecord> mLock;
};

/// What the UI thread knows of the volume: the listings of the folders that a view shows, kept current by
/// the change monitor, and the facts of their items as workers bring them. The one place where anything from
/// the volume reaches the UI thread. Its items are folders, links to folders and project files, without those
/// that are hidden (`IsHiddenName`); other files are not kept. UI thread, but for what its workers do inside.
class ZUHOST_API FolderStore {
public:
    struct Delivery {
        host::UTF16String mFolder;
        host::ContentDelivery mDelivery;
        /// Null when the listing failed.
        std::shared_ptr<const host::DirectoryContent> mContent;
    };
    using Receiver = std::function<void(const Delivery&)>;

    virtual ~FolderStore() = default;

    /// Hands the content of `folder` to `receiver`: in one delivery, or, when it is long, in parts. A worker
    /// lists it, unless it has been listed for somebody else, and what is known is current (it is watched, or
    /// was polled just now). Watches (or polls) the folder from before the listing on, if it lies below a
    /// monitored root. Kinds come from the directory entries; nothing is asked per file. From now on `receiver`
    /// also gets what `RequestChanges` and `RequestFacts` bring for the folder, until `Forget`. `owner` tells
    /// receivers apart: one that has the folder's content already gets what has changed since (extent `Change`,
    /// also when it is nothing), and takes the place of that owner's earlier receiver.
    virtual void RequestListing(const host::UTF16String& folder, Receiver receiver,
                                const void* owner = nullptr) = 0;
    /// Likewise, but in place of the content, which costs most of a listing, a delivery without any says that
    /// the folder has been listed; `GetNames` has the names.
    virtual void RequestNames(const host::UTF16String& folder, Receiver receiver, const void* owner) = 0;
    /// Likewise, but lists the folder only when the facts of one of its items are asked for (`FindAndRequest`),
    /// or at once when it has been listed already for somebody else. Until then the folder is awaited.
    virtual void RequestNamesOnDemand(const host::UTF16String& folder, Receiver receiver,
                                      const void* owner) = 0;
    /// When the folder is listed: hands what changes from now on to `receiver`, asks the volume for nothing,
    /// and returns the names. Null, and nothing happens, when it is not.
    virtual std::shared_ptr<const FolderNames> FollowListed(const host::UTF16String& folder, Receiver receiver,
                                                            const void* owner) = 0;
    /// Likewise, ahead of somebody who will ask for the content: has the folder listed unless it is, so that he
    /// is answered at once. `receiver` gets an empty last delivery when the listing has come to an end (or one
    /// that tells why it failed), and what changes later.
    virtual void RequestListingAhead(const host::UTF16String& folder, Receiver receiver,
                                     const void* owner = nullptr) = 0;
    /// Brings what has changed in a listed folder since the last listing: only the items that the monitor
    /// named are read, or all of the folder when it could not name them.
    virtual void RequestChanges(const host::UTF16String& folder) = 0;
    /// Reads status and lock of items of a listed folder that are not known yet, newest request first; they are
    /// delivered with extent `Change`, many at a time. What is asked for already is not asked for again.
    virtual void RequestFacts(const host::UTF16String& folder, const host::UTF16StringVec& names) = 0;
    /// Drops requests for facts that no worker has begun (their rows have scrolled away).
    virtual void DropWaitingFacts() = 0;
    /// Takes the owner's receivers of a folder and of all folders below it away, and forgets those folders
    /// that have none left.
    virtual void Forget(const host::UTF16String& folder, const void* owner = nullptr) = 0;

    /// True when the folder's listing is known, and the folder is watched or polled.
    virtual bool IsListed(std::u16string_view folder) const = 0;
    /// The names of a folder's items as a search sees them; null when the folder is not listed. They are made
    /// when they are first asked for, and kept until they change.
    virtual std::shared_ptr<const FolderNames> GetNames(std::u16string_view folder) = 0;
    /// Those of all listed folders at and below `root`, and whether `owner` has a receiver there.
    virtual std::vector<KnownNames> GetNamesBelow(std::u16string_view root, const void* owner) = 0;
    /// True when the folder lies below a monitored root and its first listing is under way or has been
    /// requested: what is in it will be delivered, and nobody need wait for the volume to say it now.
    virtual bool IsAwaited(std::u16string_view folder) const = 0;
    /// The facts of an item of a listed folder, by its path; null when its folder is not listed, or (told by
    /// `IsListed`) when the folder holds no such item. A listed folder is itself found as a folder. A pointer
    /// into the store: valid until the next change.
    virtual const ItemFacts* Find(std::u16string_view path) const = 0;
    /// Like `Find`; when status or lock are missing they are asked for in the background, and so is the listing
    /// of a folder that waits to be listed on demand. An item whose lock is held by a process of this machine
    /// is delivered again when that process has ended, which no volume tells.
    virtual const ItemFacts* FindAndRequest(std::u16string_view path) = 0;

    /// Hands the items beside which a lock file stands to `visitor`, by their paths, until it answers false:
    /// those of `folder`, and with `recursive` those of the listed folders below it. `visitor` changes nothing
    /// here.
    using LockVisitor = std::function<bool(const host::UTF16String& path, const ItemFacts& facts)>;
    virtual void VisitLocks(std::u16string_view folder, bool recursive, const LockVisitor& visitor) const = 0;

    /// What follows the folders.
    virtual DirectoryMonitor& GetMonitor() = 0;
};

/// Is handed what stands in a folder under hidden names of the host (`MayBeLeftover`) when the folder is first
/// listed, so that what dead processes have left there can go. `folder` and `names` in bytes. On a worker.
using FolderSweep = std::function<void(const std::string& folder, std::vector<std::string> names)>;

/// Makes the store on the process's services. `source` tells of changes in place of the system (inotify); for
/// tests. UI thread.
ZUHOST_API std::unique_ptr<FolderStore> CreateFolderStore(FolderSweep sweep,
                                                          std::unique_ptr<ChangeSource> source = nullptr);

}  // namespace desk
