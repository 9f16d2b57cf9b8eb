#include "desk/files/FolderWalk.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>

#include "desk/core/Log.h"
#include "desk/core/MainThread.h"
#include "desk/core/Services.h"
#include "desk/core/WorkProgress.h"
#include "desk/files/FolderPath.h"
#include "desk/files/HostNames.h"
#include "desk/files/SharedWork.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

/// `text` ends with `ending`, ASCII letter case ignored.
bool EndsWithIgnoringCase(std::u16string_view text, std::u16string_view ending) {
    auto fold = [](char16_t unit) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    };
    return text.size() > ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), text.rbegin(),
                      [&](char16_t a, char16_t b) { return fold(a) == fold(b); });
}

}  // namespace

bool HasExtension(std::u16string_view name, const host::UTF16StringVec& extensions) {
    return std::ranges::any_of(
        extensions, [&](const host::UTF16String& extension) { return EndsWithIgnoringCase(name, extension); });
}

void FolderWalk::Start(const host::UTF16String& root) {
    mRoot = host::PathUtils::ToNormalizedPath(root);
    SubmitFolder(mRoot);
}

void FolderWalk::Cancel() {
    mIsCancelled = true;
    mCompletion = nullptr;
}

FolderWalk::Result FolderWalk::Run(const host::UTF16String& root, const WorkProgress& progress) {
    mRoot = host::PathUtils::ToNormalizedPath(root);
    mIsRun = true;
    mNextFolders.push_back(mRoot);
    while (!mNextFolders.empty()) {
        const host::UTF16StringVec folders = std::exchange(mNextFolders, {});
        RunShared(folders.size(), [&](std::size_t index) {
            progress.ThrowIfCancelled("search", host::UTF16to8(mRoot));
            SearchFolder(folders[index]);
        });
    }
    progress.ThrowIfCancelled("search", host::UTF16to8(mRoot));
    std::ranges::sort(mResult.mPaths);
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
        if (!self->mIsCancelled) self->SearchFolder(path);
        if (--self->mFoldersLeft == 0) self->Finish();
    });
}

void FolderWalk::SearchFolder(const host::UTF16String& folder) {
    std::vector<FolderEntry> entries;
    host::UTF16StringVec found;
    if (!ListFolder(folder, entries)) return;
    for (const FolderEntry& entry : entries) {
        if (mIsCancelled) return;
        SearchEntry(folder, entry, found);
    }
    const std::lock_guard lock(mMutex);
    std::ranges::move(found, std::back_inserter(mResult.mPaths));
    mResult.mFolders.push_back(folder);
}

bool FolderWalk::ListFolder(const host::UTF16String& folder, std::vector<FolderEntry>& entries) {
    std::optional<AnswerWatch::Call> call;
    if (mParameters.mAnswerWatch) call.emplace(mParameters.mAnswerWatch, std::make_shared<FolderPath>(folder));
    try {
        entries = GetServices().mFileSystem->ListFolder(host::UTF16to8(folder));
        return true;
    } catch (const host::FileException& exception) {
        // What vanishes under a walk is no failure.
        if (exception.SystemError() == ENOENT && folder != mRoot) return false;
        Log(LogLevel::Warning, exception.what());
        const std::lock_guard lock(mMutex);
        mResult.mUnreadable.push_back({folder, exception.SystemError()});
        mResult.mFolders.push_back(folder);
        return false;
    }
}

void FolderWalk::SearchEntry(const host::UTF16String& folder, const FolderEntry& entry,
                             host::UTF16StringVec& found) {
    if (IsHiddenName(entry.mName, entry.mKind) || entry.mKind == ItemKind::Other) return;
    const host::UTF16String name = host::UTF8to16(entry.mName);
    ItemKind kind = entry.mKind;
    if (kind == ItemKind::File && !HasExtension(name, mParameters.mExtensions)) return;
    host::UTF16String path = JoinPath<host::UTF16String>(folder, name);
    if (kind == ItemKind::Unknown) kind = ResolveKind(host::UTF16to8(path), kind);
    if (kind == ItemKind::Folder) {
        if (IsHiddenName(entry.mName, kind)) return;
        SubmitFolder(path);
    }
    if (kind == ItemKind::File && !HasExtension(name, mParameters.mExtensions)) return;
    if (mParameters.mFilter && !mParameters.mFilter(path)) return;
    if (kind == ItemKind::Link) {
        kind = ResolveKind(host::UTF16to8(path), kind);
        if (IsHiddenName(entry.mName, kind)) return;
    }
    const bool isFound = kind == ItemKind::Folder ? mParameters.mFindsFolders : kind == ItemKind::File;
    if (isFound && (kind == ItemKind::Folder || HasExtension(name, mParameters.mExtensions)))
        found.push_back(std::move(path));
}

/// What stands at `path` where the entry alone does not tell: behind a link, or of unknown kind.
ItemKind FolderWalk::ResolveKind(const std::string& path, ItemKind kind) const {
    try {
        return GetServices().mFileSystem->Status(path, kind == ItemKind::Link).mKind;
    } catch (const host::FileException& exception) {
        if (kind != ItemKind::Link && exception.SystemError() != ENOENT)
            Log(LogLevel::Warning, exception.what());
        return ItemKind::Other;
    }
}

void FolderWalk::Finish() {
    if (mIsCancelled) return;
    std::ranges::sort(mResult.mPaths);
    GetServices().mMainThread->Post([self = shared_from_this()] {
        if (self->mIsCancelled) return;
        const Completion completion = std::move(self->mCompletion);
        completion(std::move(self->mResult));
    });
}

}  // namespace desk
