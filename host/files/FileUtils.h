#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/files/Dir.h"

/// Copies show their progress and can be cancelled once they take long; events go on being handled meanwhile,
/// but no command is let in. Each copy has the times and permissions of its source, and lands under its name
/// only when it is complete and durable: a copy that fails or is cancelled leaves nothing of its own, unless
/// the volume does not tell whether it has got its name: then the user is told that it may have. Nothing is
/// replaced. All throw `FileException` with operation, path and reason: EEXIST when the destination exists,
/// EBUSY when a file did not stop changing, ECANCELED when the user cancelled. Why a copy failed is told to the
/// user too, unless they cancelled. All may wait for the volume. UI thread.
namespace host::FileUtils {

/// Copies the file `source` to `destination`; a symbolic link is copied as a link.
ZUHOST_API void Copy(const UTF16String& source, const UTF16String& destination);

/// Copies a folder with all that is in it, but for lock files and the host's own files; symbolic links are
/// copied as links, `source` too when it is one. What is neither file, folder nor link (a pipe, a device) is
/// left out, and logged.
ZUHOST_API void Copy(const Dir& source, const Dir& destination);

/// Makes the folder `path`, in a parent that exists. The user is told of a failure.
ZUHOST_API void CreateNewDirectory(const UTF16String& path);

}  // namespace host::FileUtils
