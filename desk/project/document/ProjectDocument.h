#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "desk/project/document/OpenProjectList.h"
#include "desk/project/document/ProjectFile.h"
#include "host/core/Export.h"
#include "host/core/Messaging.h"

namespace desk {

/// An open project: its path, its content, its lock, and what has become of them. What changes is announced on
/// `kStation_ProjectDocuments`, and what a row shows also as `host::ReadOnlyStateChangedMessage`.
/// `ProjectDocuments` makes it and runs everything that asks the user or waits for the volume. UI thread.
///
/// An editor shows `GetContent` and, if that is editable text, `GetEditorText`. While it exists it lends itself
/// by `SetTextSource`, and tells by `SetDirty` whether its text differs from what it was given or last saved
/// (Qt: `QTextDocument::modificationChanged`), and by `NoteEdit` that it has changed. It lets nobody type while
/// `IsReadOnly`. On `Content` it takes the text anew; on `Recovered` it puts `TakeRecoveredText` in place of
/// what it shows, as a change that can be undone; on `State` it looks at dirty, read-only and out of date anew
/// (after a save the document is not dirty: the editor's text counts as unmodified from then on, its undo steps
/// stay).
///
/// It is dirty whenever the editor's text is not what is known to be in the file. So after a save of which it
/// is not known whether it came through it is, whatever the editor says (the user may undo), until a save has
/// succeeded or the file was read anew.
class ZUHOST_API ProjectDocument final : public OpenProject {
public:
    /// A text of lines as `EditedText` takes it (`QTextDocument::toRawText`).
    using TextSource = std::function<host::UTF16String()>;

    /// `path`: normalised. Read-only until it gets its locks.
    ProjectDocument(host::UTF16String path, ProjectFilePlace file, ProjectContent content);
    ~ProjectDocument() override;

    host::UTF16String GetProjectPath() const override { return mPath; }
    /// Where a folder on the way is a link, its real path is taken to have moved along. A project that was
    /// opened through a link and is told its file's real path goes on under that.
    void SetProjectPath(const host::UTF16String& path) override;
    host::UTF16String GetRealPath() const override { return host::UTF8to16(mFile.mRealPath); }
    /// The folder that the file really lies in has moved: it is at `realPath` (bytes) now.
    void SetRealPath(const std::string& realPath);
    /// The file itself has moved to `realPath` (bytes), not the link through which it may have been opened.
    /// Whoever moves it tells the project's new path afterwards.
    void NoteFileMove(std::string realPath) { mMovedTo = std::move(realPath); }
    bool IsDirty() const override { return mIsModified || mMayFileDiffer; }
    void SetProjectLockFile(const host::ProjectLockFileRef& lockFile) override;
    bool IsReadOnly() const override;
    bool IsOutOfDate() const override { return mIsOutOfDate; }

    const ProjectContent& GetContent() const { return *mContent; }
    /// The same, for workers.
    const ProjectContentPtr& ShareContent() const { return mContent; }
    /// True when the content can be edited at all; whether it may be now says `IsReadOnly`.
    bool IsEditable() const { return mContent->mKind == ProjectContent::Kind::EditableText; }
    /// The text as it was last read or saved, for the editor; empty when it is not editable.
    host::UTF16String GetEditorText() const;

    /// The editor that shows the document; an empty function when it goes, and its edits with it.
    void SetTextSource(TextSource source);
    /// Told by the editor, of its text. Ignored for what is not editable.
    void SetDirty(bool isModified);

    /// Told by the editor: its text has changed.
    void NoteEdit() { ++mEdits; }
    /// Differs whenever what the editor shows may differ.
    std::uint64_t CountEdits() const { return mEdits; }

    /// `text` was unsaved when a program ended: the editor shows it from now on, as unsaved changes. With
    /// `isBasedOnOlder` the file has changed since the text was based on it: a save asks first.
    void Recover(host::UTF16String text, bool isBasedOnOlder);
    host::UTF16String TakeRecoveredText() { return std::move(mRecoveredText); }
    /// The editor was given recovered text that has been neither saved nor discarded. Also while it is undone,
    /// when the document may not be dirty.
    bool IsRecovered() const { return mRecovery != Recovery::None; }
    /// A save would overwrite what was written to the file after the text was based on it.
    bool IsBasedOnOlder() const { return mRecovery == Recovery::BasedOnOlder; }

    /// What the editor shows now (see `EditedText`).
    host::UTF16String GetCurrentText() const;
    /// Where the file really is: a save writes there.
    const ProjectFilePlace& GetFile() const { return mFile; }

    const host::ProjectLockFileRef& GetLock() const { return mLock; }
    /// A project that is a link holds the lock of the file that it leads to as well.
    const host::ProjectLockFileRef& GetTargetLock() const { return mTargetLock; }
    /// Sets both locks; empty references make the project read-only.
    void SetLocks(host::ProjectLockFileRef lock, host::ProjectLockFileRef targetLock);
    /// One of the locks is lost: it stays, and says so; another is of no use any more, and is given up.
    void KeepLostLock();
    /// The volume does not tell of the project's locks, for this reason (a sentence, ready to be shown); empty
    /// when it does. The locks stay, and the project cannot be saved meanwhile.
    void SetTrouble(const host::UTF16String& trouble);
    const host::UTF16String& GetTrouble() const { return mTrouble; }
    /// Gives the locks up without a word, as the project is being closed.
    void ReleaseLocks();

    /// The file has been read anew: the editor takes the text anew, and unsaved changes are gone.
    void ReplaceContent(ProjectContent content);
    /// Unsaved changes are dropped: the editor takes the text anew that was last read or saved.
    void DropChanges();
    /// `bytes`, which the editor showed as `text`, stand in the file now, in this state: unsaved changes are
    /// gone if it still does.
    void NoteSaved(const host::UTF16String& text, std::string bytes, const ItemStatus& status);
    /// After a save of `bytes` of which it is not known whether it came through.
    void NoteMayHold(std::string bytes);
    /// The file's times have changed, its bytes have not.
    void NoteStatus(const ItemStatus& status);
    void SetOutOfDate(bool isOutOfDate);

private:
    void GoOnAsRealFile(const std::string& realPath);
    void SetContent(ProjectContent content);
    template <class Change>
    void ChangeState(Change change);
    void AnnounceState();
    void AnnounceContent();

    host::UTF16String mPath;
    ProjectFilePlace mFile;
    std::string mMovedTo;
    ProjectContentPtr mContent;
    host::ProjectLockFileRef mLock;
    host::ProjectLockFileRef mTargetLock;
    host::UTF16String mTrouble;
    TextSource mTextSource;
    /// What the editor says of its text.
    bool mIsModified = false;
    /// What the editor calls unmodified may not be what is in the file.
    bool mMayFileDiffer = false;
    std::uint64_t mEdits = 0;
    /// Also once such changes are undone, since they can be done again; until the document is saved or read
    /// anew.
    enum class Recovery { None, Recovered, BasedOnOlder };
    Recovery mRecovery = Recovery::None;
    host::UTF16String mRecoveredText;
    bool mIsOutOfDate = false;
};

using ProjectDocumentRef = host::RefPtr<ProjectDocument>;

/// The open project as a document; empty for an empty reference or one that is none (tests have such).
ZUHOST_API ProjectDocumentRef ToDocument(const host::ProjectRef& project);

/// Announced on `kStation_ProjectDocuments`, at once, on the UI thread. That a document has been opened or
/// closed is told by `host::ProjectOpenedMessage` and `host::ProjectClosedMessage`.
class ZUHOST_API ProjectDocumentMessage : public host::MessageTemplate<ProjectDocumentMessage> {
public:
    enum class What {
        /// Dirty, read-only, out of date, or the path: what the tab's title shows.
        State,
        /// The content has been replaced: the editor takes it anew (its kind too). The state may have changed
        /// with it.
        Content,
        /// The editor takes `ProjectDocument::TakeRecoveredText`.
        Recovered,
        /// The document is to be brought to the front.
        Activated,
    };
    ProjectDocumentMessage(What what, ProjectDocumentRef document);
    ~ProjectDocumentMessage() override;
    What GetWhat() const { return mWhat; }
    const ProjectDocumentRef& GetDocument() const { return mDocument; }

private:
    What mWhat;
    ProjectDocumentRef mDocument;
};

inline const host::StationID kStation_ProjectDocuments{"desk.projectdocuments"};

}  // namespace desk
