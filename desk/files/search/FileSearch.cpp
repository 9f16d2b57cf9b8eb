#include "host/files/FileSearch.h"

#include <cerrno>
#include <chrono>
#include <set>
#include <utility>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/Lifetime.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/live/ChangeCollector.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/search/NameScan.h"
#include "desk/files/search/SearchIndex.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace host {

FileSearch::Request::~Request() = default;

namespace {

constexpr std::chrono::seconds kRetryInterval{2};

/// A search: looks through the names that are known, has those read that are missing, and looks again; and
/// while it lives, what the index tells.
class Search final : public FileSearch::Request {
public:
    Search(const UTF16String& root, FileSearch::Parameters parameters, FileSearch::Completion completion);
    ~Search() override;

private:
    enum class State { Reading, Looking, Completed };

    void Look();
    void TakeFound(desk::NameScanResult&& found);
    void Complete(desk::NameScanResult&& found);
    void TryAgainLater();
    void Receive(const desk::SearchIndex::News& news);
    void TakeRenewed(const desk::SearchIndex::News& news);
    void Remove(const UTF16String& path);
    bool IsAccepted(const UTF16String& path) const;
    void TellLater(std::chrono::milliseconds delay);
    void Tell();

    const UTF16String mRoot;
    const FileSearch::Parameters mParameters;
    const FileSearch::Completion mCompletion;
    const desk::FoldedText mText;
    const std::shared_ptr<desk::SearchIndex> mIndex;
    State mState = State::Reading;
    /// The first reading whose failures count: what failed before is tried again.
    unsigned mFirstReading = 0;
    std::set<UTF16String> mChanged;
    std::set<UTF16String> mRemoved;
    bool mIsTelling = false;
    desk::Lifetime mLifetime;
};

/// See `FileSearch`.
UTF16String ToldByPath(const UTF16String& path) {
    const bool isNamedAsProject = desk::FolderNames::IsProject(std::u16string_view(path));
    return isNamedAsProject && PathUtils::IsKnownDirectory(path) ? PathUtils::AddTrailingSlash(path) : path;
}

std::set<UTF16String> FindIn(const desk::FolderNames* names, const desk::FoldedText& text) {
    std::vector<desk::FolderNames::Item> found;
    if (names) names->Find(text, found);
    std::set<UTF16String> paths;
    for (desk::FolderNames::Item& item : found)
        if (item.mKind != desk::FolderNames::Kind::Link) paths.insert(std::move(item.mPath));
    return paths;
}

Search::Search(const UTF16String& root, FileSearch::Parameters parameters, FileSearch::Completion completion)
    : mRoot(PathUtils::ToNormalizedPath(root)),
      mParameters(std::move(parameters)),
      mCompletion(std::move(completion)),
      mText(mParameters.mText),
      mIndex(desk::SearchIndex::Get(mRoot, mParameters.mChanged != nullptr)),
      mFirstReading(mIndex->CountReadings() + 1) {
    if (mIndex->IsFollowed())
        mIndex->AddReceiver(this,
                            mLifetime.Guard([this](const desk::SearchIndex::News& news) { Receive(news); }));
    Look();
}

Search::~Search() {
    mIndex->RemoveReceiver(this);
}

void Search::Look() {
    std::vector<desk::KnownNames> known = mIndex->GetKnown();
    if (known.empty()) {
        desk::NameScanResult nothing;
        nothing.mUnknown = {mRoot};
        return TakeFound(std::move(nothing));
    }
    mState = State::Looking;
    auto take = mLifetime.Guard([this](desk::NameScanResult&& found) { TakeFound(std::move(found)); });
    desk::GetServices().mWorkerPool->Submit([root = mRoot, known = std::move(known), text = mText, take] {
        auto found = std::make_shared<desk::NameScanResult>(desk::ScanNames(root, known, text));
        desk::GetServices().mMainThread->Post([take, found] { take(std::move(*found)); });
    });
}

/// Done, unless there are folders that nobody has read, or not since the search began.
void Search::TakeFound(desk::NameScanResult&& found) {
    UTF16StringVec unread;
    for (const UTF16String& folder : found.mUnknown) {
        const desk::SearchIndex::Failure* failure = mIndex->FindFailure(folder);
        if (!failure || failure->mReading < mFirstReading) unread.push_back(folder);
    }
    if (unread.empty()) return Complete(std::move(found));
    mState = State::Reading;
    mIndex->Read(unread, mLifetime.Guard([this] { Look(); }));
}

void Search::Complete(desk::NameScanResult&& found) {
    mState = State::Completed;
    FileSearch::Result result;
    const auto addUnreadable = [&](const UTF16String& folder, int systemError) {
        // What has vanished meanwhile is no failure.
        if (systemError != ENOENT || folder == mRoot) result.mUnreadable.push_back({folder, systemError});
        if (folder == mRoot && mParameters.mChanged) TryAgainLater();
    };
    for (const auto& folder : found.mUnreadable) addUnreadable(folder.mPath, folder.mSystemError);
    for (const UTF16String& folder : found.mUnknown)
        addUnreadable(folder, mIndex->FindFailure(folder)->mSystemError);
    mIndex->Follow(found);
    result.mPaths = std::move(found.mHits);
    const std::weak_ptr<const void> alive = mLifetime.Watch();
    const FileSearch::Completion completion = mCompletion;
    completion(std::move(result));
    if (alive.expired()) return;
    if (!mChanged.empty() || !mRemoved.empty()) TellLater({});
    mIndex->ReadUnfollowedAgainSoon();
}

/// Looks again as soon as the root can be read.
void Search::TryAgainLater() {
    auto look = mLifetime.Guard([this] {
        mFirstReading = mIndex->CountReadings() + 1;
        Look();
    });
    auto tryAgain = mLifetime.Guard([this] { TryAgainLater(); });
    auto probe = [root = UTF16to8(mRoot), look, tryAgain] {
        const desk::Services& services = desk::GetServices();
        try {
            services.mFileSystem->TryFolder(root);
            services.mMainThread->Post(look);
        } catch (const FileException&) {
            services.mMainThread->Post(tryAgain);
        }
    };
    desk::GetServices().mMainThread->PostDelayed(
        mLifetime.Guard([probe] { desk::GetServices().mWorkerPool->SubmitLast(probe); }), kRetryInterval);
}

void Search::Receive(const desk::SearchIndex::News& news) {
    // It will look at all that again.
    if (mState == State::Reading) return;
    for (const UTF16String& path : news.mRemovedPaths) Remove(path);
    if (news.mNow) TakeRenewed(news);
    if (news.mContent)
        for (const auto item : *news.mContent) {
            const UTF16String path = news.mContent->PathOf(item);
            if (IsAccepted(path)) mChanged.insert(ToldByPath(path));
        }
    if (mState == State::Completed && (!mChanged.empty() || !mRemoved.empty())) TellLater({});
}

void Search::TakeRenewed(const desk::SearchIndex::News& news) {
    const std::set<UTF16String> before = FindIn(news.mBefore.get(), mText);
    const std::set<UTF16String> now = FindIn(news.mNow.get(), mText);
    for (const UTF16String& path : before)
        if (!now.contains(path)) Remove(path);
    for (const UTF16String& path : now)
        if (news.mIsListed || !before.contains(path)) mChanged.insert(path);
}

void Search::Remove(const UTF16String& path) {
    for (auto changed = mChanged.lower_bound(path); changed != mChanged.end() && changed->starts_with(path);)
        changed = desk::IsSameOrBelow(*changed, path) ? mChanged.erase(changed) : std::next(changed);
    mRemoved.insert(path);
}

bool Search::IsAccepted(const UTF16String& path) const {
    using desk::ItemKind;
    const desk::ItemFacts* facts = desk::GetServices().mFolderStore->Find(path);
    if (!facts || facts->mKind == ItemKind::Other || facts->mKind == ItemKind::Link) return false;
    return mText.IsIn(desk::FolderNames::DisplayNameOf(ToldByPath(path)));
}

/// The first changes at once, then one batch in each pace.
void Search::TellLater(std::chrono::milliseconds delay) {
    if (std::exchange(mIsTelling, true)) return;
    auto tell = mLifetime.Guard([this] { Tell(); });
    if (delay.count() == 0)
        desk::GetServices().mMainThread->Post(tell);
    else
        desk::GetServices().mMainThread->PostDelayed(tell, delay);
}

void Search::Tell() {
    mIsTelling = false;
    if (mState != State::Completed || (mChanged.empty() && mRemoved.empty())) return;
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

bool FileSearch::IsMatch(const UTF16String& path, const UTF16String& text) {
    return desk::FoldedText(text).IsIn(desk::FolderNames::DisplayNameOf(path));
}

std::unique_ptr<FileSearch::Request> FileSearch::FindFilesOrDirectories(const UTF16String& root,
                                                                        Parameters parameters,
                                                                        Completion completion) {
    return std::make_unique<Search>(root, std::move(parameters), std::move(completion));
}

}  // namespace host
