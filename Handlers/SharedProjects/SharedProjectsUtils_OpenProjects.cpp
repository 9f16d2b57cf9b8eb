// Projects that are open: which of them are meant, and closing those.
#include <optional>
#include <vector>

#include "Handlers/SharedProjects/SharedProjectsColumns.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/core/UserNotice.h"
#include "host/files/FileException.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"
#include "host/project/DocumentManager.h"
#include "host/project/OpenProjects.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectFiles.h"

namespace HandlerSharedProjects::Utils {

namespace {

using ProjectVec = std::vector<ProjectRef>;

bool Contains(const ProjectVec& projects, const ProjectRef& project) {
    return std::ranges::find(projects, project) != projects.end();
}

void AddIfOpen(const UTF16String& path, ProjectVec& projects) {
    ProjectRef project;
    if (IsProjectOpen(PathUtils::ToNormalizedPath(path), project) && !Contains(projects, project))
        projects.push_back(project);
}

/// A search of the disk can only find what lies there by its path.
bool LiesAnyWithin(const ProjectVec& projects, const UTF16String& folder) {
    return std::ranges::any_of(projects, [&](const ProjectRef& project) {
        return Utilities::IsPathWithinDirectory(project->GetProjectPath(), folder, false) ||
               Utilities::IsPathWithinDirectory(Utilities::GetRealProjectPath(project), folder, false);
    });
}

/// The projects that are open among `paths` and in the folders among them, in the order in which they are
/// found. Throws `FileException` when the user cancelled looking into a folder.
ProjectVec FindOpenAmongAndInside(const UTF16StringVec& paths) {
    const ProjectVec open = GetOpenProjectList();
    ProjectVec found;
    if (open.empty()) return found;
    for (const UTF16String& path : paths) {
        const UTF16String normalized = PathUtils::ToNormalizedPath(path);
        if (!PathUtils::IsDirectory(normalized))
            AddIfOpen(normalized, found);
        else if (LiesAnyWithin(open, normalized))
            for (const UTF16String& file : FileSearch::FindFiles(normalized, GetProjectFileExtension()))
                AddIfOpen(file, found);
    }
    return found;
}

/// A project that could not be saved stays open, with all others: its changes would be lost.
bool SaveAll(DocumentManager& documents, const ProjectVec& projects) {
    return std::ranges::all_of(projects, [&](const ProjectRef& project) {
        return !project->IsDirty() || documents.SaveProject(project);
    });
}

bool CloseAll(DocumentManager& documents, const ProjectVec& projects, bool closeWithoutPrompt, bool saveFirst) {
    std::optional<ScEnableSaveApplyToAllOption> applyToAll;
    const auto isDirty = [](const ProjectRef& project) { return project->IsDirty(); };
    if (std::ranges::count_if(projects, isDirty) >= 2) applyToAll.emplace();
    if (closeWithoutPrompt && saveFirst && !SaveAll(documents, projects)) return false;
    return std::ranges::all_of(projects, [&](const ProjectRef& project) {
        return documents.CloseProject(project, !closeWithoutPrompt);
    });
}

}  // namespace

void OpenProjectOutsideTrash(const UTF16String& path) {
    DocumentManager* documents = DocumentManager::Instance();
    if (IsInTrash(path, true))
        TellInStatusBar(
            ZString("$$$/Vantor/Desk/Project/InTrash=“@0” is in the trash. Nothing is opened from "
                    "there; move it to another folder first.",
                    {Columns::GetPathDisplayName(path)}));
    else if (documents)
        documents->OpenProject(path);
}

bool CloseOpenProjectsInList(const UTF16StringVec& paths, bool closeWithoutPrompt, bool saveFirst) {
    DocumentManager* documents = DocumentManager::Instance();
    try {
        return !documents || CloseAll(*documents, FindOpenAmongAndInside(paths), closeWithoutPrompt, saveFirst);
    } catch (const FileException& exception) {
        LogException(exception, __PRETTY_FUNCTION__);
        return false;
    }
}

bool CloseOpenProjectsNotInList(const UTF16StringVec& paths, bool closeWithoutPrompt, bool saveFirst) {
    DocumentManager* documents = DocumentManager::Instance();
    if (!documents) return true;
    try {
        const ProjectVec kept = FindOpenAmongAndInside(paths);
        ProjectVec others = GetOpenProjectList();
        std::erase_if(others, [&](const ProjectRef& project) { return Contains(kept, project); });
        return CloseAll(*documents, others, closeWithoutPrompt, saveFirst);
    } catch (const FileException& exception) {
        LogException(exception, __PRETTY_FUNCTION__);
        return false;
    }
}

}  // namespace HandlerSharedProjects::Utils
