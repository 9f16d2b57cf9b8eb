#include "host/project/OpenProjects.h"

#include <algorithm>

#include "desk/project/document/OpenProjectList.h"
#include "host/files/PathUtils.h"

namespace host {

using desk::OpenProjectList;

IProject::~IProject() = default;

std::vector<ProjectRef> GetOpenProjectList() {
    const auto& projects = OpenProjectList::Instance().Get();
    return {projects.begin(), projects.end()};
}

int OpenProjectCount() {
    return static_cast<int>(OpenProjectList::Instance().Get().size());
}

bool IsProjectOpen(const UTF16String& path) {
    ProjectRef project;
    return IsProjectOpen(path, project);
}

bool IsProjectOpen(const UTF16String& path, ProjectRef& project) {
    project.reset();
    const auto& projects = OpenProjectList::Instance().Get();
    if (projects.empty()) return false;
    const UTF16String normalized = PathUtils::ToNormalizedPath(path);
    const auto found = std::ranges::find_if(projects, [&](const auto& open) {
        return open->GetProjectPath() == normalized || open->GetRealPath() == normalized;
    });
    if (found == projects.end()) return false;
    project = *found;
    return true;
}

bool Utilities::IsProjectOutOfDate(const ProjectRef& project) {
    const auto* open = dynamic_cast<const desk::OpenProject*>(project.get());
    return open && open->IsOutOfDate();
}

UTF16String Utilities::GetRealProjectPath(const ProjectRef& project) {
    if (const auto* open = dynamic_cast<const desk::OpenProject*>(project.get())) return open->GetRealPath();
    return project ? project->GetProjectPath() : UTF16String();
}

ProjectOpenedMessage::ProjectOpenedMessage(ProjectRef project) : mProject(std::move(project)) {}
ProjectOpenedMessage::~ProjectOpenedMessage() = default;

ProjectClosedMessage::ProjectClosedMessage(ProjectRef project) : mProject(std::move(project)) {}
ProjectClosedMessage::~ProjectClosedMessage() = default;

ReadOnlyStateChangedMessage::ReadOnlyStateChangedMessage(ProjectRef project, bool readOnly)
    : mProject(std::move(project)), mReadOnly(readOnly) {}
ReadOnlyStateChangedMessage::~ReadOnlyStateChangedMessage() = default;

}  // namespace host
