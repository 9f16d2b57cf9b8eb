#include "desk/project/document/ProjectDocument.h"

#include <algorithm>
#include <utility>

#include "desk/core/names/FolderPath.h"
#include "desk/project/lock/LockKeeper.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

/// Where a file that was known at `path` as well as at `realPath` (a folder on the way is a link) is when it
/// has moved to `newPath`: what the two paths do not share at their ends is the link and what it leads to.
std::string FollowRealPath(std::string path, std::string realPath, const std::string& newPath) {
    const auto last = [](const std::string& text) {
        return text.substr(std::min(text.rfind('/'), text.size()));
    };
    while (path != realPath && !path.empty() && last(path) == last(realPath)) {
        path.resize(path.size() - last(path).size());
        realPath.resize(realPath.size() - last(realPath).size());
    }
    return path != realPath && IsSameOrBelow(newPath, path) ? realPath + newPath.substr(path.size()) : newPath;
}

void GiveUp(host::ProjectLockFileRef& lock, host::ProjectLockFileRef& targetLock) {
    const ScGiveUpTogether together;
    lock.reset();
    targetLock.reset();
}

}  // namespace

ProjectDocument::ProjectDocument(host::UTF16String path, ProjectFilePlace file, ProjectContent content)
    : mPath(std::move(path)),
      mFile(std::move(file)),
      mContent(std::make_shared<const ProjectContent>(std::move(content))) {}

ProjectDocument::~ProjectDocument() = default;

void ProjectDocument::SetProjectPath(const host::UTF16String& path) {
    if (path == mPath) return;
    const std::string bytes = host::UTF16to8(path);
    if (bytes == mFile.mRealPath || bytes == mMovedTo)
        GoOnAsRealFile(bytes);
    else if (!mFile.mIsLink)
        mFile = {bytes, false, FollowRealPath(mFile.mPath, mFile.mRealPath, bytes)};
    mPath = path;
    AnnounceState();
}

void ProjectDocument::SetRealPath(const std::string& realPath) {
    mFile.mRealPath = realPath;
    if (mFile.mIsLink) mFile.mPath = realPath;
}

/// Of a link, only the lock of its file is of use any more.
void ProjectDocument::GoOnAsRealFile(const std::string& realPath) {
    if (mFile.mIsLink) mLock = std::exchange(mTargetLock, nullptr);
    mFile = {realPath, false, realPath};
}

void ProjectDocument::SetProjectLockFile(const host::ProjectLockFileRef& lockFile) {
    SetLocks(lockFile, mTargetLock);
}

bool ProjectDocument::IsReadOnly() const {
    const auto isHeld = [](const host::ProjectLockFileRef& lock) { return lock && lock->IsHeldByReader(); };
    return !isHeld(mLock) || (mFile.mIsLink && !isHeld(mTargetLock));
}

host::UTF16String ProjectDocument::GetEditorText() const {
    return IsEditable() ? EditedText(mContent->mBytes).GetEditorText() : host::UTF16String();
}

host::UTF16String ProjectDocument::GetCurrentText() const {
    return mTextSource ? mTextSource() : GetEditorText();
}

void ProjectDocument::SetTextSource(TextSource source) {
    mTextSource = std::move(source);
    NoteEdit();
    if (!mTextSource) SetDirty(false);
}

void ProjectDocument::SetDirty(bool isModified) {
    ChangeState([&] { mIsModified = isModified && IsEditable(); });
}

void ProjectDocument::Recover(host::UTF16String text, bool isBasedOnOlder) {
    mRecovery = isBasedOnOlder ? Recovery::BasedOnOlder : Recovery::Recovered;
    mRecoveredText = std::move(text);
    host::BroadcastMessage(
        kStation_ProjectDocuments,
        ProjectDocumentMessage(ProjectDocumentMessage::What::Recovered, ProjectDocumentRef(this)));
}

void ProjectDocument::SetLocks(host::ProjectLockFileRef lock, host::ProjectLockFileRef targetLock) {
    mLock.swap(lock);
    mTargetLock.swap(targetLock);
    mTrouble.clear();
    // What was held is given up before anybody looks.
    GiveUp(lock, targetLock);
    AnnounceState();
}

void ProjectDocument::KeepLostLock() {
    const bool isOwnLost = mLock && !mLock->IsHeldByReader();
    SetLocks(isOwnLost ? mLock : nullptr, isOwnLost ? nullptr : mTargetLock);
}

void ProjectDocument::SetTrouble(const host::UTF16String& trouble) {
    if (trouble == mTrouble) return;
    mTrouble = trouble;
    AnnounceState();
}

void ProjectDocument::ReleaseLocks() {
    GiveUp(mLock, mTargetLock);
}

void ProjectDocument::ReplaceContent(ProjectContent content) {
    SetContent(std::move(content));
    mIsOutOfDate = false;
    DropChanges();
}

void ProjectDocument::DropChanges() {
    mIsModified = false;
    mMayFileDiffer = false;
    mRecovery = Recovery::None;
    if (!mContent->mMayHold.empty()) {
        // What may have been saved is dropped too: where it stands, the document is out of date.
        ProjectContent content = *mContent;
        content.mMayHold.clear();
        SetContent(std::move(content));
    }
    AnnounceContent();
    AnnounceState();
}

void ProjectDocument::NoteSaved(const host::UTF16String& text, std::string bytes, const ItemStatus& status) {
    ProjectContent content;
    content.mKind = ProjectContent::Kind::EditableText;
    content.mBytes = std::move(bytes);
    content.mStatus = status;
    mRecovery = Recovery::None;
    SetContent(std::move(content));
    ChangeState([&] {
        mMayFileDiffer = GetCurrentText() != text;
        if (!mMayFileDiffer) mIsModified = false;
        mIsOutOfDate = false;
    });
}

void ProjectDocument::NoteMayHold(std::string bytes) {
    ProjectContent content = *mContent;
    if (std::ranges::find(content.mMayHold, bytes) == content.mMayHold.end())
        content.mMayHold.push_back(std::move(bytes));
    SetContent(std::move(content));
    ChangeState([this] { mMayFileDiffer = true; });
}

void ProjectDocument::NoteStatus(const ItemStatus& status) {
    // The times of what a save may have written are not those of `mBytes`.
    if (IsSameState(status, mContent->mStatus) || !mContent->mMayHold.empty()) return;
    ProjectContent content = *mContent;
    content.mStatus = status;
    SetContent(std::move(content));
}

void ProjectDocument::SetOutOfDate(bool isOutOfDate) {
    ChangeState([&] { mIsOutOfDate = isOutOfDate; });
}

void ProjectDocument::SetContent(ProjectContent content) {
    mContent = std::make_shared<const ProjectContent>(std::move(content));
}

template <class Change>
void ProjectDocument::ChangeState(Change change) {
    const std::pair before(IsDirty(), mIsOutOfDate);
    change();
    if (std::pair(IsDirty(), mIsOutOfDate) != before) AnnounceState();
}

void ProjectDocument::AnnounceState() {
    const auto& open = OpenProjectList::Instance().Get();
    const ProjectDocumentRef self(this);
    if (std::find(open.begin(), open.end(), self) == open.end()) return;
    host::BroadcastMessage(kStation_ProjectDocuments,
                           ProjectDocumentMessage(ProjectDocumentMessage::What::State, self));
    OpenProjectList::Instance().AnnounceReadOnlyState(self);
}

void ProjectDocument::AnnounceContent() {
    host::BroadcastMessage(
        kStation_ProjectDocuments,
        ProjectDocumentMessage(ProjectDocumentMessage::What::Content, ProjectDocumentRef(this)));
}

ProjectDocumentRef ToDocument(const host::ProjectRef& project) {
    return dynamic_cast<ProjectDocument*>(project.get());
}

ProjectDocumentMessage::ProjectDocumentMessage(What what, ProjectDocumentRef document)
    : mWhat(what), mDocument(std::move(document)) {}

ProjectDocumentMessage::~ProjectDocumentMessage() = default;

}  // namespace desk
