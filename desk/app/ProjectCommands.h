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
    void BreakLock() const;

    const ProjectArea& mArea;
};

}  // namespace desk
