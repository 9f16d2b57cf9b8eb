// Opening, with its lock and its questions.

#include <cerrno>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/work/AskVolume.h"
#include "desk/project/document/ProjectDocumentsImpl.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

using host::UTF16String;
using ProjectQuestions::LockedAnswer;

/// Copies that somebody else has made under the same name meanwhile.
constexpr int kMostCopyNames = 20;

void TellNotOpened(const UTF16String& path, const UTF16String& reason, ProjectDocuments::QuietOpening* quiet) {
    if (quiet)
        quiet->mReason = reason;
    else
        ProjectQuestions::TellNotOpened(path, reason);
}

void TellNotOpened(const UTF16String& path, const host::FileException& exception,
                   ProjectDocuments::QuietOpening* quiet) {
    if (exception.SystemError() == EINVAL)
        return TellNotOpened(path, host::ZString("$$$/Desk/Project/NoFile=It is not a file."), quiet);
    if (exception.SystemError() != ECANCELED) return TellNotOpened(path, ReasonOf(exception), quiet);
    if (quiet) quiet->mIsCancelled = true;
}

void TellInTrash(const UTF16String& path, ProjectDocuments::QuietOpening* quiet) {
    const UTF16String text = host::ZString(
        "$$$/Vantor/Desk/Project/InTrash=“@0” is in the trash. Nothing is opened from there; move it to another "
        "folder first.",
        {host::PathUtils::GetFilePart(path)});
    if (quiet)
        quiet->mReason = text;
    else
        TellUser(text);
}

/// The answer to `question` about the file at `filePath`; absent when it failed, which the user has been told,
/// or was cancelled.
template <class Answer>
std::optional<Answer> AskToOpen(const UTF16String& path, const std::string& filePath,
                                ProjectDocuments::QuietOpening* quiet,
                                Answer (*question)(FileSystem&, const std::string&)) {
    try {
        return AskVolume(host::ZString("$$$/Desk/Project/Opening=Opening Project"), "open", path,
                         [question, filePath] { return question(*GetServices().mFileSystem, filePath); });
    } catch (const host::FileException& exception) {
        TellNotOpened(path, exception, quiet);
        return {};
    }
}

}  // namespace

bool ProjectDocuments::OpenProject(const UTF16String& path) {
    return OpenUnlessOpen(host::PathUtils::ToNormalizedPath(path), nullptr);
}

ProjectDocuments::QuietOpening ProjectDocuments::OpenWithoutQuestions(const UTF16String& path) {
    QuietOpening opening;
    const UTF16String normalized = host::PathUtils::ToNormalizedPath(path);
    host::ProjectRef open;
    if (OpenUnlessOpen(normalized, &opening))
        opening.mDocument = ToDocument(host::IsProjectOpen(normalized, open) ? open : GetActiveProject());
    return opening;
}

bool ProjectDocuments::OpenUnlessOpen(const UTF16String& path, QuietOpening* quiet) {
    host::ProjectRef open;
    if (host::IsProjectOpen(path, open)) {
        BringToFront(open, path);
        return true;
    }
    if (!host::IsVantorProjectFile(path)) {
        TellNotOpened(path, host::ZString("$$$/Desk/Project/NoProject=It is not a project."), quiet);
        return false;
    }
    if (host::IsInZuProductionTrash(path, true)) {
        TellInTrash(path, quiet);
        return false;
    }
    if (!mOpening.insert(path).second) return false;
    const bool isOpen = Open(path, quiet);
    mOpening.erase(path);
    return isOpen;
}

/// It may be open under another name.
void ProjectDocuments::BringToFront(const host::ProjectRef& project, const UTF16String& path) {
    SetActiveProject(project);
    const UTF16String name = ProjectQuestions::NameOf(path);
    const UTF16String openName = ProjectQuestions::NameOf(project->GetProjectPath());
    if (name != openName)
        TellUser(host::ZString("$$$/Desk/Project/SameFile=“@0” and “@1” are one file, which is open already.",
                               {name, openName}));
}

bool ProjectDocuments::Open(const UTF16String& path, QuietOpening* quiet) {
    const auto file = AskToOpen(path, host::UTF16to8(path), quiet, FindProjectFile);
    if (!file) return false;
    for (const ProjectDocumentRef& document : GetDocuments())
        if (document->GetFile().mRealPath == file->mRealPath) return BringToFront(document, path), true;
    bool isCopyOpen = false;
    const std::optional<ProjectLocking> locking = LockOrAsk(path, *file, quiet, isCopyOpen);
    if (!locking) return isCopyOpen;
    // Under the lock, so that nobody writes after this reading.
    auto content = AskToOpen(path, file->mPath, quiet, ReadProjectFile);
    if (!content) return false;
    const ProjectDocumentRef document = new ProjectDocument(path, *file, *std::move(content));
    document->SetLocks(locking->mLock, locking->mTargetLock);
    OpenProjectList::Instance().Add(document);
    SetActiveProject(document);
    return true;
}

std::optional<ProjectLocking> ProjectDocuments::LockOrAsk(const UTF16String& path, const ProjectFilePlace& file,
                                                          QuietOpening* quiet, bool& isCopyOpen) {
    ProjectLocking locking = TakeProjectLocks(path, file);
    if (locking.mObstacle == ProjectLocking::Obstacle::None) return locking;
    if (quiet) {
        quiet->mReason = ProjectQuestions::DescribeObstacle(path, locking);
        return ProjectLocking{};
    }
    switch (ProjectQuestions::AskAboutLock(path, locking)) {
        case LockedAnswer::OpenReadOnly:
            return ProjectLocking{};
        case LockedAnswer::MakeCopy:
            isCopyOpen = OpenCopy(path, file);
            break;
        case LockedAnswer::Cancel:
            break;
    }
    return {};
}

/// A link's copy is a copy of what it leads to.
bool ProjectDocuments::OpenCopy(const UTF16String& path, const ProjectFilePlace& file) {
    host::UTF16StringVec taken;
    UTF16String copy;
    for (int i = 0; i < kMostCopyNames; ++i) {
        copy = host::GetZuProductionItemCopyPath(path, taken);
        try {
            if (CopyFileOnDisk(file.mPath, copy)) return OpenProject(copy);
            taken.push_back(host::PathUtils::GetFullFilePart(copy));
        } catch (const host::FileException& exception) {
            ProjectQuestions::TellFailure(copy, exception, ProjectQuestions::TellNotCopied);
            return false;
        }
    }
    ProjectQuestions::TellNotCopied(copy, ReasonOf(host::FileException("copy to", copy, EEXIST)));
    return false;
}

}  // namespace desk
