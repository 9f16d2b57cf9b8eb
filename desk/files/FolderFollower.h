#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "desk/files/FolderStore.h"
#include "host/core/Messaging.h"

namespace desk {

/// Has the folders below a root listed, a few at a time, and followed for as long as it lives, and hands on
/// what the folder store delivers. Folders that come to be are followed too; links to folders are not entered.
/// Shared by all who follow the same root. UI thread; nothing here waits for the volume.
class FolderFollower : public std::enable_shared_from_this<FolderFollower>, private host::Listener {
public:
    /// No more are listed than these, but for those of which somebody asks for an item: watches are the whole
    /// system's, and polling costs the volume.
    static constexpr std::size_t kMostFollowed = 4096;
    static constexpr std::size_t kMostPolled = 1024;
    static constexpr std::size_t kMostAtATime = 4;

    struct News {
        const host::UTF16String& mFolder;
        /// Items that are new or whose facts have come or changed; null when the folder could not be listed.
        const host::DirectoryContent* mContent;
        /// Items that are gone.
        const host::UTF16StringVec& mRemovedPaths;
        /// The folder's first listing is complete.
        bool mIsListed;
    };
    using Receiver = std::function<void(const News& news)>;

    /// The follower of `root` (normalised): the one that somebody has already, or a new one. Null when the root
    /// is not monitored, so that nothing can be followed.
    static std::shared_ptr<FolderFollower> Get(const host::UTF16String& root);

    explicit FolderFollower(host::UTF16String root);
    ~FolderFollower() override;

    /// `receiver` gets all news until the owner's `RemoveReceiver`; it must not follow or drop anything itself.
    void AddReceiver(const void* owner, Receiver receiver);
    void RemoveReceiver(const void* owner);

    /// Follows the folders at and below the root in the given order, each after those above it. The first
    /// `wanted` ones, and those above them, are awaited from now on (`FolderStore::IsAwaited`), and are listed
    /// at once when somebody asks for an item of theirs.
    void Follow(const host::UTF16StringVec& folders, std::size_t wanted);

private:
    enum class State { Waiting, UnderWay, Listed };
    struct Folder {
        State mState = State::Waiting;
        bool mIsOnDemand = false;
        bool mIsPolled = false;
    };
    using Folders = std::map<host::UTF16String, Folder, std::less<>>;

    void ListenToMessage(const host::Message& message) override;
    void Add(const host::UTF16String& folder, bool isWanted);
    void AddWithThoseAbove(const host::UTF16String& folder);
    FolderStore::Receiver MakeReceiver();
    void StartNext();
    void Receive(const FolderStore::Delivery& delivery);
    void FinishListing(Folders::iterator folder);
    void AppendVanished(const host::UTF16String& folder, host::UTF16StringVec& paths) const;
    void DropBelow(const host::UTF16String& path);
    void FollowNew(const host::DirectoryContent& content);
    void FollowUnlessLinks(host::UTF16StringVec paths);

    const host::UTF16String mRoot;
    Folders mFolders;
    std::deque<host::UTF16String> mWaiting;
    std::size_t mUnderWay = 0;
    std::size_t mListed = 0;
    std::size_t mPolled = 0;
    std::vector<std::pair<const void*, Receiver>> mReceivers;
};

}  // namespace desk
