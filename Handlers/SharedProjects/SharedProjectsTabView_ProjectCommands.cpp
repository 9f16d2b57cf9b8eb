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

constexpr char kNothingToRefresh[] =
    "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NothingToRefresh=Only a project that is open read-only, and has "
    "changed on the volume since, can be refreshed.";
constexpr char kNotAllAreOpen[] =
    "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NotAllOpen=Not all that is selected is an open project.";
constexpr char kTheyDiffer[] =
    "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/TheyDiffer=Some of the selected projects are read-only, others are "
    "not.";

/// The open projects of the production, those too that were opened through a link from elsewhere.
ProjectVec GetOpenProjectsOfProduction() {
    ProjectVec projects = GetOpenProjectList();
    std::erase_if(projects, [](const ProjectRef& project) {
        return !IsWithinCurrentZuProductionFolder(project->GetProjectPath()) &&
               !IsWithinCurrentZuProductionFolder(Utilities::GetRealProjectPath(project));
    });
    return projects;
}

ProjectVec FindSelectedOpenProjects(const SharedProjectsTabView& panel) {
    const SharedProjectsItemTree* items = panel.GetShownItems();
    return items ? items->FindSelectedOpenProjects() : ProjectVec();
}

/// The projects that are open among `paths`, in their order.
ProjectVec FindOpenAmong(const UTF16StringVec& paths) {
    ProjectVec projects;
    ProjectRef project;
    for (const UTF16String& path : paths)
        if (IsProjectOpen(path, project) && !PathUtils::IsDirectory(path)) projects.push_back(project);
    return projects;
}

/// What Toggle Lock would find.
struct ToggleLockState {
    CommandStatus mStatus;
    bool mIsReadOnly = true;
};

ToggleLockState GetToggleLockState(const SharedProjectsTabView& panel) {
    const std::size_t count = panel.CountSelectedRows();
    if (!DocumentManager::Instance() || count == 0) return {ZString(kNoOpenProjectIsSelected)};
    // Each of these is asked for: they are few.
    if (count > static_cast<std::size_t>(OpenProjectCount()))
        return {ZString(count == 1 ? kNoOpenProjectIsSelected : kNotAllAreOpen)};
    const UTF16StringVec paths = panel.GetSelectedPaths();
    ToggleLockState state{UTF16String()};
    for (const UTF16String& path : paths) {
        ProjectRef project;
        if (!IsProjectOpen(path, project))
            return {ZString(paths.size() == 1 ? kNoOpenProjectIsSelected : kNotAllAreOpen)};
        const bool isFirst = &path == &paths.front();
        if (!isFirst && state.mIsReadOnly != project->IsReadOnly()) return {ZString(kTheyDiffer)};
        state.mIsReadOnly = project->IsReadOnly();
        // Of read-only projects that somebody else has locked none can be switched.
        if (state.mStatus->empty()) state.mStatus = Utils::DescribeWhyHeld(path);
    }
    if (!state.mIsReadOnly) state.mStatus = UTF16String();
    return state;
}

CommandStatus OnOpenProjectCommandStatus(const SharedProjectsTabView& panel) {
    const SharedProjectsItemTree* items = panel.GetShownItems();
    bool isAnyProject = false;
    const bool isAnyClosed = items && items->IsAnySelected([&isAnyProject](const UTF16String& path) {
        const bool isProject = !PathUtils::IsDirectory(path);
        isAnyProject = isAnyProject || isProject;
        return isProject && !IsProjectOpen(path);
    });
    if (!isAnyProject)
        return ZString("$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NoProject=No project is selected.");
    return EnabledIf(
        DocumentManager::Instance() && isAnyClosed,
        "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/OpenAlready=What is selected is open already.");
}

bool OnOpenProjectCommand(SharedProjectsTabView& panel) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    for (const UTF16String& path : panel.GetSelectedPaths())
        if (!PathUtils::IsDirectory(path)) documents->OpenProject(path);
    return true;
}

CommandStatus OnCloseProjectCommandStatus(const SharedProjectsTabView& panel) {
    return EnabledIf(DocumentManager::Instance() && !FindSelectedOpenProjects(panel).empty(),
                     kNoOpenProjectIsSelected);
}

bool OnCloseProjectCommand(SharedProjectsTabView& panel) {
    Utils::CloseOpenProjectsInList(panel.GetSelectedPaths(), false, true);
    return true;
}

CommandStatus OnCloseAllOtherProjectsCommandStatus(const SharedProjectsTabView& panel) {
    if (FindSelectedOpenProjects(panel).empty()) return ZString(kNoOpenProjectIsSelected);
    return EnabledIf(DocumentManager::Instance() && OpenProjectCount() > 1,
                     "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NoOther=No other project is open.");
}

bool OnCloseAllOtherProjectsCommand(SharedProjectsTabView& panel) {
    Utils::CloseOpenProjectsNotInList(panel.GetSelectedPaths(), false, true);
    return true;
}

CommandStatus OnCloseAllProjectsCommandStatus(const SharedProjectsTabView&) {
    return EnabledIf(
        !GetOpenProjectsOfProduction().empty(),
        "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NoneOfProduction=No project of this production "
        "is open.");
}

bool OnCloseAllProjectsCommand(SharedProjectsTabView&) {
    if (DocumentManager* documents = DocumentManager::Instance()) documents->CloseAllProjects();
    return true;
}

CommandStatus OnRefreshProjectCommandStatus(const SharedProjectsTabView& panel) {
    const auto isRefreshable = [](const ProjectRef& project) {
        return Utils::IsRefreshable(project->GetProjectPath());
    };
    return EnabledIf(
        DocumentManager::Instance() && std::ranges::any_of(FindSelectedOpenProjects(panel), isRefreshable),
        kNothingToRefresh);
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
    const bool isAnyOutOfDate =
        std::ranges::any_of(GetOpenProjectsOfProduction(), [](const ProjectRef& project) {
            return project->IsReadOnly() && Utilities::IsProjectOutOfDate(project);
        });
    return EnabledIf(isAnyOutOfDate, kNothingToRefresh);
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
    const bool isAnyWritable =
        !std::ranges::all_of(projects, [](const ProjectRef& project) { return project->IsReadOnly(); });
    return EnabledIf(
        isAnyWritable,
        "$$$/Vantor/Handlers/ZuProductionFolder/WhyNot/NoneWritable=No project of this production is "
        "open for editing.");
}

bool OnSaveAllProjectsCommand(SharedProjectsTabView&) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    // Read-only ones too: one that lost its lock may have changes, and only this tells that they are not saved.
    for (const ProjectRef& project : GetOpenProjectsOfProduction()) documents->SaveProject(project);
    return true;
}

CommandStatus OnToggleLockCommandStatus(const SharedProjectsTabView& panel) {
    return GetToggleLockState(panel).mStatus;
}

/// What Toggle Lock would do.
UTF16String GetToggleLockCommandText(const SharedProjectsTabView& panel) {
    return Localizer::Get()->Localize(
        GetToggleLockState(panel).mIsReadOnly
            ? "$$$/Vantor/Handlers/ZuProductionFolder/ProjectContextMenu/ReadWriteMode=Read-Write Mode"
            : "$$$/Vantor/Handlers/ZuProductionFolder/ProjectContextMenu/ReadOnlyMode=Read-Only Mode");
}

bool OnToggleLockCommand(SharedProjectsTabView& panel) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    const ProjectVec projects = FindOpenAmong(panel.GetSelectedPaths());
    bool areDone = true;
    for (const ProjectRef& project : projects)
        areDone &= documents->SetProjectReadOnly(project, !project->IsReadOnly());
    // Who asks to write one project writes next.
    if (areDone && projects.size() == 1 && !projects.front()->IsReadOnly()) SetActiveProject(projects.front());
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
