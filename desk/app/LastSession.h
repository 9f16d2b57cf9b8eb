#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "desk/core/names/LockRecord.h"
#include "desk/core/work/Lifetime.h"
#include "desk/core/work/OrderedTasks.h"

namespace desk {

/// What a window has open. Paths are bytes.
struct OpenItems {
    /// The production's folder; empty when none is open.
    std::string mProduction;
    /// In the order of their tabs.
    std::vector<std::string> mProjects;
    /// The one in front, an index.
    std::size_t mActive = 0;

    friend bool operator==(const OpenItems&, const OpenItems&) = default;
};

/// What was open when a session of the program ended, however it ended, for the next one: each session keeps a
/// record in the folder "Sessions" of the profile from its first open project on, and writes it when something
/// changes. A session without any project leaves none, and changes nothing. Records of programs that are
/// running are nobody else's. UI thread.
class LastSession {
public:
    static constexpr const char* kFolderName = "Sessions";
    static constexpr const char* kSettingsName = "Session Settings.json";

    /// Reads what the sessions before have left in the profile at `profile` (bytes). What cannot be understood
    /// is logged, and stays. May wait for the disk of the profile.
    explicit LastSession(const std::string& profile);

    /// What the session that has ended last left; without projects when there is none.
    const OpenItems& Get() const;
    /// All of it is open again: from now on `Get` is what the one before has left.
    void Forget();

    /// What is open now; written by a worker within a second.
    void Update(OpenItems items);
    /// The program ends in order: what was told last stays for the next session, and what earlier ones had left
    /// goes, if this one had projects. May wait for the disk of the profile.
    void End();

    /// Whether the user wants to have all open again when the program starts.
    bool ReopensAtStart() const { return mReopensAtStart; }
    void SetReopensAtStart(bool reopens);

private:
    struct Ended {
        std::string mPath;
        std::int64_t mTime = 0;
        OpenItems mItems;
    };

    void ReadSettings();
    void ReadEnded();
    void RemoveEnded();
    void WriteSoon();
    void Write();

    std::string mFolder;
    std::string mSettingsPath;
    std::string mPath;
    LockRecord mOwner;
    /// The last one first.
    std::vector<Ended> mEnded;
    OpenItems mItems;
    bool mHadProjects = false;
    bool mReopensAtStart = false;
    bool mMayWriteSettings = true;
    OrderedTasks mTasks;
    Lifetime mLifetime;
    bool mIsWriteDue = false;
};

}  // namespace desk
