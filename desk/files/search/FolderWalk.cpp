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
    for (const host::UTF16String& folder : folders) SubmitFolder(folder);
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
    mNextFolders.push_back(mParameters.mRoot);
    while (!mNextFolders.empty()) {
        const host::UTF16StringVec folders = std::exchange(mNextFolders, {});
        RunShared(folders.size(), [&](std::size_t index) {
            throwIfCancelled();
            EnterFolder(folders[index]);
        });
    }
    throwIfCancelled();
    return std::move(mResult);
}

void FolderWalk::SubmitFolder(const host::UTF16String& path) {
    if (mIsRun) {
        const std::lock_guard lock(mMutex);
        return mNextFolders.push_back(path);
    }
    ++mFoldersLeft;
    // Behind what waits already: a long walk must not hold up listings and polls.
    mLane->SubmitLast([self = shared_from_this(), path] {
        // Whoever waits for the walk hears of its end, whatever happens in one folder.
        if (!self->mIsCancelled) RunTask([&] { self->EnterFolder(path); }, "walk");
        if (--self->mFoldersLeft == 0) self->Finish();
    });
}

void FolderWalk::EnterFolder(const host::UTF16String& folder) {
    std::vector<FolderEntry> entries;
    if (!ListFolder(folder, entries)) return;
    std::erase_if(entries, [&](FolderEntry& entry) { return mIsCancelled || !TakeEntry(folder, entry); });
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

/// False for what is left out. What a folder has in it comes later.
bool FolderWalk::TakeEntry(const host::UTF16String& folder, FolderEntry& entry) {
    if (mParameters.mHasLockFiles && IsLockFileName(entry.mName)) return true;
    if (IsHiddenName(entry.mName, entry.mKind) || entry.mKind == ItemKind::Other) return false;
    if (entry.mKind != ItemKind::Unknown && entry.mKind != ItemKind::Folder) return true;
    const host::UTF16String path = JoinPath<host::UTF16String>(folder, host::UTF8to16(entry.mName));
    if (entry.mKind == ItemKind::Unknown) {
        entry.mKind = ResolveKind(host::UTF16to8(path), entry.mKind);
        if (IsHiddenName(entry.mName, entry.mKind)) return false;
    }
    if (entry.mKind == ItemKind::Folder && (!mParameters.mIsEntered || mParameters.mIsEntered(path)))
        SubmitFolder(path);
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
