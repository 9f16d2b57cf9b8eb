#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "desk/files/live/FolderNames.h"
#include "desk/files/search/FolderWalk.h"

namespace desk {

struct NameScanResult {
    /// The paths of what was found, those of one folder together, the folders in the order of their depth.
    host::UTF16StringVec mHits;
    /// The folders that were looked through and that nobody has asked to follow; and those with hits that are
    /// neither awaited nor told of.
    std::vector<std::shared_ptr<const FolderNames>> mNotFollowed;
    host::UTF16StringVec mNotAwaitedWithHits;
    /// Folders below the root whose names are not known, the nearest ones first.
    host::UTF16StringVec mUnknown;
    /// Folders whose names are known, but cannot be read now.
    std::vector<FolderWalk::UnreadableFolder> mUnreadable;
};

/// Looks for a text in the names that are known of a root and all folders below it, as they hang together:
/// folders behind links are left out. Where several of `known` are of one folder, the first counts. Asks the
/// volume only where a link leads whose name contains the text. Any thread but the UI thread.
NameScanResult ScanNames(const host::UTF16String& root, const std::vector<KnownNames>& known,
                         const FoldedText& text);

}  // namespace desk
