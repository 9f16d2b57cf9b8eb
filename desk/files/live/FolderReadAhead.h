#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <set>

#include "desk/files/live/FolderStore.h"

namespace desk {

/// Has folders listed ahead of a view that is going to open them one after another, many at a time, and keeps
/// what is known of them current for as long as it lives. Each folder waits until the one that holds it has
/// been listed and names it, so that nothing is asked of what is not there. UI thread; nothing here waits for
/// the volume.
class FolderReadAhead : public std::enable_shared_from_this<FolderReadAhead> {
public:
    /// Each mostly waits for a slow volume; some workers are left for what the user does meanwhile.
    static constexpr std::size_t kMostAtATime = 16;

    /// `root` is the view's root (normalised).
    explicit FolderReadAhead(host::UTF16String root);
    ~FolderReadAhead();

    /// Begins with the folders, and those between them and the root: the last ones first. Called once.
    void Start(const host::UTF16StringVec& folders);

private:
    void Add(const host::UTF16String& folder);
    void StartNext();
    void Receive(const FolderStore::Delivery& delivery);

    const host::UTF16String mRoot;
    std::set<host::UTF16String> mFolders;
    /// By the folder that holds them.
    std::map<host::UTF16String, host::UTF16StringVec> mWaiting;
    std::deque<host::UTF16String> mNext;
    std::set<host::UTF16String> mUnderWay;
};

}  // namespace desk
