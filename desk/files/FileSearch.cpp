#include "host/files/FileSearch.h"

#include <algorithm>
#include <chrono>
#include <set>
#include <utility>

#include "desk/core/MainThread.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "desk/files/ChangeCollector.h"
#include "desk/files/DirectoryMonitor.h"
#include "desk/files/FileSystem.h"
#include "desk/files/FolderFollower.h"
#include "desk/files/FolderPath.h"
#include "desk/files/FolderStore.h"
#include "desk/files/FolderWalk.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace host {

FileSearch::Request::~Request() = default;

namespace {

constexpr std::chrono::seconds kRetryInterval{2};

/// A search: a walk, and while it lives what the followed folders tell.
class Search final : public FileSearch::Request {
public:
    Search(const UTF16String& root, FileSearch::Parameters parameters, FileSearch::Completion completion);
    ~Search() override;

private:
    void StartWalk();
    void FinishWalk(desk::FolderWalk::Result&& found);
    void TryAgainLater();
    void Receive(const desk::FolderFollower::News& news);
    void AppendVanished(const UTF16String& folder);
    void Remove(const UTF16String& path);
    bool IsAccepted(const UTF16String& path) const;
    void TellLater(std::chrono::milliseconds delay);
    void Tell();
    template <class Function>
    auto WhileAlive(Function function) {
        return [token = std::weak_ptr(mToken), function](auto&&... arguments) {
            if (!token.expired()) function(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    const UTF16String mRoot;
    const FileSearch::Parameters mParameters;
    const FileSearch::Completion mCompletion;
    /// Null when nothing is followed.
    std::shared_ptr<desk::FolderFollower> mFollower;
    /// Null when none is under way.
    std::shared_ptr<desk::FolderWalk> mWalk;
    /// What the walk has found, sorted.
    UTF16StringVec mFound;
    std::set<UTF16String> mChanged;
    std::set<UTF16String> mRemoved;
    bool mIsTelling = false;
    std::shared_ptr<int> mToken = std::make_shared<int>();
};

/// False only when the item's folder is listed and does not hold it.
bool MayExist(const UTF16String& path) {
    const desk::FolderStore& store = *desk::GetServices().mFolderStore;
    return store.Find(path) || !store.IsListed(desk::FolderOf(path));
}

/// The folders of hits first, and how many those are.
std::size_t PutFoldersOfHitsFirst(UTF16StringVec& folders, const UTF16StringVec& hits) {
    std::set<UTF16String> wanted;
    for (const UTF16String& hit : hits) wanted.emplace(desk::FolderOf(hit));
    std::ranges::sort(folders);
    const auto others = std::ranges::stable_partition(
        folders, [&](const UTF16String& folder) { return wanted.contains(folder); });
    return folders.size() - others.size();
}

Search::Search(const UTF16String& root, FileSearch::Parameters parameters, FileSearch::Completion completion)
    : mRoot(PathUtils::ToNormalizedPath(root)),
      mParameters(std::move(parameters)),
      mCompletion(std::move(completion)) {
    // What changes while the walk goes on counts too.
    if (mParameters.mChanged) mFollower = desk::FolderFollower::Get(mRoot);
    if (mFollower)
        mFollower->AddReceiver(this,
                               WhileAlive([this](const desk::FolderFollower::News& news) { Receive(news); }));
    StartWalk();
}

Search::~Search() {
    if (mWalk) mWalk->Cancel();
    if (mFollower) mFollower->RemoveReceiver(this);
}

void Search::StartWalk() {
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    mWalk = std::make_shared<desk::FolderWalk>(
        desk::FolderWalk::Parameters{mParameters.mExtensions, mParameters.mFilter, true,
                                     store ? store->GetMonitor().GetAnswerWatch() : nullptr},
        WhileAlive([this](desk::FolderWalk::Result result) { FinishWalk(std::move(result)); }));
    mWalk->Start(mRoot);
}

void Search::FinishWalk(desk::FolderWalk::Result&& found) {
    mWalk.reset();
    FileSearch::Result result;
    for (auto& folder : found.mUnreadable) {
        if (folder.mPath == mRoot && mParameters.mChanged) TryAgainLater();
        result.mUnreadable.push_back({std::move(folder.mPath), folder.mSystemError});
    }
    if (mFollower) {
        std::erase_if(found.mPaths, [](const UTF16String& path) { return !MayExist(path); });
        mFollower->Follow(found.mFolders, PutFoldersOfHitsFirst(found.mFolders, found.mPaths));
        mFound = found.mPaths;
    }
    result.mPaths = std::move(found.mPaths);
    const std::weak_ptr token(mToken);
    const FileSearch::Completion completion = mCompletion;
    completion(std::move(result));
    if (!token.expired() && (!mChanged.empty() || !mRemoved.empty())) TellLater({});
}

/// Walks again as soon as the root can be read.
void Search::TryAgainLater() {
    auto walk = WhileAlive([this] { StartWalk(); });
    auto tryAgain = WhileAlive([this] { TryAgainLater(); });
    auto look = [root = UTF16to8(mRoot), walk, tryAgain] {
        const desk::Services& services = desk::GetServices();
        try {
            services.mFileSystem->TryFolder(root);
            services.mMainThread->Post(walk);
        } catch (const FileException&) {
            services.mMainThread->Post(tryAgain);
        }
    };
    desk::GetServices().mMainThread->PostDelayed(
        WhileAlive([look] { desk::GetServices().mWorkerPool->SubmitLast(look); }), kRetryInterval);
}

void Search::Receive(const desk::FolderFollower::News& news) {
    for (const UTF16String& path : news.mRemovedPaths) Remove(path);
    if (news.mIsListed) AppendVanished(news.mFolder);
    if (news.mContent)
        for (const PropertyMap& item : *news.mContent) {
            const auto* path = item.Find<UTF16String>(MediaBrowserContentManager::kPathField);
            if (path && IsAccepted(*path)) mChanged.insert(*path);
        }
    if (!mWalk && (!mChanged.empty() || !mRemoved.empty())) TellLater({});
}

/// Hits that have gone between the walk and the folder's first listing.
void Search::AppendVanished(const UTF16String& folder) {
    const UTF16String prefix = desk::JoinPath<UTF16String>(folder, {});
    for (auto hit = std::ranges::lower_bound(mFound, prefix); hit != mFound.end() && hit->starts_with(prefix);
         ++hit)
        if (desk::FolderOf(*hit) == folder && !MayExist(*hit)) Remove(*hit);
}

void Search::Remove(const UTF16String& path) {
    for (auto changed = mChanged.lower_bound(path); changed != mChanged.end() && changed->starts_with(path);)
        changed = desk::IsSameOrBelow(*changed, path) ? mChanged.erase(changed) : std::next(changed);
    mRemoved.insert(path);
}

bool Search::IsAccepted(const UTF16String& path) const {
    const desk::ItemFacts* facts = desk::GetServices().mFolderStore->Find(path);
    if (!facts) return false;
    if (facts->mKind != desk::ItemKind::Folder && !desk::HasExtension(path, mParameters.mExtensions))
        return false;
    return !mParameters.mFilter || mParameters.mFilter(path);
}

/// The first changes at once, then one batch in each pace.
void Search::TellLater(std::chrono::milliseconds delay) {
    if (std::exchange(mIsTelling, true)) return;
    auto tell = WhileAlive([this] { Tell(); });
    if (delay.count() == 0)
        desk::GetServices().mMainThread->Post(tell);
    else
        desk::GetServices().mMainThread->PostDelayed(tell, delay);
}

void Search::Tell() {
    mIsTelling = false;
    if (mWalk || (mChanged.empty() && mRemoved.empty())) return;
    FileSearch::Changes changes;
    changes.mPaths.assign(mChanged.begin(), mChanged.end());
    changes.mRemovedPaths.assign(mRemoved.begin(), mRemoved.end());
    mChanged.clear();
    mRemoved.clear();
    TellLater(desk::ChangeCollector::kPace);
    const auto changed = mParameters.mChanged;
    changed(changes);
}

}  // namespace

std::unique_ptr<FileSearch::Request> FileSearch::FindFilesOrDirectories(const UTF16String& root,
                                                                        Parameters parameters,
                                                                        Completion completion) {
    return std::make_unique<Search>(root, std::move(parameters), std::move(completion));
}

}  // namespace host
