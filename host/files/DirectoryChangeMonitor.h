#pragma once

#include "host/core/Export.h"
#include "host/core/Messaging.h"
#include "host/core/Strings.h"

namespace host {

/// Watches folders for changes made by anybody. A change is announced on `kStation_DirectoryChanges`,
/// on the UI thread: the first at once, those that follow in batches, one message a folder.
class ZUHOST_API DirectoryChangeMonitor {
public:
    /// Begins to watch `path` and, with `recursive`, the folders below it as they come to be listed.
    /// With `allowPolling`, folders that cannot be watched (see `DoesPathRequirePolling`, and when the
    /// system's watch limit is reached) are polled instead. Each call is undone by one
    /// `StopMonitoringDirectory`. Never waits for the volume. UI thread.
    static void MonitorDirectory(const UTF16String& path, bool recursive, bool allowPolling);

    /// Ends one `MonitorDirectory` of `path`; unknown paths are ignored. UI thread.
    static void StopMonitoringDirectory(const UTF16String& path, bool recursive);

    /// True when the volume of `path` does not report changes made elsewhere (network and FUSE file
    /// systems, by the type that statfs(2) gives), so that it has to be polled. True also when that
    /// cannot be told. May wait for the volume. Any thread.
    static bool DoesPathRequirePolling(const UTF16String& path);
};

/// The content of a folder has changed.
class ZUHOST_API DirectoryChangedMessage : public MessageTemplate<DirectoryChangedMessage> {
public:
    explicit DirectoryChangedMessage(UTF16String path);
    ~DirectoryChangedMessage() override;
    const UTF16String& GetPath() const { return mPath; }

private:
    UTF16String mPath;
};

inline const StationID kStation_DirectoryChanges{"host.directorychanges"};

}  // namespace host
