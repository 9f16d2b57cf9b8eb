#include "desk/files/search/FolderWalk.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/core/work/WorkProgress.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace desk {

void FolderWalk::Start(const host::UTF16StringVec& folders) {
    // Not done before all have been submitted.
    mFoldersLeft = 1;
    SubmitFolders(folders);
    if (--mFoldersLeft == 0) Finish();
}

void FolderWalk::Cancel() {
    mIsCancelled = true;
    mCompletion = nullptr;
}

FolderWalk::Result FolderWalk::Run(const WorkProgress& progress) {
    const auto throwIfCancelled = [&] {
        progress.ThrowIfCancelled("search", host::UTF16to8(mParameters.mRoot));
    };
    mIsRun = true;
    SubmitFolders({mParameters.mRoot});
    while (!mWaiting.empty()) {
        host::UTF16StringVec folders;
        while (!mWaiting.empty()) folders.push_back(TakeNext());
        RunShared(folders.size(), [&](std::size_t index) {
            throwIfCancelled();
            EnterFolder(folders[index]);
        });
    }
    throwIfCancelled();
    return std::move(mResult);
}

void FolderWalk::SubmitFolders(host::UTF16StringVec siblings) {
    if (siblings.empty()) return;
    const std::size_t count = siblings.size();
    {
        const std::lock_guard lock(mMutex);
        mWaiting.push_back(std::move(siblings));
    }
    if (mIsRun) return;
    mFoldersLeft += count;
    // Behind what waits already: a long walk must not hold up listings and polls.
    for (std::size_t i = 0; i < count; ++i)
        mLane->SubmitLast([self = shared_from_this()] {
            // Whoever waits for the walk hears of its end, whatever happens in one folder.
            if (!self->mIsCancelled) RunTask([&] { self->EnterFolder(self->TakeNext()); }, "walk");
            if (--self->mFoldersLeft == 0) self->Finish();
        });
}

host::UTF16String FolderWalk::TakeNext() {
    const std::lock_guard lock(mMutex);
    host::UTF16StringVec siblings = std::move(mWaiting.front());
    mWaiting.pop_front();
    host::UTF16String next = std::move(siblings.back());
    siblings.pop_back();
    if (!siblings.empty()) mWaiting.push_back(std::move(siblings));
    return next;
}

void FolderWalk::EnterFolder(const host::UTF16String& folder) {
    std::vector<FolderEntry> entries;
    if (!ListFolder(folder, entries)) return;
    host::UTF16StringVec below;
    std::erase_if(entries,
                  [&](FolderEntry& entry) { return mIsCancelled || !TakeEntry(folder, entry, below); });
    SubmitFolders(std::move(below));
    if (!mIsCancelled) mParameters.mVisitor(folder, entries);
}

bool FolderWalk::ListFolder(const host::UTF16String& folder, std::vector<FolderEntry>& entries) {
    std::optional<AnswerWatch::Call> call;
    if (mParameters.mAnswerWatch) call.emplace(mParameters.mAnswerWatch, std::make_shared<FolderPath>(folder));
    try {
        entries = GetServices().mFileSystem->ListFolder(host::UTF16to8(folder));
        return true;
    } catch (const host::FileException& exception) {
        // What vanishes under a walk is no failure.
        if (exception.SystemError() != ENOENT || folder == mParameters.mRoot)
            Log(LogLevel::Warning, exception.what());
        const std::lock_guard lock(mMutex);
        mResult.push_back({folder, exception.SystemError()});
        return false;
    }
}

/// False for what is left out. A folder that is to be entered is added to `below`.
bool FolderWalk::TakeEntry(const host::UTF16String& folder, FolderEntry& entry, host::UTF16StringVec& below) {
    if (mParameters.mHasLockFiles && IsLockFileName(entry.mName)) return true;
    if (IsHiddenName(entry.mName, entry.mKind) || entry.mKind == ItemKind::Other) return false;
    if (entry.mKind != ItemKind::Unknown && entry.mKind != ItemKind::Folder) return true;
    host::UTF16String path = JoinPath<host::UTF16String>(folder, host::UTF8to16(entry.mName));
    if (entry.mKind == ItemKind::Unknown) {
        entry.mKind = ResolveKind(host::UTF16to8(path), entry.mKind);
        if (IsHiddenName(entry.mName, entry.mKind)) return false;
    }
    if (entry.mKind == ItemKind::Folder && (!mParameters.mIsEntered || mParameters.mIsEntered(path)))
        below.push_back(std::move(path));
    return entry.mKind != ItemKind::Other;
}

void FolderWalk::Finish() {
    if (mIsCancelled) return;
    GetServices().mMainThread->Post([self = shared_from_this()] {
        if (self->mIsCancelled) return;
        const Completion completion = std::move(self->mCompletion);
        completion(std::move(self->mResult));
    });
}

ItemKind ResolveKind(const std::string& path, ItemKind kind) {
    try {
        return GetServices().mFileSystem->Status(path, kind == ItemKind::Link).mKind;
    } catch (const host::FileException& exception) {
        if (kind != ItemKind::Link && exception.SystemError() != ENOENT)
            Log(LogLevel::Warning, exception.what());
        return ItemKind::Other;
    }
}

}  // namespace desk
