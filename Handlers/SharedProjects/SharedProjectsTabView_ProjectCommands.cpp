// Commands on projects: opening, closing, refreshing, saving, and who may write.
#include <algorithm>
#include <vector>

#include "Handlers/SharedProjects/SharedProjectsCommands.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/framework/CommandIdentifiers.h"
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

CommandStatus OnOpenProjectCommandStatus(const SharedProjectsTabView& panel) {
    return DocumentManager::Instance() &&
           std::ranges::any_of(panel.GetKnownSelection(), [](const UTF16String& path) {
               return !PathUtils::IsDirectory(path) && !IsProjectOpen(path);
           });
}

bool OnOpenProjectCommand(SharedProjectsTabView& panel) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    for (const UTF16String& path : panel.GetSelectedPaths())
        if (!PathUtils::IsDirectory(path)) documents->OpenProject(path);
    return true;
}

CommandStatus OnCloseProjectCommandStatus(const SharedProjectsTabView& panel) {
    return DocumentManager::Instance() && IsAnyOpen(panel.GetKnownSelection());
}

bool OnCloseProjectCommand(SharedProjectsTabView& panel) {
    Utils::CloseOpenProjectsInList(panel.GetSelectedPaths(), false, true);
    return true;
}

CommandStatus OnCloseAllOtherProjectsCommandStatus(const SharedProjectsTabView& panel) {
    return DocumentManager::Instance() && OpenProjectCount() > 1 && IsAnyOpen(panel.GetKnownSelection());
}

bool OnCloseAllOtherProjectsCommand(SharedProjectsTabView& panel) {
    Utils::CloseOpenProjectsNotInList(panel.GetSelectedPaths(), false, true);
    return true;
}

CommandStatus OnCloseAllProjectsCommandStatus(const SharedProjectsTabView&) {
    return !GetOpenProjectsOfProduction().empty();
}

bool OnCloseAllProjectsCommand(SharedProjectsTabView&) {
    if (DocumentManager* documents = DocumentManager::Instance()) documents->CloseAllProjects();
    return true;
}

CommandStatus OnRefreshProjectCommandStatus(const SharedProjectsTabView& panel) {
    return DocumentManager::Instance() && OpenProjectCount() > 0 &&
           std::ranges::any_of(panel.GetKnownSelection(), Utils::IsRefreshable);
}

bool OnRefreshProjectCommand(SharedProjectsTabView& panel) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    // Reading any other project anew could only lose what was changed in it.
    for (const ProjectRef& project : FindOpenAmong(panel.GetSelectedPaths()))
        if (Utils::IsRefreshable(project->GetProjectPath())) documents->ReloadProject(project);
    return true;
}

CommandStatus OnRefreshAllProjectsCommandStatus(const SharedProjectsTabView&) {
    return std::ranges::any_of(GetOpenProjectsOfProduction(), [](const ProjectRef& project) {
        return project->IsReadOnly() && Utilities::IsProjectOutOfDate(project);
    });
}

bool OnRefreshAllProjectsCommand(SharedProjectsTabView&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    const ProjectRef active = GetActiveProject();
    for (const ProjectRef& project : GetOpenProjectsOfProduction())
        if (Utilities::IsProjectOutOfDate(project)) documents->ReloadProject(project);
    SetActiveProject(active);
    return true;
}

CommandStatus OnSaveAllProjectsCommandStatus(const SharedProjectsTabView&) {
    const ProjectVec projects = GetOpenProjectsOfProduction();
    return !std::ranges::all_of(projects, [](const ProjectRef& project) { return project->IsReadOnly(); });
}

bool OnSaveAllProjectsCommand(SharedProjectsTabView&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    // Read-only ones too: one that lost its lock may have changes, and only this tells that they are not saved.
    for (const ProjectRef& project : GetOpenProjectsOfProduction()) documents->SaveProject(project);
    return true;
}

CommandStatus OnToggleLockCommandStatus(const SharedProjectsTabView& panel) {
    const ToggleLockState state = GetToggleLockState(panel.GetKnownSelection());
    return state == ToggleLockState::ReadOnly || state == ToggleLockState::Writable;
}

/// What Toggle Lock would do.
UTF16String GetToggleLockCommandText(const SharedProjectsTabView& panel) {
    const ToggleLockState state = GetToggleLockState(panel.GetKnownSelection());
    return Localizer::Get()->Localize(
        state == ToggleLockState::Writable
            ? "$$$/Vantor/Handlers/ZuProductionFolder/ProjectContextMenu/ReadOnlyMode=Read-Only Mode"
            : "$$$/Vantor/Handlers/ZuProductionFolder/ProjectContextMenu/ReadWriteMode=Read-Write Mode");
}

bool OnToggleLockCommand(SharedProjectsTabView& panel) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    for (const ProjectRef& project : FindOpenAmong(panel.GetSelectedPaths()))
        documents->SetProjectReadOnly(project, !project->IsReadOnly());
    return true;
}

}  // namespace

std::span<const PanelCommand> GetProjectCommands() {
    static constexpr PanelCommand kCommands[] = {
        {CommandID::kOpenProject, OnOpenProjectCommandStatus, OnOpenProjectCommand},
        {CommandID::kCloseProject, OnCloseProjectCommandStatus, OnCloseProjectCommand},
        {CommandID::kCloseAllOtherProjects, OnCloseAllOtherProjectsCommandStatus,
         OnCloseAllOtherProjectsCommand},
        {CommandID::kCloseAllProjects, OnCloseAllProjectsCommandStatus, OnCloseAllProjectsCommand},
        {CommandID::kRefreshProject, OnRefreshProjectCommandStatus, OnRefreshProjectCommand},
        {CommandID::kRefreshAllProjects, OnRefreshAllProjectsCommandStatus, OnRefreshAllProjectsCommand},
        {CommandID::kSaveAllProjects, OnSaveAllProjectsCommandStatus, OnSaveAllProjectsCommand},
        {CommandID::kToggleLock, OnToggleLockCommandStatus, OnToggleLockCommand, GetToggleLockCommandText},
    };
    return kCommands;
}

}  // namespace HandlerSharedProjects
