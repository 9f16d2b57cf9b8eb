#pragma once

#include <string>

#include "desk/app/LastSession.h"
#include "desk/app/RecoveryOffer.h"
#include "desk/app/SessionCommands.h"
#include "desk/project/document/TextKeeper.h"

namespace desk {

class MainWindow;
class Profile;

/// What a session of the program leaves for the next one, and finds of earlier ones: what was open, and text
/// that was not saved. To be destroyed before the window and the document manager (`TextKeeper`). UI thread.
class SessionMemory {
public:
    /// The folder of the profile in which unsaved text is kept.
    static constexpr const char* kTextsFolderName = "Unsaved Text";

    /// `window` outlives it. May wait for the disk of the profile.
    SessionMemory(const Profile& profile, MainWindow& window);

    /// What the program is to begin with when it is started with the production `folder` (empty: with none in
    /// particular); without projects when the user does not want that.
    OpenItems FindItemsForStart(const std::string& folder) const;
    /// Offers the text that programs have left which did not come to their end.
    void OfferUnsavedText() { mRecovery.OfferAtStart(); }
    void ReopenProjects() { mCommands.OpenProjects(); }
    /// The program ends in order.
    void End() { mLastSession.End(); }

private:
    LastSession mLastSession;
    SessionCommands mCommands;
    TextKeeper mTextKeeper;
    RecoveryOffer mRecovery;
};

}  // namespace desk
