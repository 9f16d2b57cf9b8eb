// Commands on projects: opening, closing, refreshing, saving, and who may write.
#include <algorithm>
#include <vector>

#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/DocumentManager.h"
#include "host/project/OpenProjects.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects {

namespace {

using ProjectVec = std::vector<ProjectRef>;

/// The open projects of the production, those too that were opened through a link from elsewhere.
ProjectVec GetOpenProjectsOfProduction() {
    ProjectVec projects = GetOpenProjectList();
    std::erase_if(projects, [](const ProjectRef& project) {
        return !IsWithinCurrentZuProductionFolder(project->GetProjectPath()) &&
               !IsWithinCurrentZuProductionFolder(Utilities::GetRealProjectPath(project));
    });
    return projects;
}

bool IsAnyOpen(const UTF16StringVec& paths) {
    return OpenProjectCount() > 0 &&
           std::ranges::any_of(paths, [](const UTF16String& path) { return IsProjectOpen(path); });
}

/// The projects that are open among `paths`, in their order.
ProjectVec FindOpenAmong(const UTF16StringVec& paths) {
    ProjectVec projects;
    ProjectRef project;
    for (const UTF16String& path : paths)
        if (IsProjectOpen(path, project) && !PathUtils::IsDirectory(path)) projects.push_back(project);
    return projects;
}

/// What Toggle Lock would find; of read-only projects that somebody else has locked none can be switched.
enum class ToggleLockState { Disabled, LockedReadOnly, ReadOnly, Writable };

ToggleLockState GetToggleLockState(const UTF16StringVec& paths) {
    if (!DocumentManager::Instance() || paths.empty()) return ToggleLockState::Disabled;
    bool isAnyLocked = false;
    std::optional<bool> isReadOnly;
    for (const UTF16String& path : paths) {
        ProjectRef project;
        if (!IsProjectOpen(path, project)) return ToggleLockState::Disabled;
        if (isReadOnly.value_or(project->IsReadOnly()) != project->IsReadOnly())
            return ToggleLockState::Disabled;
        isReadOnly = project->IsReadOnly();
        isAnyLocked |= Utils::IsALockedProject(path);
    }
    if (!*isReadOnly) return ToggleLockState::Writable;
    return isAnyLocked ? ToggleLockState::LockedReadOnly : ToggleLockState::ReadOnly;
}

}  // namespace

bool SharedProjectsTabView::OnOpenProjectCommandStatus(bool& enabled) const {
    enabled =
        DocumentManager::Instance() && std::ranges::any_of(GetKnownSelection(), [](const UTF16String& path) {
            return !PathUtils::IsDirectory(path) && !IsProjectOpen(path);
        });
    return true;
}

bool SharedProjectsTabView::OnOpenProjectCommand(const Command&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    for (const UTF16String& path : GetSelectedPaths())
        if (!PathUtils::IsDirectory(path)) documents->OpenProject(path);
    return true;
}

bool SharedProjectsTabView::OnCloseProjectCommandStatus(bool& enabled) const {
    enabled = DocumentManager::Instance() && IsAnyOpen(GetKnownSelection());
    return true;
}

bool SharedProjectsTabView::OnCloseProjectCommand(const Command&) {
    Utils::CloseOpenProjectsInList(GetSelectedPaths(), false, true);
    return true;
}

bool SharedProjectsTabView::OnCloseAllOtherProjectsCommandStatus(bool& enabled) const {
    enabled = DocumentManager::Instance() && OpenProjectCount() > 1 && IsAnyOpen(GetKnownSelection());
    return true;
}

bool SharedProjectsTabView::OnCloseAllOtherProjectsCommand(const Command&) {
    Utils::CloseOpenProjectsNotInList(GetSelectedPaths(), false, true);
    return true;
}

bool SharedProjectsTabView::OnCloseAllProjectsCommandStatus(bool& enabled) const {
    enabled = !GetOpenProjectsOfProduction().empty();
    return true;
}

bool SharedProjectsTabView::OnCloseAllProjectsCommand(const Command&) {
    if (DocumentManager* documents = DocumentManager::Instance()) documents->CloseAllProjects();
    return true;
}

bool SharedProjectsTabView::OnRefreshProjectCommandStatus(bool& enabled) const {
    enabled = DocumentManager::Instance() && OpenProjectCount() > 0 &&
              std::ranges::any_of(GetKnownSelection(), Utils::IsRefreshable);
    return true;
}

bool SharedProjectsTabView::OnRefreshProjectCommand(const Command&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    // Reading any other project anew could only lose what was changed in it.
    for (const ProjectRef& project : FindOpenAmong(GetSelectedPaths()))
        if (Utils::IsRefreshable(project->GetProjectPath())) documents->ReloadProject(project);
    return true;
}

bool SharedProjectsTabView::OnRefreshAllProjectsCommandStatus(bool& enabled) const {
    enabled = std::ranges::any_of(GetOpenProjectsOfProduction(), [](const ProjectRef& project) {
        return project->IsReadOnly() && Utilities::IsProjectOutOfDate(project);
    });
    return true;
}

bool SharedProjectsTabView::OnRefreshAllProjectsCommand(const Command&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    const ProjectRef active = GetActiveProject();
    for (const ProjectRef& project : GetOpenProjectsOfProduction())
        if (Utilities::IsProjectOutOfDate(project)) documents->ReloadProject(project);
    SetActiveProject(active);
    return true;
}

bool SharedProjectsTabView::OnSaveAllProjectsCommandStatus(bool& enabled) const {
    const ProjectVec projects = GetOpenProjectsOfProduction();
    enabled = !std::ranges::all_of(projects, [](const ProjectRef& project) { return project->IsReadOnly(); });
    return true;
}

bool SharedProjectsTabView::OnSaveAllProjectsCommand(const Command&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    // Read-only ones too: one that lost its lock may have changes, and only this tells that they are not saved.
    for (const ProjectRef& project : GetOpenProjectsOfProduction()) documents->SaveProject(project);
    return true;
}

bool SharedProjectsTabView::OnToggleLockCommandStatus(bool& enabled) const {
    const ToggleLockState state = GetToggleLockState(GetKnownSelection());
    enabled = state == ToggleLockState::ReadOnly || state == ToggleLockState::Writable;
    return true;
}

UTF16String SharedProjectsTabView::GetToggleLockCommandText() const {
    const ToggleLockState state = GetToggleLockState(GetKnownSelection());
    if (state == ToggleLockState::Disabled) return {};
    return Localizer::Get()->Localize(
        state == ToggleLockState::Writable
            ? "$$$/Vantor/Handlers/ZuProductionFolder/ProjectContextMenu/ReadOnlyMode=Read-Only Mode"
            : "$$$/Vantor/Handlers/ZuProductionFolder/ProjectContextMenu/ReadWriteMode=Read-Write Mode");
}

bool SharedProjectsTabView::OnToggleLockCommand(const Command&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    for (const ProjectRef& project : FindOpenAmong(GetSelectedPaths()))
        documents->SetProjectReadOnly(project, !project->IsReadOnly());
    return true;
}

}  // namespace HandlerSharedProjects
