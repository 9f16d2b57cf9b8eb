#pragma once

#include <functional>
#include <string>

#include "host/core/Export.h"
#include "host/core/Messaging.h"
#include "host/core/Strings.h"

namespace host {

/// True while a production is open. UI thread.
ZUHOST_API bool IsSharedProjectsManagerActive();

/// The folder of the open production, normalised; empty when none is open. UI thread.
ZUHOST_API UTF16String GetSharedProjectsManagerFolderPath();

/// True when `path` lies inside the folder of the open production (the folder itself does not).
/// Judges the normalised path only. UI thread.
ZUHOST_API bool IsWithinCurrentZuProductionFolder(const UTF16String& path);

/// Installs the function by which the host pauses (true) and resumes (false) the panel's directory updates
/// around its own work in the production: while items move, or are copied by `CopyItems`, the panel's rows stay
/// as they are, and change in one step after that. Calls do not nest. An empty function takes it away. UI
/// thread.
ZUHOST_API void SetSharedProjectsNotifyPauseFn(std::function<void(bool pause)> fn);

/// The category of the production's usage events. Any thread.
ZUHOST_API const std::string& GetZuProductionLoggingCategory();

/// A production has been opened. Announced on `kStation_ZuProductionFolderPanel`, after
/// `GetSharedProjectsManagerFolderPath` has begun to answer its folder.
class ZUHOST_API ZuProductionFolderOpenedMessage : public MessageTemplate<ZuProductionFolderOpenedMessage> {
public:
    /// `path`: an item of the production whose row is to be renamed as soon as it shows; mostly empty.
    explicit ZuProductionFolderOpenedMessage(UTF16String path);
    ~ZuProductionFolderOpenedMessage() override;
    const UTF16String& GetPath() const { return mPath; }

private:
    UTF16String mPath;
};

/// A production has been closed. Announced on `kStation_ZuProductionFolderPanel`, after
/// `GetSharedProjectsManagerFolderPath` has begun to answer empty.
class ZUHOST_API ZuProductionFolderClosedMessage : public MessageTemplate<ZuProductionFolderClosedMessage> {
public:
    /// `path`: the folder of the production that was closed.
    explicit ZuProductionFolderClosedMessage(UTF16String path);
    ~ZuProductionFolderClosedMessage() override;
    const UTF16String& GetPath() const { return mPath; }

private:
    UTF16String mPath;
};

inline const StationID kStation_ZuProductionFolderPanel{"qrt.zuproductionfolderpanel"};

}  // namespace host
