#pragma once

#include <cstdint>

#include "desk/core/edges/FileSystem.h"
#include "desk/project/document/KeptText.h"
#include "host/core/Export.h"

namespace desk {

/// What has become of a project's file since its unsaved text was kept.
struct FileSinceKept {
    enum class State {
        /// It is what the text was based on.
        Unchanged,
        /// It holds the text: it was saved after all.
        HoldsText,
        Changed,
        /// The project was moved or removed.
        Gone,
        /// Its folder is not there: it was moved or removed, or the volume is not mounted.
        FolderGone,
        /// The volume does not tell, for the reason that `mSystemError` names.
        NotTold,
    };
    State mState = State::NotTold;
    /// Of the file, in nanoseconds since the epoch.
    std::int64_t mModified = 0;
    int mSystemError = 0;
};

/// Looks at the file of the project that `text` is kept of, whose bytes are not needed. May wait for the
/// volume. Any thread; never throws.
ZUHOST_API FileSinceKept FindFileSinceKept(FileSystem& fileSystem, const KeptText& text);

}  // namespace desk
