// Reloading, and the switch between read-only and read-write.

#include <cerrno>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/AskVolume.h"
#include "desk/project/document/ProjectDocumentsImpl.h"
#include "host/core/Localizer.h"

namespace desk {

using ProjectQuestions::SaveAnswer;

namespace {

/// Why the document cannot be edited although its lock is ours; empty when it can.
host::UTF16String FindReasonAgainstEditing(const ProjectDocumentRef& document) {
    FileComparison found;
    try {
        found = AskVolume(host::ZString("$$$/Desk/Project/Checking=Checking Project"), "compare",
                          document->GetProjectPath(),
                          [content = document->ShareContent(), path = document->GetFile().mPath] {
                              return CompareProjectFile(*GetServices().mFileSystem, path, *content, true);
                          });
    } catch (const host::FileException& exception) {
        return ReasonOf(exception);
    }
    if (found.mOutcome == FileComparison::Outcome::Same) return {};
    if (found.mOutcome == FileComparison::Outcome::Missing)
        return host::ZString("$$$/Desk/Project/NoLongerThere=Its file is no longer there.");
    document->SetOutOfDate(true);
    return host::ZString(
        "$$$/Desk/Project/ReloadFirst=Its file has changed since it was read. Reload it first.");
}

/// After a save that is in doubt, this machine may still have the old file in mind.
ProjectContent ReadAnew(FileSystem& fileSystem, const std::string& file, const ProjectContent& before) {
    if (!before.mMayHold.empty()) fileSystem.WaitForCaches(FolderOf(file));
    return ReadProjectFile(fileSystem, file);
}

}  // namespace

bool ProjectDocuments::ReloadProject(const host::ProjectRef& project) {
    const ProjectDocumentRef document = ToDocument(project);
    const Operation operation(*this, document);
    if (!operation.HasBegun()) return false;
    const host::UTF16String path = document->GetProjectPath();
    const bool losesText = document->IsDirty() || document->IsRecovered();
    if (losesText && !ProjectQuestions::AskToReload(path)) return false;
    try {
        document->ReplaceContent(
            AskVolume(host::ZString("$$$/Desk/Project/Reloading=Reloading Project"), "reload", path,
                      [content = document->ShareContent(), file = document->GetFile().mPath] {
                          return ReadAnew(*GetServices().mFileSystem, file, *content);
                      }));
        return true;
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ECANCELED) ProjectQuestions::TellNotReloaded(path, ReasonOf(exception));
        return false;
    }
}

bool ProjectDocuments::SetProjectReadOnly(const host::ProjectRef& project, bool readOnly) {
    const ProjectDocumentRef document = ToDocument(project);
    const Operation operation(*this, document);
    if (!operation.HasBegun()) return false;
    if (document->IsReadOnly() == readOnly) return true;
    return readOnly ? MakeReadOnly(document) : MakeWritable(document);
}

bool ProjectDocuments::MakeReadOnly(const ProjectDocumentRef& document) {
    if (document->IsDirty()) {
        const SaveAnswer answer = AskToSave(document);
        if (answer == SaveAnswer::Cancel) return false;
        if (answer == SaveAnswer::Discard) document->DropChanges();
    }
    if (document->IsDirty()) {
        const Saving saving = Save(document);
        if (saving.mResult == SaveResult::Copied) OpenInPlaceOf(document, saving.mCopy);
        if (saving.mResult != SaveResult::Saved || document->IsDirty()) return false;
    }
    document->SetLocks({}, {});
    return true;
}

bool ProjectDocuments::MakeWritable(const ProjectDocumentRef& document) {
    const host::UTF16String path = document->GetProjectPath();
    const ProjectLocking locking = TakeProjectLocks(path, document->GetFile());
    if (locking.mObstacle != ProjectLocking::Obstacle::None) {
        ProjectQuestions::TellNotWritable(path, ProjectQuestions::DescribeObstacle(path, locking));
        return false;
    }
    // Under the lock, so that nobody writes after this look. It goes with `locking` if the look finds a change.
    const host::UTF16String reason = FindReasonAgainstEditing(document);
    if (!reason.empty()) {
        ProjectQuestions::TellNotWritable(path, reason);
        return false;
    }
    document->SetLocks(locking.mLock, locking.mTargetLock);
    return true;
}

}  // namespace desk
