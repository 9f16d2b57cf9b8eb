#pragma once

#include "desk/project/document/ProjectDocument.h"

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
    void AddFileCommands();
    void AddCloseCommands();
    void AddLockCommands();
    ProjectDocumentRef Active() const;
    void Open() const;
    bool MayMoveToTrash() const;
    void CloseOthers() const;
    void ToggleReadOnly() const;
    /// The project whose lock is to be broken: what is selected in the production or, while the keyboard is in
    /// the project in front or nothing is selected, that one. Empty unless it is a single project of which it
    /// is known that somebody else holds it. Touches no disk.
    host::UTF16String FindLockedProject() const;
    void BreakLock() const;

    const ProjectArea& mArea;
};

}  // namespace desk
