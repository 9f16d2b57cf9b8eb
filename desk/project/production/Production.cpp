#include "desk/project/production/Production.h"

#include <utility>

#include "host/core/Messaging.h"
#include "host/files/PathUtils.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {

Production& Production::Instance() {
    static Production sProduction;
    return sProduction;
}

void Production::Open(const host::UTF16String& folder) {
    const host::UTF16String normalized = host::PathUtils::ToNormalizedPath(folder);
    if (normalized != mFolder) Close();
    mFolder = normalized;
    if (IsOpen())
        host::BroadcastMessage(host::kStation_ZuProductionFolderPanel,
                               host::ZuProductionFolderOpenedMessage({}));
}

void Production::Close() {
    if (!IsOpen()) return;
    const host::UTF16String folder = std::exchange(mFolder, {});
    host::BroadcastMessage(host::kStation_ZuProductionFolderPanel,
                           host::ZuProductionFolderClosedMessage(folder));
}

void Production::PausePanelUpdates(bool pause) {
    const bool wasPaused = mPauses > 0;
    mPauses += pause ? 1 : -1;
    if (mPauseFunction && wasPaused != (mPauses > 0)) mPauseFunction(pause);
}

}  // namespace desk
