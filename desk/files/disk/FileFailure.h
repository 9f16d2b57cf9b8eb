#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/files/FileException.h"

namespace desk {

/// Why an operation on the disk failed, as a sentence for the user (localised). UI thread.
ZUHOST_API host::UTF16String DescribeReason(const host::FileException& exception);

/// That the item at `path` was not moved, and why, or that it may have been and where it may stand
/// (`MoveInDoubt`): a sentence for the user (localised), empty when it was the user that cancelled. Writes
/// operation, path and reason to the log. UI thread.
ZUHOST_API host::UTF16String DescribeNotMoved(const host::UTF16String& path,
                                              const host::FileException& exception);

/// Tells the user that the folder `path` was not made, and why, or that it may have been (`MoveInDoubt`). UI
/// thread.
void TellFolderNotMade(const host::UTF16String& path, const host::FileException& exception);

}  // namespace desk
