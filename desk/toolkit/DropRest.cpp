#include "desk/toolkit/DropRest.h"

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "host/core/Localizer.h"

namespace desk {

namespace {

constexpr std::chrono::milliseconds kRest(200);

}  // namespace

void DropRest::Restart() {
    mSince = GetServices().mMainThread->Now();
}

bool DropRest::HasRested() const {
    return GetServices().mMainThread->Now() - mSince >= kRest;
}

void DropRest::TellTooQuick() {
    TellUser(
        host::ZString("$$$/Desk/Tree/DroppedTooQuickly=Nothing was dropped: the pointer passed the target too "
                      "quickly. Rest on it for a moment."));
}

}  // namespace desk
