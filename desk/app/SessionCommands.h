#pragma once

#include <functional>
#include <memory>

#include "desk/app/LastSession.h"
#include "desk/core/work/Lifetime.h"
#include "host/core/Messaging.h"

namespace desk {

class ProductionCommands;
class ProjectArea;

/// Follows what the window has open, for the next session, and has the commands of the File menu that bring
/// back what the last one had: Reopen Last Session, and whether that happens by itself at the start. UI thread.
class SessionCommands : public host::Listener {
public:
    /// True while the program ends, which closes all that the next session is to have again.
    using IsClosing = std::function<bool()>;

    /// What is given outlives the commands.
    SessionCommands(ProjectArea& projects, ProductionCommands& productions, LastSession& session,
                    IsClosing isClosing);
    /// Gives the commands up.
    ~SessionCommands() override;

    /// Opens the projects of the last session, in the order of their tabs, and brings the one to the front that
    /// was there. Nothing is asked; what is held by somebody else is opened read-only, and one message names
    /// what is not open as it was, and why.
    void OpenProjects();

    void ListenToMessage(const host::Message& message) override;

private:
    void Reopen();
    void ItemsChanged();

    ProjectArea& mProjects;
    ProductionCommands& mProductions;
    LastSession& mSession;
    IsClosing mIsClosing;
    Lifetime mLifetime;
};

}  // namespace desk
