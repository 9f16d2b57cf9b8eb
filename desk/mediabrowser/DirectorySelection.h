#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {
class MediaBrowserDirectoryView;
}

namespace desk {

/// What is selected in the directory view that is shown: the paths, in the order in which they were selected;
/// empty while there is none, or another view stands in its place. UI thread.
ZUHOST_API host::UTF16StringVec GetPathsSelectedInDirectoryView();

/// Told by the directory views as they come and go. UI thread.
void AddDirectoryView(const host::MediaBrowserDirectoryView& view);
void RemoveDirectoryView(const host::MediaBrowserDirectoryView& view);

}  // namespace desk
