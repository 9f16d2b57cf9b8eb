#pragma once

#include <vector>

#include "host/core/Export.h"
#include "host/project/OpenProjects.h"

namespace desk {

/// An open project as the host keeps it.
class ZUHOST_API OpenProject : public host::IProject {
public:
    /// True when the file on disk is newer than what was read.
    virtual bool IsOutOfDate() const = 0;
    /// Its path without any symbolic link, as `host::Utilities::GetRealProjectPath` says.
    virtual host::UTF16String GetRealPath() const { return GetProjectPath(); }
};

using OpenProjectRef = host::RefPtr<OpenProject>;

/// The open projects. Whoever opens and closes projects adds and removes them here; the messages of
/// `host/project/OpenProjects.h` are announced from here, after the list has changed. UI thread.
class ZUHOST_API OpenProjectList {
public:
    static OpenProjectList& Instance();
    void Add(OpenProjectRef project);
    void Remove(const OpenProjectRef& project);
    /// Announces that the project's read-only state, or what else its row shows, has changed.
    void AnnounceReadOnlyState(const OpenProjectRef& project);
    const std::vector<OpenProjectRef>& Get() const { return mProjects; }

private:
    std::vector<OpenProjectRef> mProjects;
};

}  // namespace desk
