#pragma once

#include <string>
#include <vector>

#include "desk/core/Desktop.h"

namespace desk {

/// A path (bytes) as a file URI (RFC 8089); every byte that is neither unreserved (RFC 3986) nor a separator is
/// percent-encoded, whether it is text or not. Any thread.
ZUHOST_API std::string MakeFileURI(const std::string& path);

/// Shows items through the session bus (freedesktop.org's file manager interface, org.freedesktop.FileManager1:
/// ShowItems, ShowFolders), asked by a worker. Where nobody answers to it, xdg-open(1) opens the folders, each
/// once. UI thread.
ZUHOST_API void ShowInFileBrowser(const std::vector<std::string>& paths, Desktop::Reveal reveal,
                                  Desktop::RevealFailed failed);

}  // namespace desk
