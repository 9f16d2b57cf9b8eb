#pragma once

#include <memory>
#include <vector>

#include "host/core/Export.h"
#include "host/core/PropertyMap.h"
#include "host/core/Strings.h"

namespace host {

/// The content of a folder, or part of it: one property map an item.
using DirectoryContent = std::vector<PropertyMap>;

/// How much of a folder a delivery tells, and what it answers.
struct ContentDelivery {
    enum class Extent {
        /// All of the folder: rows of items that are not named go.
        Whole,
        /// Some of the folder, the first time it is listed; other rows stay. The parts together tell all of it.
        Part,
        /// What has changed: items that are new or have changed; other rows stay, but for `mRemovedPaths`.
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

    /// The property under which an item's path (a `UTF16String`) stands.
    static const ImmutableString kPathField;
    /// The property that is `true` (a `bool`) for an item that is known to be a folder. Other items have none.
    static const ImmutableString kIsDirectoryField;

    Impl& GetImpl() const { return *mImpl; }

private:
    std::unique_ptr<Impl> mImpl;
};

}  // namespace host
