#include "desk/project/document/OpenProjectList.h"

#include <algorithm>

namespace desk {

OpenProjectList& OpenProjectList::Instance() {
    static OpenProjectList sList;
    return sList;
}

void OpenProjectList::Add(OpenProjectRef project) {
    if (std::find(mProjects.begin(), mProjects.end(), project) != mProjects.end()) return;
    mProjects.push_back(project);
    host::BroadcastMessage(host::kBackendProjectActivationStationID, host::ProjectOpenedMessage(project));
}

void OpenProjectList::Remove(const OpenProjectRef& project) {
    auto found = std::find(mProjects.begin(), mProjects.end(), project);
    if (found == mProjects.end()) return;
    const OpenProjectRef removed = *found;  // `project` may be the list's own reference
    mProjects.erase(found);
    host::BroadcastMessage(host::kBackendProjectActivationStationID, host::ProjectClosedMessage(removed));
}

void OpenProjectList::AnnounceReadOnlyState(const OpenProjectRef& project) {
    host::BroadcastMessage(host::kBackendProjectActivationStationID,
                           host::ReadOnlyStateChangedMessage(project, project->IsReadOnly()));
}

}  // namespace desk
