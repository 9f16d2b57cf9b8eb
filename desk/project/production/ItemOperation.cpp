#include "desk/project/production/ItemOperation.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <mutex>
#include <ranges>
#include <set>

#include "desk/core/durable/Presence.h"
#include "desk/core/durable/VolumeMove.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/ParallelWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/project/production/Production.h"
#include "desk/project/production/TrashRecords.h"
#include "host/core/Localizer.h"
#include "host/files/File.h"
#include "host/files/FileUtils.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

using host::FileException;
using Result = host::ItemOutcome::Result;
using Taking = MoveLocks::Taking;

/// Items whose locks are held at the same time, and whose folders are flushed together.
constexpr std::size_t kBatch = 256;
/// Items whose names are looked up at once before they move: so few that all move within a second.
constexpr std::size_t kLookedUpAhead = 16;
/// What an item counts in the progress, beside the bytes that are copied.
constexpr std::uint64_t kItemWeight = 64 * 1024;

FileSystem& Disk() {
    return *GetServices().mFileSystem;
}

/// Of each trash once.
void LogNotRecorded(const std::string& trashFolder, const FileException& exception) {
    static std::mutex sMutex;
    static std::set<std::string> sLogged;
    const std::lock_guard lock(sMutex);
    if (!sLogged.insert(trashFolder).second) return;
    const bool isInDoubt = dynamic_cast<const MoveInDoubt*>(&exception) != nullptr;
    Log(LogLevel::Warning, "Where what is in " + trashFolder + " came from " +
                               (isInDoubt ? "may not be recorded: " : "is not recorded: ") + exception.what());
}

}  // namespace

ItemOperation::Item::Item(const host::PlannedItem& plan, Verb verb)
    : mSource(host::PathUtils::ToNormalizedPath(plan.mSource)),
      mDestination(host::PathUtils::ToNormalizedPath(plan.mDestination)),
      mFrom(host::UTF16to8(mSource)),
      mTo(host::UTF16to8(mDestination)) {
    if ((verb == Verb::Move || verb == Verb::MoveLocked) && host::IsVantorProjectFile(mSource))
        mLocks = std::make_unique<MoveLocks>(mSource, mDestination);
}

void ItemOperation::Item::Fail(const FileException& exception) {
    const auto* doubt = dynamic_cast<const MoveInDoubt*>(&exception);
    mOutcome.mResult = doubt ? Result::InDoubt : Result::Failed;
    if (doubt)
        mOutcome.mFailure = std::make_shared<MoveInDoubt>(*doubt);
    else
        mOutcome.mFailure = std::make_shared<FileException>(exception);
}

void ItemOperation::Item::SetDestination(const host::UTF16String& path) {
    mDestination = path;
    mTo = host::UTF16to8(path);
}

ItemOperation::ItemOperation(Verb verb, Telling telling, const std::vector<host::PlannedItem>& plan)
    : mVerb(verb), mTelling(telling) {
    mItems.reserve(plan.size());
    for (const host::PlannedItem& item : plan) mItems.emplace_back(item, verb);
    const auto isToTrash = [](const Item& item) {
        return host::IsInZuProductionTrash(item.mDestination, false);
    };
    if (IsCopy() || std::ranges::none_of(mItems, isToTrash)) return;
    mTrashFolder = host::UTF16to8(host::GetZuProductionTrashDirectoryPath());
    mProductionFolder = host::UTF16to8(Production::Instance().GetFolder());
}

std::vector<host::ItemOutcome> ItemOperation::Run() {
    if (mItems.empty()) return {};
    const ScGiveUpTogether together;
    // All that has moved shows in one step, not row by row.
    mPaused.emplace();
    RunLongWork(MakeTitle(), [this](WorkProgress& progress) { Work(progress); });
    return Conclude();
}

void ItemOperation::RunOnWorker(WorkProgress& progress) {
    try {
        Work(progress);
    } catch (const std::exception& exception) {
        Log(LogLevel::Error, "copy " + mItems.front().mFrom + ": " + exception.what());
        mItems.front().Fail({"copy", mItems.front().mSource, ENOMEM});
    }
}

std::vector<host::ItemOutcome> ItemOperation::Conclude() {
    Follow();
    TryOwnLocksAgain();
    GiveUpLeftLocks();
    LookAgain();
    mPaused.reset();
    Announce();
    std::vector<host::ItemOutcome> outcomes;
    for (const Item& item : mItems) outcomes.push_back(item.mOutcome);
    return outcomes;
}

host::UTF16String ItemOperation::MakeTitle() const {
    const bool isCopy = IsCopy();
    const host::UTF16String name = host::PathUtils::GetFullFilePart(mItems.front().mSource);
    if (mItems.size() == 1)
        return host::ZString(isCopy ? "$$$/Vantor/Desk/Copies/CopyingFolder=Copying “@0”"
                                    : "$$$/Vantor/Desk/Files/Moving=Moving “@0”",
                             {name});
    return host::ZString(isCopy ? "$$$/Vantor/Desk/Files/CopyingItems=Copying @0 Items"
                                : "$$$/Vantor/Desk/Files/MovingItems=Moving @0 Items",
                         {host::NumberToString(static_cast<long long>(mItems.size()))});
}

/// The progress of one item is that of its bytes.
std::uint64_t ItemOperation::GetItemWeight() const {
    return mItems.size() > 1 ? kItemWeight : 0;
}

void ItemOperation::Work(WorkProgress& progress) {
    progress.AddToTotal(mItems.size() * GetItemWeight());
    if (!CheckTrash()) return;
    for (std::size_t begin = 0, end = 0; begin < mItems.size(); begin = end) {
        end = FindBatchEnd(begin);
        if (!DoBatch(std::span(mItems).subspan(begin, end - begin), progress)) return;
    }
    mIsEndReached = true;
}

/// What comes from or to a place that another item leaves or takes is looked at when that has been moved.
std::size_t ItemOperation::FindBatchEnd(std::size_t begin) const {
    std::set<std::string> sources, destinations;
    for (std::size_t end = begin; end < std::min(begin + kBatch, mItems.size()); ++end) {
        const Item& item = mItems[end];
        for (std::string place = item.mFrom; place.size() > 1; place = FolderOf(place))
            if (sources.contains(place) || destinations.contains(place)) return end;
        if (sources.contains(item.mTo) || !destinations.insert(item.mTo).second) return end;
        sources.insert(item.mFrom);
    }
    return std::min(begin + kBatch, mItems.size());
}

/// Nothing may leave the production through a trash folder that is a link.
bool ItemOperation::CheckTrash() {
    if (mTrashFolder.empty()) return true;
    try {
        IsTrashFolderThere(Disk(), mTrashFolder);
        return true;
    } catch (const FileException& exception) {
        mItems.front().Fail(exception);
        return false;
    }
}

bool ItemOperation::DoBatch(std::span<Item> items, WorkProgress& progress) {
    CheckAll(items, progress);
    bool goesOn = true;
    for (std::size_t index = 0; goesOn && index < items.size(); ++index) {
        if (index % kLookedUpAhead == 0)
            LookUp(items.subspan(index, std::min(kLookedUpAhead, items.size() - index)));
        goesOn = Do(items[index], progress);
    }
    FlushFolders(items);
    mFlushed += items.size();
    AskToFollow();
    RunShared(items.size() + 1,
              [&](std::size_t index) { index == 0 ? Record(items) : Finish(items[index - 1]); });
    return goesOn;
}

/// The system asks a network volume for a name that it does not know, or has not asked for since a second or
/// so, and keeps everybody else out of the folder meanwhile. Asked for before, many names cost the time of one.
void ItemOperation::LookUp(std::span<const Item> items) const {
    if (IsCopy() || items.size() < 2) return;
    RunShared(items.size(), [&](std::size_t index) {
        try {
            Disk().Status(items[index].mFrom, false);
        } catch (const FileException&) {
            // The move itself will tell.
        }
    });
}

void ItemOperation::CheckAll(std::span<Item> items, WorkProgress& progress) {
    SharedLocks locks;
    const LockRecord* owner = nullptr;
    for (const Item& item : items) {
        if (mVerb != Verb::Move || !item.mLocks) continue;
        owner = &item.mLocks->GetOwner();
        locks.Add(FolderOf(item.mFrom));
        locks.Add(FolderOf(item.mTo));
    }
    if (owner) locks.Write(*owner);
    RunShared(items.size(), [&](std::size_t index) {
        if (progress.IsCancelled()) return;
        progress.SetItem(host::PathUtils::GetFullFilePart(items[index].mSource));
        Check(items[index], locks);
    });
    if (owner) TakeOver(items, locks, *owner, progress);
    std::ranges::move(locks.Remove(), std::back_inserter(mRemains));
}

/// Locks of processes that are gone: of the sources, then of the destinations. What is left after that, each
/// item tries for itself.
void ItemOperation::TakeOver(std::span<Item> items, SharedLocks& locks, const LockRecord& owner,
                             WorkProgress& progress) {
    constexpr int kRoundsTogether = 2;
    for (int round = 0; round <= kRoundsTogether && !progress.IsCancelled() && locks.RemoveDead(owner); ++round)
        RunShared(items.size(), [&](std::size_t index) {
            Item& item = items[index];
            if (item.mLocking != Taking::Dead || progress.IsCancelled()) return;
            progress.SetItem(host::PathUtils::GetFullFilePart(item.mSource));
            TakeLocks(item, round < kRoundsTogether ? &locks : nullptr);
        });
}

/// Looks at the source, and takes the locks of a project. What it finds is judged when the item's turn comes.
void ItemOperation::Check(Item& item, SharedLocks& locks) const {
    if (IsCopy()) return;
    try {
        const ItemKind kind = Disk().Status(item.mFrom, false).mKind;
        item.mOutcome.mIsFolder = kind == ItemKind::Folder;
    } catch (const FileException& exception) {
        item.mIsThere = !IsAbsence(exception.SystemError());
        if (item.mIsThere) item.Fail(exception);
    }
    if (item.IsProject() && item.mIsThere && !item.mOutcome.mFailure) TakeLocks(item, &locks);
}

/// Without `locks` it shares none.
void ItemOperation::TakeLocks(Item& item, SharedLocks* locks) const {
    MoveLocks& taken = *item.mLocks;
    if (mVerb != Verb::Move)
        item.mLocking = taken.CheckSource();
    else if (locks)
        item.mLocking = taken.Take(locks->In(FolderOf(item.mFrom)), locks->In(FolderOf(item.mTo)));
    else
        item.mLocking = taken.Take();
    if (locks && item.mLocking == Taking::Dead)
        locks->NoteDead(taken.GetDeadLockPath(), taken.GetObstacle().mHolder.mNonce);
    item.mOutcome.mWasHeld = taken.WasHeld();
}

bool ItemOperation::Do(Item& item, WorkProgress& progress) {
    try {
        progress.ThrowIfCancelled(IsCopy() ? "copy" : "move", item.mFrom);
        if (item.mOutcome.mFailure) return false;
        progress.SetItem(host::PathUtils::GetFullFilePart(item.mSource));
        progress.AddDone(GetItemWeight());
        if (!item.mIsThere || item.mLocking != Taking::Taken) {
            Refuse(item);
            return true;
        }
        if (IsCopy())
            Copy(item, progress);
        else
            item.mLeftBehind = MoveItem(item.mFrom, item.mTo, progress, FolderFlush::ByCaller).mLeftBehind;
        item.mOutcome.mResult = Result::Done;
        return true;
    } catch (const FileException& exception) {
        item.Fail(exception);
        return false;
    }
}

void ItemOperation::Refuse(Item& item) const {
    item.mOutcome.mResult = Result::Refused;
    if (!item.mIsThere) return;
    if (item.mLocking == Taking::NoSourceLock) item.mOutcome.mResult = Result::NoSourceLock;
    if (item.mLocking == Taking::NoDestinationLock) item.mOutcome.mResult = Result::NoDestinationLock;
}

/// What cannot be flushed has moved nevertheless; the log says so.
void ItemOperation::FlushFolders(std::span<Item> items) const {
    if (IsCopy()) return;
    std::vector<std::string> folders;
    const auto add = [&folders](const std::string& path) {
        std::string folder = FolderOf(path);
        if (std::ranges::find(folders, folder) == folders.end()) folders.push_back(std::move(folder));
    };
    for (const Item& item : items | std::views::filter(&Item::IsDone)) {
        add(item.mTo);
        add(item.mFrom);
    }
    RunShared(folders.size(), [&](std::size_t index) { TryToFlushFolder(Disk(), folders[index]); });
}

/// One record for all of them.
void ItemOperation::Record(std::span<const Item> items) const {
    if (mTrashFolder.empty()) return;
    TrashRecord record;
    for (const Item& item : items) {
        const bool isNew = IsSameOrBelow(item.mTo, mTrashFolder) && !IsSameOrBelow(item.mFrom, mTrashFolder);
        if (item.IsDone() && isNew)
            record.mItems.push_back(
                {MakeRelative(item.mTo, mTrashFolder), MakeRelative(item.mFrom, mProductionFolder)});
    }
    if (record.mItems.empty()) return;
    const Desktop& desktop = *GetServices().mDesktop;
    record.mUser = desktop.UserName();
    record.mMachine = desktop.MachineName();
    record.mMovedAt = std::chrono::system_clock::to_time_t(desktop.Now());
    try {
        WriteTrashRecord(Disk(), mTrashFolder, record);
    } catch (const FileException& exception) {
        LogNotRecorded(mTrashFolder, exception);
    }
}

void ItemOperation::Finish(Item& item) const {
    if (item.mLocks) item.mLocks->GiveUp(item.IsDone());
}

/// As soon as the window handles events: a project that is open is not to be looked for where it was.
void ItemOperation::AskToFollow() {
    if (IsCopy()) return;
    GetServices().mMainThread->Post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->Follow();
    });
}

/// Locks of this process stood in the way: the keeper knows what has become of them.
void ItemOperation::TryOwnLocksAgain() {
    for (Item& item : mItems) {
        if (item.mOutcome.mResult != Result::Refused || item.mLocking != Taking::Own) continue;
        if (!mIsEndReached) {
            item.mOutcome.mResult = Result::NotReached;
            continue;
        }
        item.mLocking = item.mLocks->TakeByKeeper();
        item.mOutcome.mWasHeld = item.mLocks->WasHeld();
        RunLongWork(MakeTitle(), [&](WorkProgress& progress) {
            Do(item, progress);
            FlushFolders({&item, 1});
            Record({&item, 1});
            Finish(item);
        });
        FollowItem(item);
    }
}

namespace {

std::vector<host::ItemOutcome> RunItemOperation(ItemOperation::Verb verb, ItemOperation::Telling telling,
                                                const std::vector<host::PlannedItem>& plan) {
    return std::make_shared<ItemOperation>(verb, telling, plan)->Run();
}

[[noreturn]] void Throw(const FileException& failure) {
    if (const auto* doubt = dynamic_cast<const MoveInDoubt*>(&failure)) throw *doubt;
    throw failure;
}

/// Copies one item, and throws what keeps it.
void CopyOne(ItemOperation::Verb verb, const host::UTF16String& source, const host::UTF16String& destination) {
    const auto outcomes = RunItemOperation(verb, ItemOperation::Telling::Notices, {{source, destination}});
    if (outcomes.front().mFailure) Throw(*outcomes.front().mFailure);
}

}  // namespace

}  // namespace desk

namespace host {

using desk::ItemOperation;

std::vector<ItemOutcome> MoveItems(const std::vector<PlannedItem>& plan) {
    return desk::RunItemOperation(ItemOperation::Verb::Move, ItemOperation::Telling::Message, plan);
}

std::vector<ItemOutcome> CopyItems(const std::vector<PlannedItem>& plan) {
    return desk::RunItemOperation(ItemOperation::Verb::Copy, ItemOperation::Telling::Message, plan);
}

int File::Move(const UTF16String& source, const UTF16String& destination) {
    constexpr int kNotMoved = -1;
    const ItemOutcome outcome = desk::RunItemOperation(ItemOperation::Verb::MoveLocked,
                                                       ItemOperation::Telling::Notices, {{source, destination}})
                                    .front();
    if (outcome.mFailure) desk::Throw(*outcome.mFailure);
    return outcome.mResult == ItemOutcome::Result::Done ? 0 : kNotMoved;
}

void FileUtils::Copy(const UTF16String& source, const UTF16String& destination) {
    desk::CopyOne(ItemOperation::Verb::Copy, source, destination);
}

void FileUtils::Copy(const Dir& source, const Dir& destination) {
    desk::CopyOne(ItemOperation::Verb::Copy, source.FullPath(), destination.FullPath());
}

void Utilities::CopyDirectoryTree(const UTF16String& from, const UTF16String& to) {
    desk::CopyOne(ItemOperation::Verb::CopyOntoEmptyFolder, from, to);
}

}  // namespace host
