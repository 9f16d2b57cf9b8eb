#pragma once

#include <string>

#include "desk/core/names/TemporaryNames.h"
#include "host/core/Export.h"

namespace desk {

class FileSystem;

/// Deals with the temporary at `path` (bytes), which belongs to another name of its folder and whose process is
/// gone. Writes what it does to the log, and throws nothing. Waits for the volume: for a worker.
/// - A save's is removed when the file that it was to replace has the same content; also when that is known to
///   be there as it was before, unless the user was told of the text (`TemporaryPurpose::ToldSave`). Else it
///   may be all that is left of a text: it becomes a project that everybody sees, beside that file and under
///   its name with "recovered" behind it, and the user is told.
/// - Of a folder's copy the mark is removed, and with it the folder if it is still empty.
void SweepTargeted(FileSystem& fileSystem, const std::string& path, const TargetedTemporary& temporary);

}  // namespace desk
