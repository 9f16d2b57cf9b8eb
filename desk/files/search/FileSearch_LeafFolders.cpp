#include <algorithm>
#include <cerrno>
#include <mutex>
#include <set>
#include <utility>

#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/files/live/DirectoryMonitor.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/search/FolderWalk.h"
#include "host/files/FileSearch.h"
#include "host/files/PathUtils.h"

namespace host {
namespace {

class LeafSearch final : public FileSearch::Request {
public:
    explicit LeafSearch(std::shared_ptr<desk::FolderWalk> walk) : mWalk(std::move(walk)) {}
    ~LeafSearch() override { mWalk->Cancel(); }

private:
    const std::shared_ptr<desk::FolderWalk> mWalk;
};

/// The folders that a walk has come to; its workers add them, several at a time.
class FoundFolders {
public:
    void Add(const UTF16String& folder) {
        const std::lock_guard lock(mMutex);
        mFolders.push_back(folder);
    }
    /// Once the walk is over.
    const UTF16StringVec& Get() const { return mFolders; }

private:
    std::mutex mMutex;
    UTF16StringVec mFolders;
};

/// Those of `folders` that hold none of the others, sorted, without `root`.
UTF16StringVec LeavesOf(const UTF16StringVec& folders, const UTF16String& root) {
    std::set<UTF16String> others{root};
    for (const UTF16String& folder : folders) others.emplace(desk::FolderOf(folder));
    UTF16StringVec leaves;
    std::ranges::copy_if(folders, std::back_inserter(leaves),
                         [&](const UTF16String& folder) { return !others.contains(folder); });
    std::ranges::sort(leaves);
    return leaves;
}

}  // namespace

std::unique_ptr<FileSearch::Request> FileSearch::FindLeafFolders(const UTF16String& root,
                                                                 LeafCompletion completion) {
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    const UTF16String path = PathUtils::ToNormalizedPath(root);
    const auto found = std::make_shared<FoundFolders>();
    desk::FolderWalk::Parameters parameters;
    parameters.mVisitor = [found](const UTF16String& folder, const auto&) { found->Add(folder); };
    parameters.mAnswerWatch = store ? store->GetMonitor().GetAnswerWatch() : nullptr;
    parameters.mRoot = path;
    const auto walk = std::make_shared<desk::FolderWalk>(
        std::move(parameters),
        [path, found, completion = std::move(completion)](const desk::FolderWalk::Result& unreadable) {
            for (const auto& folder : unreadable)
                if (folder.mSystemError != ENOENT) found->Add(folder.mPath);
            completion(LeavesOf(found->Get(), path));
        });
    walk->Start({path});
    return std::make_unique<LeafSearch>(walk);
}

}  // namespace host
