#pragma once

#include <functional>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// A production's trash folder on the disk, whatever language its users speak: they share it.
inline constexpr char kTrashFolderName[] = "Trash";

/// The open production, of which there is one at most. Behind `host/project/SharedProjectsManager.h`.
/// UI thread.
class ZUHOST_API Production {
public:
    static Production& Instance();

    /// Opens the production in `folder` (normalised here), closing the open one first. Announces
    /// `ZuProductionFolderClosedMessage` and `ZuProductionFolderOpenedMessage`; only the latter for the
    /// production that is open already. Touches no disk: the caller has made sure that the folder can be read.
    void Open(const host::UTF16String& folder);
    void Close();
    bool IsOpen() const { return !mFolder.empty(); }
    const host::UTF16String& GetFolder() const { return mFolder; }

    /// Pauses and resumes the panel's updates, by the function that the panel installed. Calls nest.
    void PausePanelUpdates(bool pause);
    void SetPauseFunction(std::function<void(bool)> function) { mPauseFunction = std::move(function); }

private:
    host::UTF16String mFolder;
    int mPauses = 0;
    std::function<void(bool)> mPauseFunction;
};

/// While it lives, the panel's rows stay as they are. UI thread.
class ScPausePanelUpdates {
public:
    ScPausePanelUpdates() { Production::Instance().PausePanelUpdates(true); }
    ~ScPausePanelUpdates() { Production::Instance().PausePanelUpdates(false); }
    ScPausePanelUpdates(const ScPausePanelUpdates&) = delete;
    ScPausePanelUpdates& operator=(const ScPausePanelUpdates&) = delete;
};

}  // namespace desk
