#include "host/files/FileSearch.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>

#include "desk/core/Log.h"
#include "desk/core/MainThread.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/FileSystem.h"
#include "desk/files/HostNames.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace host {

FileSearch::Request::~Request() = default;

namespace {

using desk::ItemKind;

/// `text` ends with `ending`, ASCII letter case ignored.
bool EndsWithIgnoringCase(std::u16string_view text, std::u16string_view ending) {
    auto fold = [](char16_t unit) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    };
    return text.size() > ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), text.rbegin(),
                      [&](char16_t a, char16_t b) { return fold(a) == fold(b); });
}

/// One walk over the folders below a root, shared by its request and the workers' tasks: one task a folder.
class Walk : public std::enable_shared_from_this<Walk> {
public:
    Walk(FileSearch::Parameters parameters, FileSearch::Completion completion)
        : mParameters(std::move(parameters)), mCompletion(std::move(completion)) {}

    void SubmitFolder(std::string path) {
        ++mFoldersLeft;
        // Behind what waits already: a long walk must not hold up listings and polls.
        desk::GetServices().mWorkerPool->SubmitLast([self = shared_from_this(), folder = std::move(path)] {
            if (!self->mIsCancelled) self->SearchFolder(folder);
            if (--self->mFoldersLeft == 0) self->Finish();
        });
    }
    /// UI thread.
    void Cancel() {
        mIsCancelled = true;
        mCompletion = nullptr;
    }

private:
    void SearchFolder(const std::string& folder);
    void SearchEntry(const std::string& folder, const UTF16String& folderUTF16, const desk::FolderEntry& entry,
                     UTF16StringVec& found);
    ItemKind ResolveKind(const std::string& path, ItemKind kind) const;
    bool HasWantedExtension(std::u16string_view name) const;
    void Finish();

    const FileSearch::Parameters mParameters;
    FileSearch::Completion mCompletion;
    std::atomic<bool> mIsCancelled = false;
    std::atomic<std::size_t> mFoldersLeft = 0;
    std::mutex mMutex;
    UTF16StringVec mFound;
};

std::string Join(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + '/' + name;
}

void LogFailure(const FileException& exception) {
    // What vanishes under a walk is no failure.
    if (exception.SystemError() != ENOENT) desk::Log(desk::LogLevel::Warning, exception.what());
}

void Walk::SearchFolder(const std::string& folder) {
    std::vector<desk::FolderEntry> entries;
    try {
        entries = desk::GetServices().mFileSystem->ListFolder(folder);
    } catch (const FileException& exception) {
        LogFailure(exception);
        return;
    }
    const UTF16String folderUTF16 = UTF8to16(folder);
    UTF16StringVec found;
    for (const desk::FolderEntry& entry : entries) {
        if (mIsCancelled) return;
        SearchEntry(folder, folderUTF16, entry, found);
    }
    if (found.empty()) return;
    std::lock_guard lock(mMutex);
    std::move(found.begin(), found.end(), std::back_inserter(mFound));
}

void Walk::SearchEntry(const std::string& folder, const UTF16String& folderUTF16,
                       const desk::FolderEntry& entry, UTF16StringVec& found) {
    if (desk::IsHiddenName(entry.mName, entry.mKind) || entry.mKind == ItemKind::Other) return;
    ItemKind kind = entry.mKind;
    if (kind == ItemKind::Unknown) kind = ResolveKind(Join(folder, entry.mName), kind);
    if (kind == ItemKind::Folder) {
        if (desk::IsHiddenName(entry.mName, kind)) return;
        SubmitFolder(Join(folder, entry.mName));
    }
    const UTF16String name = UTF8to16(entry.mName);
    if (kind == ItemKind::File && !HasWantedExtension(name)) return;
    UTF16String path = PathUtils::CombinePaths(folderUTF16, name);
    if (mParameters.mFilter && !mParameters.mFilter(path)) return;
    if (kind == ItemKind::Link) {
        kind = ResolveKind(Join(folder, entry.mName), kind);
        if (desk::IsHiddenName(entry.mName, kind)) return;
    }
    if (kind == ItemKind::Folder || (kind == ItemKind::File && HasWantedExtension(name)))
        found.push_back(std::move(path));
}

/// What stands at `path` where the entry alone does not tell: behind a link, or of unknown kind.
ItemKind Walk::ResolveKind(const std::string& path, ItemKind kind) const {
    try {
        return desk::GetServices().mFileSystem->Status(path, kind == ItemKind::Link).mKind;
    } catch (const FileException& exception) {
        if (kind != ItemKind::Link) LogFailure(exception);
        return ItemKind::Other;
    }
}

bool Walk::HasWantedExtension(std::u16string_view name) const {
    const UTF16StringVec& extensions = mParameters.mExtensions;
    return std::any_of(extensions.begin(), extensions.end(),
                       [&](const UTF16String& extension) { return EndsWithIgnoringCase(name, extension); });
}

void Walk::Finish() {
    if (mIsCancelled) return;
    std::sort(mFound.begin(), mFound.end());
    desk::GetServices().mMainThread->Post([self = shared_from_this()] {
        if (self->mIsCancelled) return;
        FileSearch::Completion completion = std::move(self->mCompletion);
        completion(std::move(self->mFound));
    });
}

class WalkRequest : public FileSearch::Request {
public:
    explicit WalkRequest(std::shared_ptr<Walk> walk) : mWalk(std::move(walk)) {}
    ~WalkRequest() override { mWalk->Cancel(); }

private:
    std::shared_ptr<Walk> mWalk;
};

}  // namespace

std::unique_ptr<FileSearch::Request> FileSearch::FindFilesOrDirectories(const UTF16String& root,
                                                                        Parameters parameters,
                                                                        Completion completion) {
    auto walk = std::make_shared<Walk>(std::move(parameters), std::move(completion));
    walk->SubmitFolder(UTF16to8(root));
    return std::make_unique<WalkRequest>(walk);
}

}  // namespace host
