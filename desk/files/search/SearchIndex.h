#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "desk/files/live/FolderNames.h"
#include "desk/files/search/FolderFollower.h"
#include "desk/files/search/FolderWalk.h"
#include "desk/files/search/NameScan.h"

namespace desk {

/// The names of the folders below a root, for the searches of that root: the folder store's for what it has
/// listed, and for the rest what walks have brought, each folder read once. Has all of them listed and followed
/// in the background (`FolderFollower`), as far as that goes; folders beyond its limits are read again, behind
/// everything else, whenever a search has begun. UI thread; nothing here waits for the volume.
class SearchIndex : public std::enable_shared_from_this<SearchIndex> {
public:
    /// What has become known of a folder.
    struct News {
        /// The folder has been listed or read anew: its names before (null when they were not known) and now.
        std::shared_ptr<const FolderNames> mBefore;
        std::shared_ptr<const FolderNames> mNow;
        /// With `mNow`: it has been listed, so that facts of all its items can be asked for.
        bool mIsListed = false;
        /// Else: items that are new, or whose facts have come or changed; may be null.
        const host::DirectoryContent* mContent = nullptr;
        /// Items that are gone, with all that was below them; to be dealt with first.
        host::UTF16StringVec mRemovedPaths;
    };
    using Receiver = std::function<void(const News& news)>;
    struct Failure {
        /// An errno value.
        int mSystemError = 0;
        /// The reading that failed.
        unsigned mReading = 0;
    };

    /// The index of `root` (normalised). When it is to be followed, and the root is monitored: the one that
    /// somebody has already, or a new one; else a new one that follows nothing.
    static std::shared_ptr<SearchIndex> Get(const host::UTF16String& root, bool isFollowed);

    SearchIndex(host::UTF16String root, bool isFollowed);
    ~SearchIndex();

    bool IsFollowed() const { return mFollower != nullptr; }
    /// `receiver` gets all news until the owner's `RemoveReceiver`; it must not read or follow anything itself.
    void AddReceiver(const void* owner, Receiver receiver);
    void RemoveReceiver(const void* owner);

    /// The names that are known now.
    std::vector<KnownNames> GetKnown() const;
    /// Reads folders, and all below them; `done` is called later. A reading that is under way is awaited first,
    /// and may bring them too: whoever still misses something asks again.
    void Read(const host::UTF16StringVec& folders, std::function<void()> done);
    /// Why a folder could not be read the last time; null when it could, or nobody has tried.
    const Failure* FindFailure(const host::UTF16String& folder) const;
    /// Readings that have begun.
    unsigned CountReadings() const { return mReadings; }
    /// Follows what a search has looked through and nobody follows yet, folders with hits first, and what could
    /// not be read, until it can. Nothing when the index follows nothing.
    void Follow(const NameScanResult& result);
    /// Soon reads the folders again that are not followed, and tells what has changed in them; later, when it
    /// is called again meanwhile: keys that follow each other are not to wait for the disk.
    void ReadUnfollowedAgainSoon();

private:
    using Names = std::shared_ptr<const FolderNames>;
    struct Reading;
    /// What was read of a folder, and how far the follower is with it.
    struct ReadFolder {
        Names mNames;
        KnownNames::Following mFollowing = KnownNames::Following::NotAsked;
    };

    void ReadUnfollowedAgain();
    std::shared_ptr<FolderWalk> StartWalk(const host::UTF16StringVec& folders,
                                          std::function<bool(const host::UTF16String&)> isEntered,
                                          std::function<void()> done);
    void TakeRead(std::vector<Names>&& names, FolderWalk::Result&& failed, unsigned reading);
    void NoteAsked(const host::UTF16String& folder, KnownNames::Following following);
    void OnNews(const FolderFollower::News& news);
    host::UTF16StringVec Renew(const Names& before, const Names& now, bool isListed);
    void DropRead(const host::UTF16String& path);
    void Tell(const News& news) const;

    const host::UTF16String mRoot;
    std::shared_ptr<FolderFollower> mFollower;
    /// What was read of folders that the follower has not listed.
    std::map<host::UTF16String, ReadFolder> mRead;
    std::map<host::UTF16String, Failure> mFailures;
    /// Null when none is under way.
    std::shared_ptr<FolderWalk> mReading;
    std::vector<std::function<void()>> mWaiting;
    unsigned mReadings = 0;
    std::shared_ptr<FolderWalk> mReadingAgain;
    bool mIsReadingAgainWanted = false;
    unsigned mReadingsAgainAskedFor = 0;
    std::vector<std::pair<const void*, Receiver>> mReceivers;
};

}  // namespace desk
