#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

struct ItemFacts;

/// What the folder store says of a path.
struct KnownItem {
    /// Null when the store does not know the item. Valid until the store's next change.
    const ItemFacts* mFacts = nullptr;
    /// The item's folder is listed and does not hold it; said of names of projects only, since the store keeps
    /// no other files. With neither, only the disk can tell.
    bool mIsAbsent = false;
    /// Nothing is known yet, but the item's folder is being listed or will be, and what it holds will be
    /// delivered.
    bool mIsAwaited = false;
};

/// Looks `path` up in the folder store, in any spelling; a normalised path of an item that is there costs no
/// allocation. Knows nothing while the process has no store. UI thread.
ZUHOST_API KnownItem FindKnownItem(const host::UTF16String& path);

/// The same; facts that are missing are asked for in the background, and so is the listing of a folder that
/// waits for that.
ZUHOST_API KnownItem FindKnownItemAndRequest(const host::UTF16String& path);

}  // namespace desk
