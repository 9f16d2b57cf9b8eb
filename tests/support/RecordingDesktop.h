#pragma once

#include <utility>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"

/// A desktop whose user, machine and clock the test sets. It is the process's `desk::Desktop` while it exists.
/// Set before workers run.
class RecordingDesktop : public desk::Desktop {
public:
    RecordingDesktop() : mBefore(std::exchange(desk::GetServices().mDesktop, this)) {}
    ~RecordingDesktop() override { desk::GetServices().mDesktop = mBefore; }

    host::UTF16String UserName() const override { return mUserName; }
    host::UTF16String MachineName() const override { return mMachineName; }
    std::string MachineID() const override { return mMachineID; }
    std::string BootID() const override { return mBootID; }
    std::chrono::system_clock::time_point Now() const override { return mNow; }
    void ShowInFileBrowser(const std::vector<std::string>& paths, Reveal reveal, RevealFailed failed) override {
        mShown.push_back(reveal == Reveal::Folders ? "folders" : "items");
        mShown.insert(mShown.end(), paths.begin(), paths.end());
        if (!mRevealFailedFor.empty()) failed(mRevealFailedFor);
    }

    host::UTF16String mUserName = u"ines", mMachineName = u"edit-bay-1";
    std::string mMachineID = "0123456789abcdef0123456789abcdef";
    std::string mBootID = "11111111-2222-3333-4444-555555555555";
    /// 2026-03-02T09:30:00Z.
    std::chrono::system_clock::time_point mNow{std::chrono::seconds(1772443800)};
    /// What was shown in the file browser: "items" or "folders", then the paths.
    std::vector<std::string> mShown;
    /// The folder that is told to have no file browser; empty when there is one.
    std::string mRevealFailedFor;

private:
    desk::Desktop* mBefore;
};
