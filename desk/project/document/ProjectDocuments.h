#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "desk/project/document/ProjectDocument.h"
#include "desk/project/document/ProjectLocking.h"
#include "desk/project/document/ProjectQuestions.h"
#include "host/core/Export.h"
#include "host/project/DocumentManager.h"

namespace desk {

class LockWatch;
class OutOfDateWatch;
struct LockFinding;

/// The host's document manager: every operation of `host::DocumentManager`, with its questions by the process's
/// `Dialogs`. Files are read and written by workers while the window lives (`RunLongWork`). The process has one
/// while it has a place for open projects: the program makes it before the window and destroys it after it.
/// While an operation on a project asks or waits, another one on the same project is refused (false). A project
/// whose lock was broken or removed becomes read-only within seconds, with its unsaved changes, and the user is
/// told who has it. UI thread.
class ZUHOST_API ProjectDocuments final : public host::DocumentManager {
public:
    /// Becomes `host::DocumentManager::Instance()`.
    ProjectDocuments();
    /// Closes what is still open without a question, and gives the locks up.
    ~ProjectDocuments() override;

    /// Null while there is none.
    static ProjectDocuments* Instance();

    host::UTF16String CreateProject(const host::UTF16String& folder) override;
    bool OpenProject(const host::UTF16String& path) override;
    bool SaveProject(const host::ProjectRef& project) override;
    bool CloseProject(const host::ProjectRef& project, bool prompt) override;
    bool CloseAllProjects() override;
    bool ReloadProject(const host::ProjectRef& project) override;
    bool SetProjectReadOnly(const host::ProjectRef& project, bool readOnly) override;
    host::ProjectRef GetActiveProject() const override;
    /// Announces `Activated` when another project was in front. The tabs call it too, when the user brings one
    /// to the front; an empty reference when there is none any more.
    void SetActiveProject(const host::ProjectRef& project) override;

    /// What came of opening a project without a question.
    struct QuietOpening {
        /// Empty when it is not open.
        ProjectDocumentRef mDocument;
        /// Why it is not open, or why it is open read-only, as sentences; empty when neither.
        host::UTF16String mReason;
        bool mIsCancelled = false;
    };
    /// `OpenProject` for several that are opened together: nothing is asked or told but for the waiting, which
    /// can be cancelled. A project that cannot be locked is opened read-only.
    QuietOpening OpenWithoutQuestions(const host::UTF16String& path);

    /// Saves every project with unsaved changes; one that fails does not keep the others. False when any is
    /// still unsaved.
    bool SaveAllProjects();
    /// Asks for a place and saves the project's present content there as a new project, which is opened in its
    /// place; the project's own file stays as it is. False when the user cancelled or it could not be written.
    bool SaveProjectAsCopy(const host::ProjectRef& project);
    /// Asks for a place and saves `bytes`, which were meant for the project at `project`, there as a new
    /// project. It is not opened. False when the user cancelled or it could not be written.
    bool SaveTextAsCopy(const host::UTF16String& project, const std::string& bytes);
    /// Closes the projects in `folder` (at any depth) like `CloseAllProjects`: all of them or, with false,
    /// none. To be called before the production in that folder is closed, which after false is not to happen.
    bool CloseProjectsIn(const host::UTF16String& folder);

private:
    friend class host::ScEnableSaveApplyToAllOption;
    class Operation;
    class Closing;

    /// Scopes may outlive the manager: they are counted apart from it.
    static void CountApplyToAllScope(int step);

    enum class SaveResult {
        Saved,
        /// The user saved a copy, at `mCopy`; the project's own file is as it was.
        Copied,
        NotSaved,
    };
    struct Saving {
        SaveResult mResult = SaveResult::NotSaved;
        host::UTF16String mCopy;
    };

    /// With `quiet` (may be null) nothing is asked or told: it takes what there would be to tell.
    bool OpenUnlessOpen(const host::UTF16String& path, QuietOpening* quiet);
    bool Open(const host::UTF16String& path, QuietOpening* quiet);
    void BringToFront(const host::ProjectRef& project, const host::UTF16String& path);
    /// Absent when the user does not want to open the project itself (a copy may be open then: `isCopyOpen`).
    /// Without locks: read-only.
    std::optional<ProjectLocking> LockOrAsk(const host::UTF16String& path, const ProjectFilePlace& file,
                                            QuietOpening* quiet, bool& isCopyOpen);
    bool OpenCopy(const host::UTF16String& path, const ProjectFilePlace& file);

    Saving Save(const ProjectDocumentRef& document);
    std::optional<Saving> CheckLocks(const ProjectDocumentRef& document);
    Saving StopSaving(const ProjectDocumentRef& document, const LockReport& report);
    bool NoteLoss(const ProjectDocumentRef& document, const LockFinding& loss);
    FileWriting Write(const ProjectDocumentRef& document, const host::UTF16String& text,
                      const std::optional<FileComparison>& approved);
    Saving SaveAsCopy(const ProjectDocumentRef& document);
    /// Asks for a place, beginning with `path`, until `write` has made a file there (false: something stands
    /// there), or the user cancels.
    static std::optional<host::UTF16String> SaveToNewFile(
        host::UTF16String path, const std::function<bool(const host::UTF16String& path)>& write);
    /// The project's own tab goes when the copy could be opened.
    bool OpenInPlaceOf(const ProjectDocumentRef& document, const host::UTF16String& copy);

    bool Close(const ProjectDocumentRef& document, bool prompt);
    bool SaveToClose(const ProjectDocumentRef& document);
    /// All that `find` finds, or none.
    bool CloseAll(const std::function<std::vector<ProjectDocumentRef>()>& find);
    ProjectQuestions::SaveAnswer AskToSave(const ProjectDocumentRef& document);
    void Drop(const ProjectDocumentRef& document);
    void DropAll(const std::vector<ProjectDocumentRef>& documents);

    bool MakeReadOnly(const ProjectDocumentRef& document);
    bool MakeWritable(const ProjectDocumentRef& document);

    std::vector<ProjectDocumentRef> GetDocuments() const;
    bool IsOpen(const ProjectDocumentRef& document) const;

    std::set<const ProjectDocument*> mBusy;
    std::set<host::UTF16String> mOpening;
    ProjectDocumentRef mActive;
    std::optional<ProjectQuestions::SaveAnswer> mAnswerForAll;
    std::unique_ptr<OutOfDateWatch> mOutOfDateWatch;
    std::unique_ptr<LockWatch> mLockWatch;
};

}  // namespace desk
