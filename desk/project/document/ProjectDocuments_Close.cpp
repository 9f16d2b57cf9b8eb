// Closing one and several projects, with the question to save.

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <utility>

#include "desk/core/names/FolderPath.h"
#include "desk/project/document/ProjectDocumentsImpl.h"
#include "desk/project/lock/LockKeeper.h"
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
    return CloseAll([this] { return GetDocuments(); });
}

bool ProjectDocuments::CloseProjectsIn(const host::UTF16String& folder) {
    const host::UTF16String normalized = host::PathUtils::ToNormalizedPath(folder);
    return CloseAll([&] {
        std::vector<ProjectDocumentRef> documents = GetDocuments();
        std::erase_if(documents, [&](const ProjectDocumentRef& document) {
            return !IsSameOrBelow(document->GetProjectPath(), normalized) &&
                   !IsSameOrBelow(document->GetRealPath(), normalized);
        });
        return documents;
    });
}

/// Projects that are closed together, once each may be. Another operation on them is refused until then.
class ProjectDocuments::Closing {
public:
    explicit Closing(ProjectDocuments& documents) : mDocuments(documents) {}

    /// False when another operation on one of them is under way.
    bool Begin(const std::vector<ProjectDocumentRef>& documents) {
        return std::ranges::all_of(documents, [this](const ProjectDocumentRef& document) {
            auto& operation = mOperations[document.get()];
            if (!operation) operation = std::make_unique<Operation>(mDocuments, document);
            return operation->HasBegun();
        });
    }

    /// True when closing the document loses nothing but what the user has given up or saved as a copy.
    bool MayClose(const ProjectDocumentRef& document) const {
        if (!document->IsDirty()) return true;
        const auto agreed = mAgreed.find(document.get());
        return agreed != mAgreed.end() && agreed->second == document->GetCurrentText();
    }

    /// False when the document is to stay open, and with it all.
    bool Ask(const ProjectDocumentRef& document) {
        const host::UTF16String text = document->GetCurrentText();
        const SaveAnswer answer = mDocuments.AskToSave(document);
        if (answer == SaveAnswer::Cancel) return false;
        if (answer == SaveAnswer::Save && !mDocuments.SaveToClose(document)) return false;
        mAgreed[document.get()] = text;
        return true;
    }

private:
    ProjectDocuments& mDocuments;
    /// Each keeps its document, so that no other can be at its place in memory.
    std::map<const ProjectDocument*, std::unique_ptr<Operation>> mOperations;
    /// What the document showed when the user agreed to close it.
    std::map<const ProjectDocument*, host::UTF16String> mAgreed;
};

/// `find` is asked anew after each question, while which projects may have been opened, and texts changed.
bool ProjectDocuments::CloseAll(const std::function<std::vector<ProjectDocumentRef>()>& find) {
    std::vector<ProjectDocumentRef> documents = find();
    std::optional<host::ScEnableSaveApplyToAllOption> scope;
    if (std::ranges::count_if(documents, [](const auto& document) { return document->IsDirty(); }) > 1)
        scope.emplace();
    Closing closing(*this);
    for (;; documents = find()) {
        if (!closing.Begin(documents)) return false;
        const auto open = std::ranges::find_if_not(
            documents, [&](const ProjectDocumentRef& document) { return closing.MayClose(document); });
        if (open == documents.end()) break;
        if (!closing.Ask(*open)) return false;
    }
    DropAll(documents);
    return true;
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
    const SaveResult result = (document->IsReadOnly() ? SaveAsCopy(document) : Save(document)).mResult;
    return result == SaveResult::Copied || (result == SaveResult::Saved && !document->IsDirty());
}

/// The project is brought to the front first: the user is to see what the question is about.
SaveAnswer ProjectDocuments::AskToSave(const ProjectDocumentRef& document) {
    const bool isReadOnly = document->IsReadOnly();
    const bool isAnswered = mAnswerForAll && (!isReadOnly || *mAnswerForAll != SaveAnswer::Save);
    if (isAnswered) return *mAnswerForAll;
    SetActiveProject(document);
    const bool offersApplyToAll = sApplyToAllScopes > 0 && !isReadOnly;
    const ProjectQuestions::SaveChoice choice =
        ProjectQuestions::AskToSave(document->GetProjectPath(), isReadOnly, offersApplyToAll);
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

void ProjectDocuments::DropAll(const std::vector<ProjectDocumentRef>& documents) {
    {
        const ScGiveUpTogether together;
        for (const ProjectDocumentRef& document : documents) document->ReleaseLocks();
    }
    for (const ProjectDocumentRef& document : documents) Drop(document);
}

}  // namespace desk
