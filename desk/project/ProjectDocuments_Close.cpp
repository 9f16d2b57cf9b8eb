// Closing one and several projects, with the question to save.

#include <algorithm>
#include <utility>

#include "desk/files/FolderPath.h"
#include "desk/project/OutOfDateWatch.h"
#include "desk/project/ProjectDocumentsImpl.h"
#include "host/files/PathUtils.h"

namespace desk {

using ProjectQuestions::SaveAnswer;

namespace {

int sApplyToAllScopes = 0;

}  // namespace

void ProjectDocuments::CountApplyToAllScope(int step) {
    sApplyToAllScopes += step;
    if (sApplyToAllScopes == 0 && Instance()) Instance()->mAnswerForAll.reset();
}

bool ProjectDocuments::CloseProject(const host::ProjectRef& project, bool prompt) {
    const ProjectDocumentRef document = ToDocument(project);
    return document && (!IsOpen(document) || Close(document, prompt));
}

bool ProjectDocuments::CloseAllProjects() {
    return CloseAll(GetDocuments());
}

bool ProjectDocuments::CloseProjectsIn(const host::UTF16String& folder) {
    const host::UTF16String normalized = host::PathUtils::ToNormalizedPath(folder);
    std::vector<ProjectDocumentRef> documents = GetDocuments();
    std::erase_if(documents, [&](const ProjectDocumentRef& document) {
        return !IsSameOrBelow(document->GetProjectPath(), normalized);
    });
    return CloseAll(documents);
}

bool ProjectDocuments::CloseAll(const std::vector<ProjectDocumentRef>& documents) {
    const auto changed = std::count_if(documents.begin(), documents.end(),
                                       [](const ProjectDocumentRef& document) { return document->IsDirty(); });
    std::optional<host::ScEnableSaveApplyToAllOption> scope;
    if (changed > 1) scope.emplace();
    return std::all_of(documents.begin(), documents.end(), [this](const ProjectDocumentRef& document) {
        return !IsOpen(document) || Close(document, true);
    });
}

bool ProjectDocuments::Close(const ProjectDocumentRef& document, bool prompt) {
    const Operation operation(*this, document);
    if (!operation.HasBegun()) return false;
    if (prompt && document->IsDirty()) {
        const SaveAnswer answer = AskToSave(document);
        if (answer == SaveAnswer::Cancel) return false;
        if (answer == SaveAnswer::Save && !SaveToClose(document)) return false;
    }
    Drop(document);
    return true;
}

/// What was typed while it was saved is not lost either.
bool ProjectDocuments::SaveToClose(const ProjectDocumentRef& document) {
    const SaveResult result = Save(document).mResult;
    return result == SaveResult::Copied || (result == SaveResult::Saved && !document->IsDirty());
}

/// The project is brought to the front first: the user is to see what the question is about.
SaveAnswer ProjectDocuments::AskToSave(const ProjectDocumentRef& document) {
    if (mAnswerForAll) return *mAnswerForAll;
    SetActiveProject(document);
    const bool offersApplyToAll = sApplyToAllScopes > 0;
    const ProjectQuestions::SaveChoice choice =
        ProjectQuestions::AskToSave(document->GetProjectPath(), offersApplyToAll);
    if (offersApplyToAll && choice.mAppliesToAll) mAnswerForAll = choice.mAnswer;
    return choice.mAnswer;
}

/// The locks go first, so that whoever hears of it finds the project free.
void ProjectDocuments::Drop(const ProjectDocumentRef& document) {
    document->ReleaseLocks();
    OpenProjectList::Instance().Remove(document);
    if (mActive != document) return;
    mActive.reset();
    if (const std::vector<ProjectDocumentRef> others = GetDocuments(); !others.empty())
        SetActiveProject(others.back());
}

}  // namespace desk
