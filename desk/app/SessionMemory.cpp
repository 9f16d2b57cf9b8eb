#include "desk/app/SessionMemory.h"

#include "desk/app/MainWindow.h"
#include "desk/core/Profile.h"
#include "host/files/PathUtils.h"

namespace desk {

SessionMemory::SessionMemory(const Profile& profile, MainWindow& window)
    : mLastSession(profile.Folder()),
      mCommands(window.Projects(), window.Productions(), mLastSession,
                [&window] { return window.IsClosing(); }),
      mTextKeeper(profile.PathOf(kTextsFolderName)),
      mRecovery(window, mTextKeeper) {}

OpenItems SessionMemory::FindItemsForStart(const std::string& folder) const {
    const OpenItems& items = mLastSession.Get();
    const bool isMeant =
        folder.empty() ||
        host::UTF16to8(host::PathUtils::ToNormalizedPath(host::UTF8to16(folder))) == items.mProduction;
    return mLastSession.ReopensAtStart() && isMeant ? items : OpenItems();
}

}  // namespace desk
