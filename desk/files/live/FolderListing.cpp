#include "desk/files/live/FolderListing.h"

#include <absl/container/flat_hash_set.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <string_view>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/names/NaturalOrder.h"
#include "desk/core/work/WorkerPool.h"
#include "host/files/FileException.h"

namespace desk {
namespace {

using Clock = std::chrono::steady_clock;

/// So many new items of a known folder are read at once, so that their rows come complete.
constexpr std::size_t kMostNewToRead = 64;
/// Nobody waits for a poll: it wakes other workers only for what takes longer than this.
constexpr std::chrono::milliseconds kPollTask{10};
/// So many entries are worth a thread.
constexpr std::size_t kEntriesPerThread = 5000;

}  // namespace

void FolderListing::Run(Request request, Completion completion) {
    std::make_shared<FolderListing>(std::move(request), std::move(completion))->List();
}

FolderListing::FolderListing(Request request, Completion completion)
    : mRequest(std::move(request)), mCompletion(std::move(completion)) {
    mResult.mKnown = mRequest.mKnown;
}

void FolderListing::List() {
    try {
        AnswerWatch::Call call(mRequest.mAnswerWatch, mRequest.mFolder);
        mResult.mFollowing = mRequest.mWatcher->Follow(mRequest.mFolder->mBytes);
        call.Next();
        const std::vector<FolderEntry> entries =
            GetServices().mFileSystem->ListFolder(mRequest.mFolder->mBytes);
        TakeEntries(entries);
        if (!mRequest.mKnown) SweepIfNeeded(entries);
    } catch (const host::FileException& exception) {
        return Fail(exception.SystemError(), exception.what());
    }
    MarkLocked();
    ChooseUnknown();
    ReadChosen(&FolderListing::CompleteNames);
}

/// When a folder is first listed, what dead processes of this machine have left there goes.
void FolderListing::SweepIfNeeded(const std::vector<FolderEntry>& entries) {
    std::vector<std::string> names;
    for (const FolderEntry& entry : entries)
        if (MayBeLeftover(entry.mName)) names.push_back(entry.mName);
    if (!names.empty() && mRequest.mSweep) mRequest.mSweep(mRequest.mFolder->mBytes, std::move(names));
}

ItemKind FolderListing::Found::GetKind() const {
    return mFacts.mKind == ItemKind::Unknown && mKnown ? mKnown->mFacts.mKind : mFacts.mKind;
}

void FolderListing::TakeEntries(const std::vector<FolderEntry>& entries) {
    // A volume may name an entry twice while its folder changes.
    absl::flat_hash_set<std::string_view> names(entries.size());
    std::vector<char> areNew(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i) areNew[i] = names.insert(entries[i].mName).second;
    // Who polls a known folder wakes nobody up.
    std::vector<Taken> parts(mRequest.mKnown ? 1 : entries.size() / kEntriesPerThread + 1);
    const auto beginOf = [&](std::size_t part) { return entries.size() * part / parts.size(); };
    RunShared(parts.size(), [&](std::size_t part) {
        parts[part].mFound.reserve(beginOf(part + 1) - beginOf(part));
        for (std::size_t i = beginOf(part); i < beginOf(part + 1); ++i)
            if (areNew[i]) TakeEntry(entries[i], parts[part]);
    });
    mFound = std::move(parts.front().mFound);
    mFound.reserve(entries.size());
    for (Taken& part : parts) {
        if (&part != &parts.front()) std::ranges::move(part.mFound, std::back_inserter(mFound));
        std::ranges::move(part.mLocked, std::back_inserter(mLocked));
    }
}

void FolderListing::TakeEntry(const FolderEntry& entry, Taken& taken) const {
    Found found;
    found.mName = host::UTF8to16(entry.mName);
    if (entry.mName.starts_with('.')) {
        if (host::UTF16String project = GetProjectNameOfLockFile(found.mName); !project.empty())
            taken.mLocked.push_back(std::move(project));
        if (IsHiddenName(entry.mName, entry.mKind)) return;
    }
    found.mIsProject = entry.mKind != ItemKind::Folder && IsProjectName(found.mName);
    const bool isKindOpen = entry.mKind == ItemKind::Unknown || entry.mKind == ItemKind::Link;
    if (!found.mIsProject && !isKindOpen && entry.mKind != ItemKind::Folder) return;
    found.mFacts.mKind = isKindOpen ? ItemKind::Unknown : entry.mKind;
    found.mFacts.mIsLink = entry.mKind == ItemKind::Link;
    if (mRequest.mKnown) found.mKnown = mRequest.mKnown->Find(found.mName);
    taken.mFound.push_back(std::move(found));
}

void FolderListing::MarkLocked() {
    if (mLocked.empty()) return;
    std::ranges::sort(mLocked);
    for (Found& found : mFound)
        found.mFacts.mHasLockFile = found.mIsProject && std::ranges::binary_search(mLocked, found.mName);
}

/// The kinds of what is no project or a link, and the facts of few new items.
void FolderListing::ChooseUnknown() {
    std::size_t newProjects = 0;
    for (const Found& found : mFound) newProjects += found.mIsProject && !found.mKnown;
    const bool areNewRead = mRequest.mKnown && newProjects <= kMostNewToRead;
    for (std::size_t i = 0; i < mFound.size(); ++i) {
        const Found& found = mFound[i];
        const bool isKindRead = found.mFacts.mKind == ItemKind::Unknown && !(found.mKnown && found.mIsProject);
        const bool isRead = found.mIsProject
                                ? (areNewRead && !found.mKnown) || (isKindRead && found.mFacts.mIsLink)
                                : isKindRead;
        if (isRead) mToRead.push_back(i);
    }
}

/// Again the facts that are known.
void FolderListing::ChooseKnown() {
    mToRead.clear();
    for (std::size_t i = 0; i < mFound.size(); ++i) {
        const FolderItems::Item* known = mFound[i].mKnown;
        if (mFound[i].mIsProject && known && known->mFacts.mStatus) mToRead.push_back(i);
    }
}

void FolderListing::ReadChosen(void (FolderListing::*then)()) {
    RunInChunks(
        [lane = mRequest.mLane, isPoll = mRequest.mIsPoll](ReadingLane::Task task) {
            isPoll ? lane->SubmitLast(std::move(task)) : lane->Submit(std::move(task));
        },
        mToRead.size(), mRequest.mIsPoll ? mRequest.mSpeed->ChunkSize(kPollTask) : mRequest.mSpeed->ChunkSize(),
        [self = shared_from_this()](std::size_t begin, std::size_t end) {
            const auto start = Clock::now();
            AnswerWatch::Call call(self->mRequest.mAnswerWatch, self->mRequest.mFolder);
            for (std::size_t i = begin; i < end; ++i, call.Next()) self->Read(self->mFound[self->mToRead[i]]);
            self->mRequest.mSpeed->Note(Clock::now() - start, end - begin);
        },
        [self = shared_from_this(), then] { ((*self).*then)(); });
}

void FolderListing::Read(Found& found) {
    ItemUpdate update = ReadItem(*mRequest.mFolder, found.mName, false, found.mFacts.mIsLink);
    if (found.mIsProject && update.mIsGone) {
        found.mIsKept = false;
    } else if (update.mSystemError == 0) {
        found.mIsKept = !update.mIsGone;
        found.mFacts.mKind = update.mFacts.mKind;
        found.mFacts.mIsLink = update.mFacts.mIsLink;
        found.mFacts.mStatus = update.mFacts.mStatus;
    } else if (!found.mIsProject) {
        // What cannot be read counts as unchanged; a link that leads nowhere is no folder.
        found.mIsKept = found.mKnown != nullptr && !update.mIsGone;
    }
    if (found.mIsKept && found.mFacts.mHasLockFile) ReadLock(found);
}

void FolderListing::ReadLock(Found& found) {
    FileSystem& fileSystem = *GetServices().mFileSystem;
    const std::string path = LockPath(*mRequest.mFolder, found.mName);
    auto& stamps = mRequest.mMemory->mLockStamps;
    try {
        const ItemStatus status = fileSystem.Status(path, false);
        const std::pair stamp(status.mSize, status.mModified);
        {
            const std::lock_guard lock(mMutex);
            const auto [known, isNew] = stamps.try_emplace(found.mName, stamp);
            const bool isSame = !isNew && std::exchange(known->second, stamp) == stamp;
            if (isSame && found.mKnown && found.mKnown->mFacts.mLock && found.mKnown->mFacts.mLock->mIsReadable)
                return;
        }
        if (auto record = ReadLockRecord(fileSystem, path))
            found.mFacts.mLock = std::make_shared<const LockRecord>(*std::move(record));
        else
            found.mFacts.mHasLockFile = false;
    } catch (const host::FileException& exception) {
        if (exception.SystemError() == ENOENT) found.mFacts.mHasLockFile = false;
    }
}

void FolderListing::CompleteNames() {
    Try([this] {
        std::erase_if(mFound, [](const Found& found) { return !found.mIsKept; });
        if (IsVolumeGone()) throw host::FileException("list folder", mRequest.mFolder->mText, ENODEV);
        if (mRequest.mIsContentWanted) {
            SortFound();
            MakeContentsAndItems();
        }
        ChooseKnown();
        if (mToRead.empty()) return Complete();
        PostFirst();
        ReadChosen(&FolderListing::Complete);
    });
}

void FolderListing::Complete() {
    Try([this] {
        std::erase_if(mFound, [](const Found& found) { return !found.mIsKept; });
        if (mRequest.mKnown)
            mResult.mUpdates = Compare();
        else if (!mResult.mItems)
            BuildItems();
        DropStamps();
        Post(std::move(mCompletion), std::move(mResult), mBegin);
    });
}

void FolderListing::Try(const std::function<void()>& step) {
    try {
        step();
    } catch (const host::FileException& exception) {
        Fail(exception.SystemError(), exception.what());
    } catch (const std::exception& exception) {
        Fail(EIO, exception.what());
    }
}

/// What the names tell does not wait for the facts.
void FolderListing::PostFirst() {
    Result first;
    first.mKnown = mResult.mKnown;
    first.mFollowing = mResult.mFollowing;
    first.mIsFirst = true;
    first.mContents = std::exchange(mResult.mContents, {});
    first.mUpdates = Compare();
    if (!first.mContents.empty() || !first.mUpdates.empty()) Post(mCompletion, std::move(first), mBegin);
}

void FolderListing::DropStamps() {
    std::erase_if(mRequest.mMemory->mLockStamps,
                  [&](const auto& stamp) { return !std::ranges::binary_search(mLocked, stamp.first); });
}

/// An empty root that was not empty may be the folder on which its volume was mounted.
bool FolderListing::IsVolumeGone() {
    if (!mRequest.mIsRoot) return false;
    std::optional<long>& type = mRequest.mMemory->mVolumeType;
    const AnswerWatch::Call call(mRequest.mAnswerWatch, mRequest.mFolder);
    const long now = GetServices().mFileSystem->VolumeType(mRequest.mFolder->mBytes);
    const bool hasEmptied = mFound.empty() && mRequest.mKnown && mRequest.mKnown->Count() > 0;
    if (hasEmptied && (mRequest.mIsLost || (type && *type != now))) return true;
    type = now;
    return false;
}

/// As they are shown: then the items that the store keeps stand in the order in which most ask for them.
void FolderListing::SortFound() {
    std::vector<std::u16string_view> names;
    names.reserve(mFound.size());
    for (const Found& found : mFound) names.push_back(found.mName);
    std::vector<Found> sorted;
    sorted.reserve(mFound.size());
    for (const std::uint32_t place : OrderAsShown(names)) sorted.push_back(std::move(mFound[place]));
    mFound = std::move(sorted);
}

/// At the same time; the items the first time only.
void FolderListing::MakeContentsAndItems() {
    std::vector<Named> items;
    items.reserve(mFound.size());
    for (const Found& found : mFound) items.push_back({found.mName, found.GetKind()});
    const auto make = [&](std::size_t which) {
        which == 0 ? static_cast<void>(mResult.mContents = MakeContents(*mRequest.mFolder, items))
                   : BuildItems();
    };
    const bool isFirst = !mRequest.mKnown;
    if (isFirst && mFound.size() >= kEntriesPerThread) return RunShared(2, make);
    make(0);
    if (isFirst) make(1);
}

void FolderListing::BuildItems() {
    std::size_t units = 0;
    for (const Found& found : mFound) units += found.mName.size();
    mResult.mItems = std::make_shared<FolderItems>();
    mResult.mItems->Reserve(mFound.size(), units);
    for (Found& found : mFound) mResult.mItems->Add(found.mName).mFacts = std::move(found.mFacts);
}

FolderListing::Contents FolderListing::MakeContents(const FolderPath& folder, const FolderItems& items) {
    std::vector<std::u16string_view> names;
    names.reserve(items.Count());
    for (const FolderItems::Item& item : items.Get()) names.push_back(items.NameOf(item));
    std::vector<Named> sorted;
    sorted.reserve(names.size());
    for (const std::uint32_t place : OrderAsShown(names))
        sorted.push_back({names[place], items.Get()[place].mFacts.mKind});
    return MakeContents(folder, sorted);
}

FolderListing::Contents FolderListing::MakeContents(const FolderPath& folder, const std::vector<Named>& items) {
    Contents contents;
    std::size_t begin = 0;
    std::size_t end = items.size() > kLongestWhole ? kFirstPartSize : items.size();
    do {
        const auto content = std::make_shared<host::DirectoryContent>(folder.mText);
        std::size_t units = 0;
        for (std::size_t i = begin; i < end; ++i) units += items[i].mName.size();
        content->Reserve(end - begin, units);
        for (; begin < end; ++begin) content->Add(items[begin].mName, items[begin].mKind == ItemKind::Folder);
        contents.push_back(content);
        end = std::min(end + kPartSize, items.size());
    } while (begin < items.size());
    return contents;
}

/// What differs from what was known.
std::vector<ItemUpdate> FolderListing::Compare() const {
    const FolderItems& known = *mRequest.mKnown;
    std::vector<ItemUpdate> updates;
    std::vector<bool> isStillThere(known.Count());
    for (const Found& found : mFound) {
        if (found.mKnown) {
            isStillThere[static_cast<std::size_t>(found.mKnown - known.Get().data())] = true;
            if (!IsNews(found.mKnown->mFacts, found.mFacts, true)) continue;
        }
        ItemUpdate& update = updates.emplace_back();
        update.mName = found.mName;
        update.mFacts = found.mFacts;
        update.mIsLockKnown = true;
    }
    for (std::size_t i = 0; i < isStillThere.size(); ++i) {
        if (isStillThere[i]) continue;
        ItemUpdate& update = updates.emplace_back();
        update.mName = known.NameOf(known.Get()[i]);
        update.mIsGone = true;
    }
    return updates;
}

void FolderListing::Fail(int systemError, std::string text) {
    mResult.mSystemError = systemError;
    mResult.mErrorText = std::move(text);
    mResult.mContents.clear();
    mResult.mUpdates.clear();
    Post(std::move(mCompletion), std::move(mResult), mBegin);
}

/// Only the result goes to the UI thread; all else is destroyed here.
void FolderListing::Post(Completion completion, Result&& result, Clock::time_point begin) {
    result.mDuration = std::chrono::ceil<std::chrono::milliseconds>(Clock::now() - begin);
    GetServices().mMainThread->Post(
        [completion = std::move(completion), posted = std::make_shared<Result>(std::move(result))] {
            completion(std::move(*posted));
        });
}

}  // namespace desk
