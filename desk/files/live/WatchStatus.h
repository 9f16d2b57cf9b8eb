#pragma once

#include <cstddef>

#include "host/core/Export.h"
#include "host/core/Messaging.h"

namespace desk {

/// How the folders of the open production are followed.
struct WatchStatus {
    std::size_t mWatchedFolders = 0;
    std::size_t mPolledFolders = 0;
    /// Folders are polled because the system's limit of inotify watches has been reached.
    bool mLimitReached = false;
    /// The volume did not answer the last listing or poll (errno), 0 when it did.
    int mSystemError = 0;
    /// A call to the volume has been waiting for so long; 0 while the volume answers, be it with an error.
    int mSecondsWithoutAnswer = 0;
    /// Seconds between two polls.
    double mPollInterval = 2;
};

/// UI thread.
ZUHOST_API WatchStatus GetWatchStatus();

/// The watch status has changed. Announced on `kStation_WatchStatus`.
class ZUHOST_API WatchStatusChangedMessage : public host::MessageTemplate<WatchStatusChangedMessage> {};

inline const host::StationID kStation_WatchStatus{"desk.watchstatus"};

}  // namespace desk
