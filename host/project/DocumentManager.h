#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/project/OpenProjects.h"

namespace host {

/// Opens, makes, saves and closes projects, with the questions that this takes. What goes wrong is told to the
/// user before an operation returns; nothing throws. All may wait for the volume and for the user; events go on
/// being handled meanwhile. UI thread.
class ZUHOST_API DocumentManager {
public:
    /// Null while the host has no place for open projects.
    static DocumentManager* Instance();

    virtual ~DocumentManager();

    /// Makes an empty project in `folder`, under a free name made from "Untitled". Returns its path; empty when
    /// it could not be made. It is not opened.
    virtual UTF16String CreateProject(const UTF16String& folder) = 0;

    /// Opens the project at `path`, or brings it to the front when it is open. Takes its lock; when somebody
    /// else holds it, the user chooses to open it read-only, to open a copy, or not at all. False when neither
    /// it nor a copy is open afterwards; then no lock file is left. A symbolic link to a project is that
    /// project: it needs the locks of both, is saved through, and is not opened a second time. Nothing is
    /// opened from the production's trash; the status bar says so.
    virtual bool OpenProject(const UTF16String& path) = 0;

    /// Writes the project to its file, whole or not at all, once its lock has been read again. Where that
    /// cannot be (it is read-only, its lock was lost, the file is not what was read from it), the user is
    /// asked, and may save a copy, which is then open in the project's place. False when the file was not
    /// written; without a copy the project is then as it was, and still has its unsaved changes. True for a
    /// project without any.
    virtual bool SaveProject(const ProjectRef& project) = 0;

    /// Closes the project. With `prompt`, unsaved changes are asked about: save, discard, cancel. Without it
    /// they are dropped. False when the project stays open: the user cancelled, it could not be saved, or
    /// another operation on it is under way.
    virtual bool CloseProject(const ProjectRef& project, bool prompt) = 0;

    /// Closes all open projects with the same questions, which all come first. Closes none, and returns false,
    /// when one is to stay open; what has been saved by then is saved, and what was to be discarded stays
    /// unsaved. What is changed or opened while a question is open is asked about as well.
    virtual bool CloseAllProjects() = 0;

    /// Reads the project from its file again. Unsaved changes are asked about first. False when nothing was
    /// read.
    virtual bool ReloadProject(const ProjectRef& project) = 0;

    /// Switches the project between read-only (gives its lock up; unsaved changes are asked about first) and
    /// read-write (takes the lock; refused, with its name, when somebody else holds it, and when the file has
    /// changed since it was read, which is then to be reloaded first). True when it is in the wanted state.
    virtual bool SetProjectReadOnly(const ProjectRef& project, bool readOnly) = 0;

    /// The project whose tab is in front; empty when none is open.
    virtual ProjectRef GetActiveProject() const = 0;
    /// Brings the project's tab to the front.
    virtual void SetActiveProject(const ProjectRef& project) = 0;
};

/// The project whose tab is in front; empty when there is none. UI thread.
ZUHOST_API ProjectRef GetActiveProject();
/// Brings the project's tab to the front; nothing for an empty reference. UI thread.
ZUHOST_API void SetActiveProject(const ProjectRef& project);

/// While one lives, the prompts to save changes offer to apply the answer to all that follow. UI thread.
class ZUHOST_API ScEnableSaveApplyToAllOption {
public:
    ScEnableSaveApplyToAllOption();
    ~ScEnableSaveApplyToAllOption();
    ScEnableSaveApplyToAllOption(const ScEnableSaveApplyToAllOption&) = delete;
    ScEnableSaveApplyToAllOption& operator=(const ScEnableSaveApplyToAllOption&) = delete;
};

}  // namespace host
