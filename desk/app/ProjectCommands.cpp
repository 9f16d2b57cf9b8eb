#include "desk/app/ProjectCommands.h"

#include <algorithm>
#include <optional>

#include "desk/app/ProgramCommands.h"
#include "desk/app/ProjectArea.h"
#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/files/live/FolderStore.h"
#include "desk/framework/CommandRouter.h"
#include "desk/framework/MainCommander.h"
#include "desk/mediabrowser/DirectorySelection.h"
#include "desk/project/document/ProjectDocuments.h"
#include "desk/project/lock/LockHolder.h"
#include "desk/project/production/BreakLock.h"
#include "desk/project/production/Production.h"
#include "desk/project/production/TrashMoves.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/framework/SystemReveal.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"
#include "host/project/ProjectLockFile.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {
namespace {

constexpr int kCommands[] = {kCommandOpenProject,        kCommandSaveProject,      kCommandSaveAllProjects,
                             kCommandSaveProjectAsCopy,  kCommandReloadProject,    kCommandCloseProject,
                             kCommandCloseOtherProjects, kCommandCloseAllProjects, kCommandToggleReadOnly,
                             kCommandBreakLock,          kCommandRevealProject,    kCommandTrashProject};

CommandStatus Enabled(bool isEnabled) {
    return {.mIsKnown = true, .mIsEnabled = isEnabled, .mText = {}};
}

bool IsAnyDirty() {
    const auto& projects = OpenProjectList::Instance().Get();
    return std::ranges::any_of(projects, [](const OpenProjectRef& project) { return project->IsDirty(); });
}

/// The entry's text changes with what it would do.
CommandStatus ToggleStatus(const ProjectDocumentRef& document) {
    CommandStatus status = Enabled(static_cast<bool>(document));
    if (document && document->IsReadOnly())
        status.mText = host::ZString("$$$/Desk/Projects/ReadWriteMode=Read-Write Mode");
    return status;
}

bool IsKnownToBeLockedBySomebodyElse(const host::UTF16String& path) {
    if (!host::IsVantorProjectFile(path)) return false;
    const std::optional<ProjectHolder> holder = FindKnownProjectHolder(path);
    return holder && holder->mWho == LockHolder::AnotherProcess;
}

void OfferToEdit(const ProjectDocumentRef& document) {
    const Answer answer = GetServices().mDialogs->Ask(
        {.mTitle = host::ZString("$$$/Desk/BreakLock/Title=Break Lock"),
         .mText = host::ZString("$$$/Desk/BreakLock/Broken=The lock of “@0” was broken. The project can now "
                                "be switched to read-write.",
                                {host::PathUtils::GetFilePart(document->GetProjectPath())}),
         .mButtons = {host::ZString("$$$/Desk/Projects/SwitchToReadWrite=Switch to Read-Write"),
                      host::ZString("$$$/Desk/BreakLock/StayReadOnly=Stay Read-Only")},
         .mCancel = 1});
    ProjectDocuments* documents = ProjectDocuments::Instance();
    if (answer.mButton != 0 || !documents) return;
    // A project that is read-only has no changes that this could lose.
    if (!document->IsOutOfDate() || documents->ReloadProject(document))
        documents->SetProjectReadOnly(document, false);
}

template <class Status, class Action>
void Add(int id, Status status, Action action) {
    MainCommander::Instance().Register(id, status, [action] {
        if (ProjectDocuments::Instance()) action(*ProjectDocuments::Instance());
        return true;
    });
}

}  // namespace

ProjectCommands::ProjectCommands(const ProjectArea& area) : mArea(area) {
    AddFileCommands();
    AddCloseCommands();
    AddLockCommands();
}

void ProjectCommands::AddFileCommands() {
    const auto whenOpen = [this] { return Enabled(static_cast<bool>(Active())); };
    Add(
        kCommandOpenProject, [] { return Enabled(ProjectDocuments::Instance() != nullptr); },
        [this](ProjectDocuments&) { Open(); });
    Add(
        kCommandSaveProject, [this] { return Enabled(Active() && Active()->IsDirty()); },
        [this](ProjectDocuments& documents) { documents.SaveProject(Active()); });
    Add(
        kCommandSaveAllProjects, [] { return Enabled(IsAnyDirty()); },
        [](ProjectDocuments& documents) { documents.SaveAllProjects(); });
    Add(kCommandSaveProjectAsCopy, whenOpen,
        [this](ProjectDocuments& documents) { documents.SaveProjectAsCopy(Active()); });
    Add(kCommandReloadProject, whenOpen,
        [this](ProjectDocuments& documents) { documents.ReloadProject(Active()); });
    Add(kCommandRevealProject, whenOpen,
        [this](ProjectDocuments&) { host::RevealAndSelectFile(Active()->GetProjectPath()); });
    Add(
        kCommandTrashProject, [this] { return Enabled(MayMoveToTrash()); },
        [this](ProjectDocuments&) { TryToMoveToTrash({Active()->GetProjectPath()}); });
}

void ProjectCommands::AddCloseCommands() {
    Add(
        kCommandCloseProject, [this] { return Enabled(static_cast<bool>(Active())); },
        [this](ProjectDocuments& documents) { documents.CloseProject(Active(), true); });
    Add(
        kCommandCloseOtherProjects, [] { return Enabled(OpenProjectList::Instance().Get().size() > 1); },
        [this](ProjectDocuments&) { CloseOthers(); });
    Add(
        kCommandCloseAllProjects, [] { return Enabled(!OpenProjectList::Instance().Get().empty()); },
        [](ProjectDocuments& documents) { documents.CloseAllProjects(); });
}

void ProjectCommands::AddLockCommands() {
    Add(
        kCommandToggleReadOnly, [this] { return ToggleStatus(Active()); },
        [this](ProjectDocuments&) { ToggleReadOnly(); });
    Add(
        kCommandBreakLock, [this] { return Enabled(!FindLockedProject().empty()); },
        [this](ProjectDocuments&) { BreakLock(); });
}

ProjectCommands::~ProjectCommands() {
    for (const int command : kCommands) MainCommander::Instance().Register(command, {}, {});
}

ProjectDocumentRef ProjectCommands::Active() const {
    return mArea.GetActiveDocument();
}

void ProjectCommands::Open() const {
    const ProjectDocumentRef active = Active();
    const host::UTF16String folder = active ? host::PathUtils::GetFullDirectoryPart(active->GetProjectPath())
                                            : Production::Instance().GetFolder();
    const host::UTF16StringVec paths =
        GetServices().mDialogs->AskFiles(host::ZString("$$$/Desk/Projects/OpenTitle=Open Project"), folder,
                                         host::ZString("$$$/Desk/Projects/Kind=Projects"), u"*.zuproj");
    for (const host::UTF16String& path : paths)
        if (host::DocumentManager* manager = host::DocumentManager::Instance()) manager->OpenProject(path);
}

bool ProjectCommands::MayMoveToTrash() const {
    if (!Active() || !CanMoveToTrash() || mArea.IsActiveDocumentHeld()) return false;
    const host::UTF16String path = Active()->GetProjectPath();
    return host::IsWithinCurrentZuProductionFolder(path) && !host::IsInZuProductionTrash(path, true);
}

void ProjectCommands::CloseOthers() const {
    const ProjectDocumentRef active = Active();
    const host::ScEnableSaveApplyToAllOption applyToAll;
    for (const host::ProjectRef& project : host::GetOpenProjectList())
        if (project != active && !ProjectDocuments::Instance()->CloseProject(project, true)) return;
}

void ProjectCommands::ToggleReadOnly() const {
    const ProjectDocumentRef active = Active();
    if (active) ProjectDocuments::Instance()->SetProjectReadOnly(active, !active->IsReadOnly());
}

host::UTF16String ProjectCommands::FindLockedProject() const {
    const bool isInFront = CommandRouter::Instance().GetEditorOnDuty() != nullptr;
    const DirectorySelection selected = isInFront ? DirectorySelection() : GetDirectorySelection();
    if (selected.mCount == 0)
        return mArea.IsActiveDocumentHeld() ? Active()->GetProjectPath() : host::UTF16String();
    const bool isMeant = selected.mCount == 1 && IsKnownToBeLockedBySomebodyElse(selected.mPath);
    return isMeant ? selected.mPath : host::UTF16String();
}

void ProjectCommands::BreakLock() const {
    const host::UTF16String path = FindLockedProject();
    if (path.empty()) return;
    host::ProjectRef project;
    host::IsProjectOpen(path, project);
    const ProjectDocumentRef document = ToDocument(project);
    if (!BreakProjectLock(path, document ? document->GetFile().mPath : host::UTF16to8(path))) return;
    if (document)
        OfferToEdit(document);
    else
        GetServices().mDialogs->ShowMessage(
            host::ZString("$$$/Desk/BreakLock/Title=Break Lock"),
            host::ZString("$$$/Desk/BreakLock/BrokenOnly=The lock of “@0” was broken.",
                          {host::PathUtils::GetFilePart(path)}),
            MessageKind::Information);
}

}  // namespace desk
