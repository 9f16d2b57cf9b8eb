#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

/// Showing items in the system's file browser. All return at once and never wait for the volume nor for the
/// file browser; what goes wrong is told to the user. UI thread.
namespace host {

/// Opens the folder that holds `path` and selects the item there.
ZUHOST_API void RevealAndSelectFile(const UTF16String& path);

/// The same for several items, which may lie in several folders.
ZUHOST_API void RevealAndSelectFiles(const UTF16StringVec& paths);

/// Opens `folder` itself.
ZUHOST_API void RevealFolder(const UTF16String& folder);

}  // namespace host
