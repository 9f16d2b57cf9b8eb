#pragma once

#include <functional>
#include <string>

#include "host/core/Export.h"

namespace desk {

/// An item that `host::File::Move` has moved. Paths in the bytes of the disk, normalised.
struct MovedItem {
    std::string mFrom;
    std::string mTo;
    bool mIsFolder = false;
};

using MoveObserver = std::function<void(const MovedItem&)>;

/// Calls `observer` after each move that succeeded, before `host::File::Move` returns: in the order of their
/// adding, after the locks of this process have followed (`LockKeeper::FollowMove`). What it throws is logged.
/// For as long as the process lives. UI thread.
ZUHOST_API void AddMoveObserver(MoveObserver observer);

/// Tells the observers. UI thread.
ZUHOST_API void NoteMove(const MovedItem& item);

}  // namespace desk
