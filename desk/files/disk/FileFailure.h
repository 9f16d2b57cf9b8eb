#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/files/FileException.h"

namespace desk {

/// Why an operation on the disk failed, as a sentence for the user (localised). UI thread.
ZUHOST_API host::UTF16String DescribeReason(const host::FileException& exception);

/// For a copy of `path` of which it is not known whether it stands at `destination`: a sentence for the user
/// (localised). UI thread.
ZUHOST_API host::UTF16String DescribeDoubtfulCopy(const host::UTF16String& path,
                                                  const host::UTF16String& destination,
                                                  const host::FileException& reason);

/// That the item at `path` was not copied or not moved, and why, or that it may have been and where it may stand
/// (`MoveInDoubt`): a sentence for the user (localised), empty when it was the user that cancelled. Writes
/// operation, path and reason to the log. UI thread.
ZUHOST_API host::UTF16String DescribeNotCopied(const host::UTF16String& path,
                                               const host::FileException& exception);
ZUHOST_API host::UTF16String DescribeNotMoved(const host::UTF16String& path,
                                              const host::FileException& exception);

/// Tells the user what `DescribeNotCopied` says. UI thread.
ZUHOST_API void TellNotCopied(const host::UTF16String& path, const host::FileException& exception);

/// Tells the user that the folder `path` was not made, and why, or that it may have been (`MoveInDoubt`). UI
/// thread.
void TellFolderNotMade(const host::UTF16String& path, const host::FileException& exception);

/// Tells the user that it is not known whether the item at `path` was copied, and why. UI thread.
ZUHOST_API void TellMayBeCopied(const host::UTF16String& path, const host::FileException& exception);

}  // namespace desk
