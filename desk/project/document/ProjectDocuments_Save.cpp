// Saving, with the locks that are read again before, and copies of what cannot be saved.

#include <cerrno>
#include <chrono>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/names/UniqueNames.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/project/document/LockWatch.h"
#include "desk/project/document/ProjectDocumentsImpl.h"
#include "desk/project/lock/LockKeeper.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

using host::UTF16String;
using ProjectQuestions::ChangedAnswer;

/// Writes the document's present content to a new file. False when something stands at `path`.
bool WriteCopy(const ProjectDocument& document, const UTF16String& path) {
    if (document.IsEditable())
        return CreateFileOnDisk(path,
                                EditedText(document.GetContent().mBytes).ToBytes(document.GetCurrentText()));
    return CopyFileOnDisk(document.GetFile().mPath, path);
}

/// A free name beside the project; on a volume that does not answer, one that may be taken.
UTF16String SuggestCopy(const UTF16String& project) {
    constexpr std::chrono::seconds kLimit(1);
    const UTF16String word =
        host::ZString("$$$/Vantor/Desk/Project/CopyName=copy#{after the name of what was copied}");
    const auto free = AskVolumeWithin(kLimit, [=] {
        return MakeCopyPath(project, word,
                            [](const UTF16String& path) { return IsTaken(*GetServices().mFileSystem, path); });
    });
    return free ? *free : MakeCopyPath(project, word, [](const UTF16String&) { return false; });
}

}  // namespace

bool ProjectDocuments::SaveProject(const host::ProjectRef& project) {
    const ProjectDocumentRef document = ToDocument(project);
    const Operation operation(*this, document);
    if (!operation.HasBegun()) return false;
    const Saving saving = Save(document);
    if (saving.mResult == SaveResult::Copied) OpenInPlaceOf(document, saving.mCopy);
    return saving.mResult == SaveResult::Saved;
}

bool ProjectDocuments::SaveAllProjects() {
    bool isAllSaved = true;
    for (const ProjectDocumentRef& document : GetDocuments())
        if (document->IsDirty() && !SaveProject(document)) isAllSaved = false;
    return isAllSaved;
}

bool ProjectDocuments::SaveProjectAsCopy(const host::ProjectRef& project) {
    const ProjectDocumentRef document = ToDocument(project);
    const Operation operation(*this, document);
    if (!operation.HasBegun()) return false;
    const Saving saving = SaveAsCopy(document);
    return saving.mResult == SaveResult::Copied && OpenInPlaceOf(document, saving.mCopy);
}

ProjectDocuments::Saving ProjectDocuments::Save(const ProjectDocumentRef& document) {
    if (!document->IsDirty()) return {SaveResult::Saved, {}};
    const auto copyIf = [&](bool isWanted) { return isWanted ? SaveAsCopy(document) : Saving{}; };
    if (document->IsReadOnly()) return copyIf(ProjectQuestions::AskToCopyReadOnly(document->GetProjectPath()));
    if (document->IsBasedOnOlder()) {
        const ChangedAnswer answer =
            ProjectQuestions::AskAboutRecovered(document->GetProjectPath(), document->GetContent().mStatus);
        if (answer != ChangedAnswer::Overwrite) return copyIf(answer == ChangedAnswer::SaveAsCopy);
    }
    std::optional<FileComparison> approved;
    for (;;) {
        if (std::optional<Saving> stopped = CheckLocks(document)) return *std::move(stopped);
        const FileWriting writing = Write(document, document->GetCurrentText(), approved);
        if (writing.mOutcome == FileWriting::Outcome::Written) return {SaveResult::Saved, {}};
        if (writing.mOutcome != FileWriting::Outcome::Differs) return {};
        if (writing.mFound.mOutcome == FileComparison::Outcome::Changed) document->SetOutOfDate(true);
        const ChangedAnswer answer =
            ProjectQuestions::AskAboutChange(document->GetProjectPath(), writing.mFound);
        if (answer != ChangedAnswer::Overwrite) return copyIf(answer == ChangedAnswer::SaveAsCopy);
        approved = writing.mFound;
    }
}

/// Absent when the locks are still ours.
std::optional<ProjectDocuments::Saving> ProjectDocuments::CheckLocks(const ProjectDocumentRef& document) {
    try {
        for (const host::ProjectLockFileRef& lock : {document->GetLock(), document->GetTargetLock()})
            if (const LockReport report = CheckProjectLock(lock); report.mStanding != LockStanding::Ours)
                return StopSaving(document, report);
        document->SetTrouble({});
        return {};
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ECANCELED)
            ProjectQuestions::TellNotSaved(document->GetProjectPath(), ReasonOf(exception));
        return Saving{};
    }
}

/// A lock that may come back is kept, and the project stays as it is.
ProjectDocuments::Saving ProjectDocuments::StopSaving(const ProjectDocumentRef& document,
                                                      const LockReport& report) {
    const UTF16String path = document->GetProjectPath();
    const auto copyIf = [&](bool isWanted) { return isWanted ? SaveAsCopy(document) : Saving{}; };
    if (report.mStanding == LockStanding::Lost) {
        document->KeepLostLock();
        return copyIf(ProjectQuestions::AskToCopyAfterLoss(path, report.mHolder));
    }
    const UTF16String trouble = ProjectQuestions::DescribeTrouble(path, report);
    document->SetTrouble(trouble);
    if (report.IsAway()) return copyIf(ProjectQuestions::AskToCopyWhileAway(path, report));
    ProjectQuestions::TellNotSaved(path, trouble);
    return {};
}

/// True when nothing remains to be done about it. What is under way on the document finds out by itself.
bool ProjectDocuments::NoteLoss(const ProjectDocumentRef& document, const LockFinding& loss) {
    const Operation operation(*this, document);
    if (!operation.HasBegun()) return false;
    if (!LockKeeper::Instance().NoteLoss(loss.mLockPath, loss.mNonce)) return true;
    document->KeepLostLock();
    ProjectQuestions::TellLockLost(document->GetProjectPath(), loss.mReport.mHolder);
    return true;
}

/// What fails is told.
FileWriting ProjectDocuments::Write(const ProjectDocumentRef& document, const UTF16String& text,
                                    const std::optional<FileComparison>& approved) {
    const ProjectContentPtr expected = document->ShareContent();
    const std::string file = document->GetFile().mPath;
    const UTF16String path = document->GetProjectPath();
    FileWriting writing;
    std::string bytes;
    RunLongWork(host::ZString("$$$/Desk/Project/Saving=Saving Project"), [&](WorkProgress& progress) {
        progress.SetItem(path);
        bytes = EditedText(expected->mBytes).ToBytes(text);
        writing = WriteProjectFile(*GetServices().mFileSystem, file, bytes, *expected, approved);
    });
    switch (writing.mOutcome) {
        case FileWriting::Outcome::Written:
            document->NoteSaved(text, std::move(bytes), writing.mStatus);
            break;
        case FileWriting::Outcome::Failed:
            ProjectQuestions::TellNotSaved(path, ReasonOf(*writing.mError));
            break;
        case FileWriting::Outcome::MayBeWritten:
            document->NoteMayHold(std::move(bytes));
            ProjectQuestions::TellMayBeSaved(path, ReasonOf(*writing.mError), host::UTF8to16(writing.mKept));
            break;
        case FileWriting::Outcome::Differs:
            break;
    }
    return writing;
}

ProjectDocuments::Saving ProjectDocuments::SaveAsCopy(const ProjectDocumentRef& document) {
    const auto copy = SaveToNewFile(host::GetZuProductionItemCopyPath(document->GetProjectPath(), {}),
                                    [&](const UTF16String& path) { return WriteCopy(*document, path); });
    return copy ? Saving{SaveResult::Copied, *copy} : Saving{};
}

std::optional<UTF16String> ProjectDocuments::SaveToNewFile(
    UTF16String path, const std::function<bool(const UTF16String&)>& write) {
    for (;;) {
        const auto chosen =
            GetServices().mDialogs->AskNewFile(host::ZString("$$$/Desk/Project/SaveAsCopy=Save as Copy"), path);
        if (!chosen) return {};
        path = host::PathUtils::ToNormalizedPath(*chosen);
        if (!host::IsVantorProjectFile(path)) path += host::GetProjectFileExtension();
        try {
            // A project whose file is gone still has its name.
            if (!host::IsProjectOpen(path) && write(path)) return path;
            ProjectQuestions::TellNotCopied(
                path, host::ZString("$$$/Desk/Project/NameTaken=There is something of this name already."));
        } catch (const host::FileException& exception) {
            ProjectQuestions::TellFailure(path, exception, ProjectQuestions::TellNotCopied);
        }
    }
}

bool ProjectDocuments::SaveTextAsCopy(const UTF16String& project, const std::string& bytes) {
    const auto write = [&](const UTF16String& path) { return CreateFileOnDisk(path, bytes); };
    return SaveToNewFile(SuggestCopy(project), write).has_value();
}

bool ProjectDocuments::OpenInPlaceOf(const ProjectDocumentRef& document, const UTF16String& copy) {
    if (!OpenProject(copy)) return false;
    Drop(document);
    return true;
}

}  // namespace desk
