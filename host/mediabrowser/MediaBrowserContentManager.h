#pragma once

#include <memory>

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/mediabrowser/DirectoryContent.h"

namespace host {

/// How much of a folder a delivery tells, and what it answers.
struct ContentDelivery {
    enum class Extent {
        /// All of the folder, each item once, in the natural order of the names as users see them (a project's
        /// without its extension): rows of items that are not named go.
        Whole,
        /// Some of the folder, the first time it is listed; other rows stay. The parts together tell all of it,
        /// each item once and in that order.
        Part,
        /// What has changed, in no order: items that are new or have changed; other rows stay, but for
        /// `mRemovedPaths`.
        Change,
    };
    Extent mExtent = Extent::Whole;
    /// With `Change`: items that are gone.
    UTF16StringVec mRemovedPaths;
    /// The last delivery that answers a request for the folder's content, or of content that could only be had
    /// later: with it all is there.
    bool mIsLast = false;
    /// Not 0: the listing that was asked for failed with this errno. The delivery then tells nothing (`Change`,
    /// without items) and is the last one that answers the request.
    int mSystemError = 0;
    /// All facts of items that were asked for have been delivered, this one being the last: an order that hangs
    /// on them can be made now.
    bool mAreFactsComplete = false;
    /// With `Change`: nothing but facts of items that are known has changed; neither names nor kinds.
    bool mIsFactsOnly = false;
    /// With the first `Part` of a content: how many items all parts have together. Else 0.
    std::size_t mCountOfAllParts = 0;
};

/// Delivers the contents of folders to the browser's views: lists them on worker threads and hands the
/// results over on the UI thread. A listing that fails is logged, and delivered as failed: it is not an empty
/// one.
/// Shared by the views of one panel. UI thread.
class ZUHOST_API MediaBrowserContentManager {
public:
    struct Impl;

    MediaBrowserContentManager();
    ~MediaBrowserContentManager();

    Impl& GetImpl() const { return *mImpl; }

private:
    std::unique_ptr<Impl> mImpl;
};

}  // namespace host
