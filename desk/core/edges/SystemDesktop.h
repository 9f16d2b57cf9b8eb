#pragma once

#include "desk/core/edges/Desktop.h"

namespace desk {

/// The real edge to the desktop: the system's user, machine and clock, and its file browser. What cannot change
/// while the process lives is read once, when it is made. Any thread where nothing else is said.
class ZUHOST_API SystemDesktop : public Desktop {
public:
    /// `userName` takes the place of the login name when it is not empty.
    explicit SystemDesktop(const host::UTF16String& userName = {});

    host::UTF16String UserName() const override { return mUserName; }
    host::UTF16String MachineName() const override { return mMachineName; }
    std::string MachineID() const override { return mMachineID; }
    std::string BootID() const override { return mBootID; }
    std::chrono::system_clock::time_point Now() const override { return std::chrono::system_clock::now(); }
    void ShowInFileBrowser(const std::vector<std::string>& paths, Reveal reveal, RevealFailed failed) override;

private:
    host::UTF16String mUserName;
    host::UTF16String mMachineName;
    std::string mBootID;
    std::string mMachineID;
};

}  // namespace desk
