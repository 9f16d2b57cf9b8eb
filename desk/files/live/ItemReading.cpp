#include "desk/files/live/ItemReading.h"

#include <cerrno>
#include <utility>

#include "desk/core/durable/Presence.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/work/WorkerPool.h"
#include "host/files/FileException.h"
#include "host/project/ProjectFiles.h"

namespace desk {
namespace {

/// What stands at `path`: a link's target, or the link itself when it leads nowhere. `isLink` is true for what
/// is known to be a link, and becomes true for what is.
ItemStatus ReadStatus(FileSystem& fileSystem, const std::string& path, bool& isLink) {
    if (!isLink) {
        const ItemStatus status = fileSystem.Status(path, false);
        isLink = status.mKind == ItemKind::Link;
        if (!isLink) return status;
    }
    try {
        return fileSystem.Status(path, true);
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ENOENT && exception.SystemError() != ELOOP) throw;
    }
    return fileSystem.Status(path, false);
}

bool IsSame(const ItemStatus& a, const ItemStatus& b) {
    return a.mKind == b.mKind && a.mSize == b.mSize && a.mModified == b.mModified && a.mCreated == b.mCreated;
}

bool IsSame(const LockRecord& a, const LockRecord& b) {
    return a.mIsReadable == b.mIsReadable && a.mNonce == b.mNonce && a.mUser == b.mUser &&
           a.mMachine == b.mMachine && a.mTakenAt == b.mTakenAt && a.mPid == b.mPid;
}

bool IsLockNews(const ItemFacts& known, const ItemFacts& read) {
    if (read.mHasLockFile != known.mHasLockFile) return true;
    return read.mLock && !(known.mLock && IsSame(*known.mLock, *read.mLock));
}

}  // namespace

bool IsProjectName(const host::UTF16String& name) {
    return host::IsVantorProjectFile(name);
}

std::string LockPath(const FolderPath& folder, const host::UTF16String& projectName) {
    return JoinPath(folder.mBytes, host::UTF16to8(GetLockFileName(projectName)));
}

ItemUpdate ReadItem(const FolderPath& folder, const host::UTF16String& name, bool lookForLock,
                    bool isKnownLink) {
    FileSystem& fileSystem = *GetServices().mFileSystem;
    ItemUpdate update;
    update.mName = name;
    update.mFacts.mIsLink = isKnownLink;
    const std::string bytes = host::UTF16to8(name);
    try {
        const ItemStatus status = ReadStatus(fileSystem, JoinPath(folder.mBytes, bytes), update.mFacts.mIsLink);
        update.mFacts.mKind = status.mKind;
        update.mFacts.mStatus = status;
    } catch (const host::FileException& exception) {
        update.mIsGone = IsAbsence(exception.SystemError());
        update.mSystemError = exception.SystemError();
        return update;
    }
    const bool isProject = update.mFacts.mKind != ItemKind::Folder && IsProjectName(name);
    update.mIsGone =
        IsHiddenName(bytes, update.mFacts.mKind) || (!isProject && update.mFacts.mKind != ItemKind::Folder);
    if (isProject && lookForLock && !update.mIsGone) {
        update.mIsLockKnown = true;
        if (auto lock = ReadLockRecord(fileSystem, LockPath(folder, name))) {
            update.mFacts.mHasLockFile = true;
            update.mFacts.mLock = std::make_shared<const LockRecord>(*std::move(lock));
        }
    }
    return update;
}

std::vector<ItemUpdate> ReadChanged(const FolderPath& folder, const std::set<host::UTF16String>& names,
                                    AnswerWatch::Call& call) {
    std::set<host::UTF16String> items;
    for (const host::UTF16String& name : names) {
        if (host::UTF16String project = GetProjectNameOfLockFile(name); !project.empty())
            items.insert(std::move(project));
        else if (!IsHiddenName(host::UTF16to8(name), ItemKind::Unknown))
            items.insert(name);
    }
    std::vector<ItemUpdate> updates;
    for (const host::UTF16String& name : items) {
        updates.push_back(ReadItem(folder, name, true));
        call.Next();
    }
    return updates;
}

bool IsNews(const ItemFacts& known, const ItemFacts& read, bool isLockKnown) {
    if (read.mKind != ItemKind::Unknown && read.mKind != known.mKind) return true;
    if (read.mStatus && !(known.mStatus && IsSame(*known.mStatus, *read.mStatus))) return true;
    return isLockKnown && IsLockNews(known, read);
}

bool MergeFacts(ItemFacts& known, ItemFacts&& read, bool isLockKnown) {
    const bool isNews = IsNews(known, read, isLockKnown);
    if (isLockKnown && IsLockNews(known, read)) {
        known.mHasLockFile = read.mHasLockFile;
        known.mLock = std::move(read.mLock);
    }
    if (read.mKind != ItemKind::Unknown) {
        known.mKind = read.mKind;
        known.mIsLink = read.mIsLink;
    }
    if (read.mStatus) known.mStatus = std::move(read.mStatus);
    return isNews;
}

}  // namespace desk
