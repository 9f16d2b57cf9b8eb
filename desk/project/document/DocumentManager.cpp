#include "host/project/DocumentManager.h"

#include "desk/project/document/LockWatch.h"
#include "desk/project/document/OutOfDateWatch.h"
#include "desk/project/document/ProjectDocuments.h"

namespace host {

DocumentManager::~DocumentManager() = default;

DocumentManager* DocumentManager::Instance() {
    return desk::ProjectDocuments::Instance();
}

ProjectRef GetActiveProject() {
    const DocumentManager* manager = DocumentManager::Instance();
    return manager ? manager->GetActiveProject() : ProjectRef();
}

void SetActiveProject(const ProjectRef& project) {
    if (DocumentManager* manager = DocumentManager::Instance(); manager && project)
        manager->SetActiveProject(project);
}

ScEnableSaveApplyToAllOption::ScEnableSaveApplyToAllOption() {
    desk::ProjectDocuments::CountApplyToAllScope(1);
}

ScEnableSaveApplyToAllOption::~ScEnableSaveApplyToAllOption() {
    desk::ProjectDocuments::CountApplyToAllScope(-1);
}

}  // namespace host
