#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// The edge to the desktop around the program: who and where the user is, the wall clock, and the file browser.
class ZUHOST_API Desktop {
public:
    virtual ~Desktop() = default;
    /// The user's name (login name, or the one given to the program).
    virtual host::UTF16String UserName() const = 0;
    virtual host::UTF16String MachineName() const = 0;
    /// Identifies the machine, across restarts where the system has an ID (machine-id(5)), else until the next
    /// one; empty when even that is not known.
    virtual std::string MachineID() const = 0;
    /// Identifies the time since the machine was started (/proc/sys/kernel/random/boot_id).
    virtual std::string BootID() const = 0;
    virtual std::chrono::system_clock::time_point Now() const = 0;

    enum class Reveal {
        /// The items are selected in the folders that hold them.
        Items,
        /// The folders themselves are opened.
        Folders,
    };
    /// Told of a folder (bytes) that no file browser could be opened for; the log says why.
    using RevealFailed = std::function<void(const std::string& folder)>;
    /// Shows `paths` (bytes, absolute) in the system's file browser. Returns at once and waits for nobody;
    /// `failed` is called later, on the UI thread. UI thread.
    virtual void ShowInFileBrowser(const std::vector<std::string>& paths, Reveal reveal,
                                   RevealFailed failed) = 0;
};

}  // namespace desk
