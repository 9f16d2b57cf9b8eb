#include "desk/files/live/KnownFacts.h"

#include <string_view>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/files/live/FolderStore.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

/// `find` looks a normalised path up in the store.
template <class Find>
KnownItem FindInStore(const host::UTF16String& path, Find find) {
    FolderStore* store = GetServices().mFolderStore;
    if (!store || path.empty()) return {};
    if (const ItemFacts* facts = find(*store, path)) return {.mFacts = facts};
    host::UTF16String normalized = host::PathUtils::ToNormalizedPath(path);
    if (normalized != path) {
        if (const ItemFacts* facts = find(*store, normalized)) return {.mFacts = facts};
    }
    const std::u16string_view folder = FolderOf(normalized);
    return {.mIsAbsent = host::IsVantorProjectFile(normalized) && store->IsListed(folder),
            .mIsAwaited = store->IsAwaited(folder)};
}

}  // namespace

KnownItem FindKnownItem(const host::UTF16String& path) {
    return FindInStore(path,
                       [](const FolderStore& store, std::u16string_view item) { return store.Find(item); });
}

KnownItem FindKnownItemAndRequest(const host::UTF16String& path) {
    return FindInStore(path,
                       [](FolderStore& store, std::u16string_view item) { return store.FindAndRequest(item); });
}

}  // namespace desk
