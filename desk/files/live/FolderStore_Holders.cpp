// Locks that end without a trace on the volume: those of processes of this machine.
#include <unistd.h>

#include <vector>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/LockRecord.h"
#include "desk/files/live/FolderStoreImpl.h"

namespace desk {
namespace {

constexpr std::chrono::seconds kInterval{2};

/// True when the lock is that of another process of this machine, which may have ended.
bool IsOfAnotherProcessHere(const ItemFacts& facts) {
    const Desktop* desktop = GetServices().mDesktop;
    const LockRecord* record = facts.mLock.get();
    return desktop && record && record->mPid != ::getpid() && IsOfThisMachine(*record, *desktop);
}

}  // namespace

void FolderStoreImpl::WatchHolder(std::u16string_view path, const ItemFacts& facts) {
    if (mHolders.contains(path) || !IsOfAnotherProcessHere(facts)) return;
    if (IsLockStale(*facts.mLock, *GetServices().mDesktop)) return;
    mHolders.emplace(path);
    if (mHolderTimer == 0)
        mHolderTimer = GetServices().mMainThread->StartTimer(kInterval, [this] { LookForHolders(); });
}

void FolderStoreImpl::LookForHolders() {
    for (const host::UTF16String& path : std::vector(mHolders.begin(), mHolders.end())) {
        Folder* folder = nullptr;
        const FolderItems::Item* item = FindItem(path, folder);
        const bool isOfAnotherProcess = item && IsOfAnotherProcessHere(item->mFacts);
        if (isOfAnotherProcess && !IsLockStale(*item->mFacts.mLock, *GetServices().mDesktop)) continue;
        mHolders.erase(path);
        if (!isOfAnotherProcess) continue;
        Changes changes(*folder);
        changes.mContent.Add(folder->mItems->NameOf(*item), item->mFacts.mKind == ItemKind::Folder);
        const FolderPtr kept = FindFolderPtr(folder->mPath->mText);
        DeliverChanges(kept, std::move(changes));
        DeliverNext(kept);
    }
    if (mHolders.empty()) GetServices().mMainThread->StopTimer(std::exchange(mHolderTimer, 0));
}

}  // namespace desk
