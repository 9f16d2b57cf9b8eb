#pragma once

#include "host/core/Export.h"
#include "host/toolkit/UI_Node.h"

namespace host {

/// What the nodes of the process share. UI thread.
class ZUHOST_API UI_NodeManager {
public:
    /// Never null.
    static UI_NodeManager* Get();

    /// A timer ID that nobody has got before; never 0.
    UI_TimerID GetUniqueTimerID();

private:
    UI_TimerID mLastTimerID = 0;
};

}  // namespace host
