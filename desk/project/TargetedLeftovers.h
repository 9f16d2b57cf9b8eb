#pragma once

#include <string>

#include "desk/project/TemporaryNames.h"
#include "host/core/Export.h"

namespace desk {

class FileSystem;

/// Deals with the temporary at `path` (bytes), which belongs to another name of its folder and whose process is
/// gone. A save's is removed when a listing that is no older than this call shows the file that it was to
/// replace; else it may be all that is left of the file: it stays, and the user is told where. Of a folder's
/// copy, the mark is removed, and with it the folder if it is still empty. Writes what it does to the log.
/// Waits for the volume: for a worker.
void SweepTargeted(FileSystem& fileSystem, const std::string& path, const TargetedTemporary& temporary);

}  // namespace desk
