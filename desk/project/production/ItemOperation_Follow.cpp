// What follows the items that have moved: the locks of this process, and its open projects. The one place where
// the path of an open project is rewritten.
#include <algorithm>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/live/LookAgain.h"
#include "desk/project/document/OpenProjectList.h"
#include "desk/project/document/ProjectDocument.h"
#include "desk/project/production/ItemOperation.h"
#include "host/core/Localizer.h"
#include "host/project/OpenProjects.h"

namespace desk {

namespace {

/// A folder that has moved. Paths in the bytes of the disk.
struct MovedFolder {
    const std::string& mFrom;
    const std::string& mTo;

    bool Holds(const std::string& path) const { return path.starts_with(mFrom + '/'); }
    /// Where what stood at `path` in it stands now.
    std::string Follow(const std::string& path) const { return mTo + path.substr(mFrom.size()); }
};

/// The folder in which the file really is has moved, and the link through which it was opened leads nowhere.
void GoOnWithoutLink(ProjectDocument& document) {
    const host::UTF16String realPath = document.GetRealPath();
    // A link's own lock has not moved.
    if (!document.GetFile().mIsLink)
        LockKeeper::Instance().FollowMove(GetLockPath(document.GetProjectPath()), GetLockPath(realPath));
    document.SetProjectPath(realPath);
}

/// What is open for writing goes on at its new place, whatever a look at that place says; its lock has
/// followed.
void FollowFolder(const MovedFolder& folder, ProjectDocument& document) {
    if (document.IsReadOnly()) return;
    const std::string path = host::UTF16to8(document.GetProjectPath());
    const std::string realPath = document.GetFile().mRealPath;
    const bool isFileMoved = path != realPath && folder.Holds(realPath);
    if (isFileMoved) document.SetRealPath(folder.Follow(realPath));
    if (folder.Holds(path))
        document.SetProjectPath(host::UTF8to16(folder.Follow(path)));
    else if (isFileMoved)
        GoOnWithoutLink(document);
}

template <class Action>
void ForEachDocument(Action action) {
    const auto open = OpenProjectList::Instance().Get();
    for (const OpenProjectRef& project : open)
        if (const ProjectDocumentRef document = ToDocument(project)) action(*document);
}

}  // namespace

void ItemOperation::Follow() {
    for (const std::size_t flushed = mFlushed; mFollowed < flushed; ++mFollowed) FollowItem(mItems[mFollowed]);
}

void ItemOperation::FollowItem(Item& item) {
    if (!item.IsDone() || IsCopy()) return;
    if (item.mOutcome.mIsFolder) {
        item.mLocksBefore = LockKeeper::Instance().FollowMove(item.mFrom, item.mTo);
        ForEachDocument([&](auto& document) { FollowFolder({item.mFrom, item.mTo}, document); });
        return;
    }
    ForEachDocument([&](auto& document) {
        if (document.GetFile().mRealPath == item.mFrom) document.NoteFileMove(item.mTo);
    });
    host::ProjectRef project;
    if (mVerb != Verb::Move || !item.IsProject() || !host::IsProjectOpen(item.mSource, project)) return;
    project->SetProjectPath(item.mDestination);
    if (item.mOutcome.mWasHeld) project->SetProjectLockFile(item.mLocks->KeepDestination());
}

/// This process goes on with its locks at the new place: what a move to another volume has left of them at the
/// old one is anybody's.
void ItemOperation::GiveUpLeftLocks() {
    std::vector<LockRemains> left;
    for (Item& item : mItems) {
        if (item.mLocks) item.mLocks->Finish();
        if (!item.mLeftBehind.mPath.empty())
            left.insert(left.end(), item.mLocksBefore.begin(), item.mLocksBefore.end());
    }
    LockKeeper::Instance().GiveUpInBackground({}, std::exchange(mRemains, {}));
    if (left.empty()) return;
    RunLongWork(host::ZString("$$$/Desk/Project/Locking=Locking Project"), [&](WorkProgress&) {
        LockProtocol protocol(*GetServices().mFileSystem, *GetServices().mDesktop);
        for (const LockRemains& lock : left) protocol.RemoveLeftBehind(lock.mPath, lock.mNonce);
    });
}

/// Each folder once.
void ItemOperation::LookAgain() const {
    std::vector<std::u16string_view> folders;
    const auto lookAround = [&folders](const host::UTF16String& path) {
        const std::u16string_view folder = FolderOf(path);
        if (std::ranges::find(folders, folder) != folders.end()) return;
        folders.push_back(folder);
        LookAgainAround(path);
    };
    for (const Item& item : mItems) {
        if (!IsCopy()) lookAround(item.mSource);
        lookAround(item.mDestination);
    }
}

}  // namespace desk
