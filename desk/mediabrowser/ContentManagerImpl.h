#pragma once

#include "desk/files/live/FolderStore.h"
#include "host/mediabrowser/MediaBrowserContentManager.h"

/// Passes requests on to the folder store. `owner` is the view that asks.
struct host::MediaBrowserContentManager::Impl {
    /// `context` is written to the log with the reason when the listing fails.
    void RequestListing(const UTF16String& folder, const UTF16String& context, const void* owner,
                        desk::FolderStore::Receiver receiver);
    void RequestChanges(const UTF16String& folder);
    void Forget(const UTF16String& folder, const void* owner);
};
