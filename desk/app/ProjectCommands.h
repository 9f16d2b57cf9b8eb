#pragma once

#include "desk/project/ProjectDocument.h"

namespace desk {

class ProjectArea;

/// The commands on open projects: those of the File menu and of the tabs. UI thread.
class ProjectCommands {
public:
    /// `area` outlives the commands.
    explicit ProjectCommands(const ProjectArea& area);
    /// Gives the commands up.
    ~ProjectCommands();

private:
    ProjectDocumentRef Active() const;
    void Open() const;
    void CloseOthers() const;
    void ToggleReadOnly() const;
    /// The project whose lock is to be broken: the one in front while the keyboard is in it, else the one that
    /// is selected in the production, if somebody else has locked it, else the one in front; empty for none.
    host::UTF16String FindLockedProject() const;
    void BreakLock() const;

    const ProjectArea& mArea;
};

}  // namespace desk
