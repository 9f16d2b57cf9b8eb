#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {
class MediaBrowserDirectoryView;
}

namespace desk {

/// What is selected in the directory view that is shown, or another view in its place.
struct DirectorySelection {
    std::size_t mCount = 0;
    /// Of the item when it is one.
    host::UTF16String mPath;
};
/// None while no directory view is shown. UI thread.
ZUHOST_API DirectorySelection GetDirectorySelection();

/// Told by the directory views as they come and go. UI thread.
void AddDirectoryView(const host::MediaBrowserDirectoryView& view);
void RemoveDirectoryView(const host::MediaBrowserDirectoryView& view);

}  // namespace desk
