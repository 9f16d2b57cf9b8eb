#pragma once

#include <map>
#include <optional>

#include "desk/project/document/ProjectDocument.h"
#include "desk/project/document/ProjectLooks.h"

namespace desk {

/// Notices that the file of an open project is no longer what was read from it: by what the folder store knows;
/// where it knows nothing, and to be sure, a worker looks at the file. Never waits for the volume. UI thread.
class OutOfDateWatch {
public:
    OutOfDateWatch();

private:
    ProjectLooks::Look PrepareLook(const ProjectDocumentRef& document, bool isAnnounced);
    bool IsWorthALook(const ProjectDocument& document) const;
    bool Note(const ProjectDocumentRef& document, const ProjectContentPtr& content,
              const std::optional<FileComparison>& found);

    /// By document: what a worker has found last that was not what had been read.
    std::map<const ProjectDocument*, ItemStatus> mDiffering;
    ProjectLooks mLooks;
};

}  // namespace desk
