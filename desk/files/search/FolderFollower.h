#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "desk/files/live/FolderStore.h"
#include "host/core/Messaging.h"

namespace desk {

/// Has the folders below a root listed, a few at a time, and followed for as long as it lives, and hands on
/// what the folder store tells. Folders that come to be are followed too; links to folders are not entered. UI
/// thread; nothing here waits for the volume.
class FolderFollower : public std::enable_shared_from_this<FolderFollower>, private host::Listener {
public:
    /// No more are listed than these, but for those of which somebody asks for an item: watches are the whole
    /// system's, and polling costs the volume.
    static constexpr std::size_t kMostFollowed = 4096;
    static constexpr std::size_t kMostPolled = 1024;
    static constexpr std::size_t kMostAtATime = 4;

    struct News {
        /// The folder has been listed for the first time: its names. Else null.
        std::shared_ptr<const FolderNames> mNames;
        /// Items that are new or whose facts have come or changed; null when the folder could not be listed.
        const host::DirectoryContent* mContent;
        /// Items that are gone.
        const host::UTF16StringVec& mRemovedPaths;
    };
    using Receiver = std::function<void(const News& news)>;

    /// `receiver` gets all news; it must not follow anything itself. `root` is normalised and monitored.
    FolderFollower(host::UTF16String root, Receiver receiver);
    ~FolderFollower() override;

    /// Follows the folders at and below the root in the given order, each after those above it. The first
    /// `wanted` ones, and those above them, are awaited from now on (`FolderStore::IsAwaited`), and are listed
    /// at once when somebody asks for an item of theirs.
    void Follow(const host::UTF16StringVec& folders, std::size_t wanted);
    /// Follows a folder that the store has listed for somebody else, and returns its names; null, and nothing
    /// happens, when it has not.
    std::shared_ptr<const FolderNames> FollowListed(const host::UTF16String& folder);
    /// Follows nothing at and below `path` any more.
    void Drop(const host::UTF16String& path);
    /// True when what changes in the folder is told, or will be without anybody's asking for an item of it.
    bool WillTell(const host::UTF16String& folder) const;

private:
    enum class State { Waiting, UnderWay, Listed };
    struct Folder {
        State mState = State::Waiting;
        bool mIsOnDemand = false;
        bool mIsPolled = false;
        /// Its names have been told.
        bool mHasNames = false;
    };
    using Folders = std::map<host::UTF16String, Folder, std::less<>>;

    void ListenToMessage(const host::Message& message) override;
    void Add(const host::UTF16String& folder, bool isWanted);
    void AddWithThoseAbove(const host::UTF16String& folder);
    FolderStore::Receiver MakeReceiver();
    void StartNext();
    void Receive(const FolderStore::Delivery& delivery);
    void FinishListing(Folders::iterator folder);
    bool IsFull() const;
    void FollowNew(const host::DirectoryContent& content);

    const host::UTF16String mRoot;
    const Receiver mReceiver;
    Folders mFolders;
    std::deque<host::UTF16String> mWaiting;
    std::size_t mUnderWay = 0;
    std::size_t mListed = 0;
    std::size_t mPolled = 0;
};

}  // namespace desk
