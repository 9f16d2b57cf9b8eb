#include "desk/files/search/SearchIndex.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <mutex>
#include <unordered_set>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/files/live/DirectoryMonitor.h"
#include "desk/files/live/FolderStore.h"

namespace desk {
namespace {

/// Who types has paused by then.
constexpr std::chrono::milliseconds kPauseOfKeys{1000};

FolderNames::Kind ToKind(ItemKind kind) {
    switch (kind) {
        case ItemKind::Folder:
            return FolderNames::Kind::Folder;
        case ItemKind::Link:
            return FolderNames::Kind::Link;
        default:
            return FolderNames::Kind::Project;
    }
}

std::shared_ptr<const FolderNames> MakeNames(const host::UTF16String& folder,
                                             const std::vector<FolderEntry>& entries) {
    FolderNames::Maker maker(folder);
    for (const FolderEntry& entry : entries)
        if (entry.mKind != ItemKind::File || FolderNames::IsProject(entry.mName))
            maker.Add(entry.mName, ToKind(entry.mKind));
    return std::move(maker).Make();
}

/// The folders that stand in `a` and not in `b`.
host::UTF16StringVec FoldersMissingIn(const FolderNames& a, const FolderNames& b) {
    host::UTF16StringVec before = a.FindFolders();
    host::UTF16StringVec now = b.FindFolders();
    std::ranges::sort(before);
    std::ranges::sort(now);
    host::UTF16StringVec missing;
    std::ranges::set_difference(before, now, std::back_inserter(missing));
    return missing;
}

}  // namespace

/// What the workers of a walk bring.
struct SearchIndex::Reading {
    std::mutex mMutex;
    std::vector<Names> mNames;

    void Take(Names names) {
        const std::lock_guard lock(mMutex);
        mNames.push_back(std::move(names));
    }
};

std::shared_ptr<SearchIndex> SearchIndex::Get(const host::UTF16String& root, bool isFollowed) {
    static std::map<host::UTF16String, std::weak_ptr<SearchIndex>> sIndexes;
    const FolderStore* store = GetServices().mFolderStore;
    if (!store || !isFollowed || !GetServices().mFolderStore->GetMonitor().IsMonitored(root))
        return std::make_shared<SearchIndex>(root, false);
    std::erase_if(sIndexes, [](const auto& index) { return index.second.expired(); });
    std::shared_ptr<SearchIndex> index = sIndexes[root].lock();
    if (!index) sIndexes[root] = index = std::make_shared<SearchIndex>(root, true);
    return index;
}

SearchIndex::SearchIndex(host::UTF16String root, bool isFollowed) : mRoot(std::move(root)) {
    if (isFollowed)
        mFollower =
            std::make_shared<FolderFollower>(mRoot, [this](const FolderFollower::News& news) { OnNews(news); });
}

SearchIndex::~SearchIndex() {
    for (const auto& walk : {mReading, mReadingAgain})
        if (walk) walk->Cancel();
}

void SearchIndex::AddReceiver(const void* owner, Receiver receiver) {
    mReceivers.emplace_back(owner, std::move(receiver));
}

void SearchIndex::RemoveReceiver(const void* owner) {
    std::erase_if(mReceivers, [owner](const auto& receiver) { return receiver.first == owner; });
}

std::vector<KnownNames> SearchIndex::GetKnown() const {
    std::vector<KnownNames> known;
    if (FolderStore* store = GetServices().mFolderStore) known = store->GetNamesBelow(mRoot, mFollower.get());
    for (const auto& [folder, read] : mRead) known.push_back({read.mNames, read.mFollowing, 0});
    return known;
}

void SearchIndex::Read(const host::UTF16StringVec& folders, std::function<void()> done) {
    mWaiting.push_back(std::move(done));
    if (mReading) return;
    mReading = StartWalk(folders, {}, [this] {
        mReading.reset();
        for (const auto& waiting : std::exchange(mWaiting, {})) waiting();
    });
}

void SearchIndex::ReadUnfollowedAgainSoon() {
    const auto read = [weak = weak_from_this(), asked = ++mReadingsAgainAskedFor] {
        const auto self = weak.lock();
        if (self && self->mReadingsAgainAskedFor == asked) self->ReadUnfollowedAgain();
    };
    if (mFollower && !mRead.empty()) GetServices().mMainThread->PostDelayed(read, kPauseOfKeys);
}

void SearchIndex::ReadUnfollowedAgain() {
    if (mReadingAgain) mIsReadingAgainWanted = true;
    if (!mFollower || mReadingAgain) return;
    host::UTF16StringVec unfollowed;
    for (const auto& [folder, read] : mRead)
        if (!mFollower->WillTell(folder)) unfollowed.push_back(folder);
    if (unfollowed.empty()) return;
    auto known = std::make_shared<std::unordered_set<host::UTF16String>>();
    for (const KnownNames& each : GetKnown()) known->insert(each.mNames->Folder());
    const auto isEntered = [known](const host::UTF16String& folder) { return !known->contains(folder); };
    mReadingAgain = StartWalk(unfollowed, isEntered, [this] {
        mReadingAgain.reset();
        if (std::exchange(mIsReadingAgainWanted, false)) ReadUnfollowedAgain();
    });
}

std::shared_ptr<FolderWalk> SearchIndex::StartWalk(const host::UTF16StringVec& folders,
                                                   std::function<bool(const host::UTF16String&)> isEntered,
                                                   std::function<void()> done) {
    FolderStore* store = GetServices().mFolderStore;
    const auto result = std::make_shared<Reading>();
    FolderWalk::Parameters parameters;
    parameters.mVisitor = [result](const host::UTF16String& folder, const std::vector<FolderEntry>& entries) {
        result->Take(MakeNames(folder, entries));
    };
    parameters.mIsEntered = std::move(isEntered);
    parameters.mAnswerWatch = store ? store->GetMonitor().GetAnswerWatch() : nullptr;
    parameters.mRoot = mRoot;
    const auto walk = std::make_shared<FolderWalk>(
        std::move(parameters), [weak = weak_from_this(), result, done, reading = ++mReadings](auto&& failed) {
            const auto self = weak.lock();
            if (!self) return;
            self->TakeRead(std::move(result->mNames), std::move(failed), reading);
            done();
        });
    walk->Start(folders);
    return walk;
}

void SearchIndex::TakeRead(std::vector<Names>&& names, FolderWalk::Result&& failed, unsigned reading) {
    const FolderStore* store = GetServices().mFolderStore;
    for (const FolderWalk::UnreadableFolder& folder : failed)
        mFailures[folder.mPath] = {folder.mSystemError, reading};
    for (Names& now : names) {
        mFailures.erase(now->Folder());
        // What the store has listed meanwhile is newer.
        if (store && store->IsListed(now->Folder())) continue;
        Names& known = mRead[now->Folder()].mNames;
        if (known && *known == *now) continue;
        const Names before = std::exchange(known, now);
        if (mFollower) Renew(before, now, false);
    }
}

const SearchIndex::Failure* SearchIndex::FindFailure(const host::UTF16String& folder) const {
    const auto found = mFailures.find(folder);
    return found == mFailures.end() ? nullptr : &found->second;
}

void SearchIndex::Follow(const NameScanResult& result) {
    if (!mFollower) return;
    host::UTF16StringVec folders = result.mNotAwaitedWithHits;
    const std::size_t wanted = folders.size();
    host::UTF16StringVec gone;
    for (const Names& names : result.mNotFollowed) {
        const Names now = mFollower->FollowListed(names->Folder());
        if (!now) folders.push_back(names->Folder());
        if (!now || now == names) continue;
        // Nobody told what changed since the search looked through them.
        mRead.erase(names->Folder());
        std::ranges::move(Renew(names, now, true), std::back_inserter(gone));
        std::ranges::move(FoldersMissingIn(*now, *names), std::back_inserter(folders));
    }
    for (const host::UTF16String& folder : result.mUnknown)
        if (const Failure* failure = FindFailure(folder); failure && failure->mSystemError != ENOENT)
            folders.push_back(folder);
    mFollower->Follow(folders, wanted);
    for (std::size_t i = 0; i < folders.size(); ++i)
        NoteAsked(folders[i], i < wanted ? KnownNames::Following::Awaited : KnownNames::Following::Asked);
    for (const host::UTF16String& path : gone) mFollower->Drop(path);
}

/// Spares the next search asking again, folder by folder.
void SearchIndex::NoteAsked(const host::UTF16String& folder, KnownNames::Following following) {
    const auto read = mRead.find(folder);
    if (read != mRead.end()) read->second.mFollowing = std::max(read->second.mFollowing, following);
}

void SearchIndex::OnNews(const FolderFollower::News& news) {
    for (const host::UTF16String& path : news.mRemovedPaths) DropRead(path);
    if (!news.mNames) return Tell({{}, {}, false, news.mContent, news.mRemovedPaths});
    mFailures.erase(news.mNames->Folder());
    const auto read = mRead.extract(news.mNames->Folder());
    Renew(read ? read.mapped().mNames : nullptr, news.mNames, true);
}

/// Returns the folders that have gone.
host::UTF16StringVec SearchIndex::Renew(const Names& before, const Names& now, bool isListed) {
    News news{before, now, isListed, nullptr, {}};
    if (before) news.mRemovedPaths = FoldersMissingIn(*before, *now);
    for (const host::UTF16String& path : news.mRemovedPaths) {
        mFollower->Drop(path);
        DropRead(path);
    }
    Tell(news);
    return news.mRemovedPaths;
}

/// Forgets what was read at and below `path`.
void SearchIndex::DropRead(const host::UTF16String& path) {
    const auto isGone = [&](const auto& each) { return IsSameOrBelow(each->first, path); };
    for (auto read = mRead.lower_bound(path); read != mRead.end() && read->first.starts_with(path);)
        read = isGone(read) ? mRead.erase(read) : std::next(read);
    for (auto failed = mFailures.lower_bound(path);
         failed != mFailures.end() && failed->first.starts_with(path);)
        failed = isGone(failed) ? mFailures.erase(failed) : std::next(failed);
}

void SearchIndex::Tell(const News& news) const {
    for (const auto& receiver : std::vector(mReceivers)) receiver.second(news);
}

}  // namespace desk
