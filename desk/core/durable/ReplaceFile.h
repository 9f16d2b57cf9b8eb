#pragma once

#include <optional>
#include <string>

#include "host/core/Export.h"
#include "host/files/FileException.h"

namespace desk {

class FileSystem;

/// What became of the replacement of a file.
struct FileReplacement {
    enum class Outcome {
        /// The new file stands, and survives a loss of power.
        Done,
        /// The old file stands as it was, or still nothing does; the temporary is gone.
        NotDone,
        /// The new file may stand, or the old one, or neither.
        NotKnown,
    };
    Outcome mOutcome = Outcome::NotDone;
    /// Why it is not done, or not known.
    std::optional<host::FileException> mError;
    /// When it is not known: where the new content lies (in bytes) unless `path` has it, and stays
    /// (`TemporaryPurpose::ToldSave`); empty when it can only be in `path`, or the volume promises nothing
    /// more.
    std::string mKept;
};

/// Replaces the file at `path` (bytes) by one that holds `bytes`: a hidden temporary in the same folder is
/// written and flushed (`FileSystem::CreateNewFile`; the mode is the old file's, or `modeOfNewFile` where none
/// stands), renamed, and the folder flushed. After a rename that failed, `FindPresence` tells what has become
/// of it. A volume may replace by a removal and a rename: the temporary may be all that is left then, and it
/// stays as long as neither the old nor the new file is known to be there, for sweeps too
/// (`TemporaryPurpose::Save`). The next replacement of `path` by this process that is done removes it. Throws
/// nothing. Waits for the volume; any thread.
ZUHOST_API FileReplacement ReplaceFile(FileSystem& fileSystem, const std::string& path,
                                       const std::string& bytes, unsigned modeOfNewFile);

/// The same for who has nothing to tell but a failure: throws unless it is done. A new file is its owner's
/// alone (0600).
ZUHOST_API void ReplaceFileOrThrow(FileSystem& fileSystem, const std::string& path, const std::string& bytes);

}  // namespace desk
