#include "desk/app/SessionMemory.h"

#include "desk/app/MainWindow.h"
#include "desk/core/edges/Services.h"
#include "desk/core/settings/Profile.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/project/document/ProfileLeftovers.h"
#include "host/files/PathUtils.h"

namespace desk {

SessionMemory::SessionMemory(const Profile& profile, MainWindow& window)
    : mLastSession(profile.Folder()),
      mCommands(window.Projects(), window.Productions(), mLastSession,
                [&window] { return window.IsClosing(); }),
      mTextKeeper(profile.PathOf(kTextsFolderName)),
      mRecovery(window, mTextKeeper) {
    const std::string sessions = profile.PathOf(LastSession::kFolderName);
    for (const std::string& folder : {profile.Folder(), sessions})
        GetServices().mWorkerPool->Submit([folder] { SweepUnfinishedSaves(folder); });
}

OpenItems SessionMemory::FindItemsForStart(const std::string& folder) const {
    const OpenItems& items = mLastSession.Get();
    const bool isMeant =
        folder.empty() ||
        host::UTF16to8(host::PathUtils::ToNormalizedPath(host::UTF8to16(folder))) == items.mProduction;
    return mLastSession.ReopensAtStart() && isMeant ? items : OpenItems();
}

}  // namespace desk
