#pragma once

#include <vector>

#include "host/core/Export.h"
#include "host/core/Messaging.h"
#include "host/core/RefCounted.h"
#include "host/core/Strings.h"
#include "host/project/ProjectLockFile.h"

namespace host {

/// An open project. UI thread.
class ZUHOST_API IProject : public RefCounted {
public:
    ~IProject() override;
    /// The project's document path, normalised.
    virtual UTF16String GetProjectPath() const = 0;
    /// The project's file has moved to `path` (normalised). Touches no disk.
    virtual void SetProjectPath(const UTF16String& path) = 0;
    /// True when the project has unsaved changes.
    virtual bool IsDirty() const = 0;
    /// The project holds `lockFile` from now on, in place of the lock that it held.
    virtual void SetProjectLockFile(const ProjectLockFileRef& lockFile) = 0;
    /// True when the project is open without holding its lock.
    virtual bool IsReadOnly() const = 0;
};

using ProjectRef = RefPtr<IProject>;

/// The open projects, in the order in which they were opened. UI thread.
ZUHOST_API std::vector<ProjectRef> GetOpenProjectList();
ZUHOST_API int OpenProjectCount();

/// True when the project at `path` (compared normalised) is open, under this name or as the file that it really
/// is
/// (`Utilities::GetRealProjectPath`). Never waits for the volume. UI thread.
ZUHOST_API bool IsProjectOpen(const UTF16String& path);
/// The same; `project` becomes the open project, or empty. UI thread.
ZUHOST_API bool IsProjectOpen(const UTF16String& path, ProjectRef& project);

namespace Utilities {
/// True when the project's file on disk is newer than what was read from it. From what the host last
/// heard of the file; never waits for the volume. UI thread.
ZUHOST_API bool IsProjectOutOfDate(const ProjectRef& project);
/// The path of the project's file without any symbolic link, normalised: another name than the project's path
/// when it was opened through a link. As it was found when the project was opened, and as it has moved since;
/// never waits for the volume. UI thread.
ZUHOST_API UTF16String GetRealProjectPath(const ProjectRef& project);
}  // namespace Utilities

/// The station on which the three messages below are announced.
inline const StationID kBackendProjectActivationStationID{"host.backend.projectactivation"};

class ZUHOST_API ProjectOpenedMessage : public MessageTemplate<ProjectOpenedMessage> {
public:
    explicit ProjectOpenedMessage(ProjectRef project);
    ~ProjectOpenedMessage() override;
    const ProjectRef& GetProject() const { return mProject; }

private:
    ProjectRef mProject;
};

/// Announced after the project has left the list of open projects.
class ZUHOST_API ProjectClosedMessage : public MessageTemplate<ProjectClosedMessage> {
public:
    explicit ProjectClosedMessage(ProjectRef project);
    ~ProjectClosedMessage() override;
    const ProjectRef& GetProject() const { return mProject; }

private:
    ProjectRef mProject;
};

/// What a project's row shows may have changed: read-only, out of date, unsaved changes, its path.
class ZUHOST_API ReadOnlyStateChangedMessage : public MessageTemplate<ReadOnlyStateChangedMessage> {
public:
    ReadOnlyStateChangedMessage(ProjectRef project, bool readOnly);
    ~ReadOnlyStateChangedMessage() override;
    const ProjectRef& GetProject() const { return mProject; }
    bool IsReadOnly() const { return mReadOnly; }

private:
    ProjectRef mProject;
    bool mReadOnly;
};

}  // namespace host
