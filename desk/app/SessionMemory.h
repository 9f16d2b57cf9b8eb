#pragma once

#include <string>

#include "desk/app/LastSession.h"
#include "desk/app/SessionCommands.h"

namespace desk {

class MainWindow;
class Profile;

/// What a session of the program leaves for the next one, and finds of earlier ones. UI thread.
class SessionMemory {
public:
    /// `window` outlives it. May wait for the disk of the profile.
    SessionMemory(const Profile& profile, MainWindow& window);

    /// What the program is to begin with when it is started with the production `folder` (empty: with none in
    /// particular); without projects when the user does not want that.
    OpenItems FindItemsForStart(const std::string& folder) const;
    void ReopenProjects() { mCommands.OpenProjects(); }
    /// The program ends in order.
    void End() { mLastSession.End(); }

private:
    LastSession mLastSession;
    SessionCommands mCommands;
};

}  // namespace desk
