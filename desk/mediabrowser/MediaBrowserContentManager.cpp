#include "host/mediabrowser/MediaBrowserContentManager.h"

#include <cstring>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/mediabrowser/ContentManagerImpl.h"

namespace host {

MediaBrowserContentManager::MediaBrowserContentManager() : mImpl(std::make_unique<Impl>()) {}

MediaBrowserContentManager::~MediaBrowserContentManager() = default;

void MediaBrowserContentManager::Impl::RequestListing(const UTF16String& folder, const UTF16String& context,
                                                      const void* owner, desk::FolderStore::Receiver receiver) {
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    if (!store) return;
    if (context.empty()) return store->RequestListing(folder, std::move(receiver), owner);
    store->RequestListing(
        folder,
        [context, receiver = std::move(receiver)](const desk::FolderStore::Delivery& delivery) {
            if (delivery.mDelivery.mSystemError != 0)
                desk::Log(desk::LogLevel::Info, "listing for " + UTF16to8(context) + " failed: " +
                                                    std::strerror(delivery.mDelivery.mSystemError));
            receiver(delivery);
        },
        owner);
}

void MediaBrowserContentManager::Impl::RequestChanges(const UTF16String& folder) {
    if (desk::FolderStore* store = desk::GetServices().mFolderStore) store->RequestChanges(folder);
}

void MediaBrowserContentManager::Impl::Forget(const UTF16String& folder, const void* owner) {
    if (desk::FolderStore* store = desk::GetServices().mFolderStore) store->Forget(folder, owner);
}

}  // namespace host
