#pragma once

#include <chrono>
#include <string>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// The edge to the desktop around the program: who and where the user is, and the wall clock.
class ZUHOST_API Desktop {
public:
    virtual ~Desktop() = default;
    /// The user's name (login name, or the one given to the program).
    virtual host::UTF16String UserName() const = 0;
    virtual host::UTF16String MachineName() const = 0;
    /// Identifies the machine across restarts (machine-id(5)); empty when the system has none.
    virtual std::string MachineID() const = 0;
    /// Identifies the time since the machine was started (/proc/sys/kernel/random/boot_id).
    virtual std::string BootID() const = 0;
    virtual std::chrono::system_clock::time_point Now() const = 0;
};

}  // namespace desk
