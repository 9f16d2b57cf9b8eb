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

/// True when another process of this machine holds the lock, as far as is known.
bool IsHeldHere(const ItemFacts& facts) {
    const Desktop* desktop = GetServices().mDesktop;
    const LockRecord* record = facts.mLock.get();
    return desktop && record && record->mPid != ::getpid() && IsOfThisMachine(*record, *desktop);
}

}  // namespace

void FolderStoreImpl::WatchHolder(std::u16string_view path, const ItemFacts& facts) {
    if (mHeldHere.contains(path) || !IsHeldHere(facts)) return;
    if (IsLockStale(*facts.mLock, *GetServices().mDesktop)) return;
    mHeldHere.emplace(path);
    if (mHolderTimer == 0)
        mHolderTimer = GetServices().mMainThread->StartTimer(kInterval, [this] { LookForHolders(); });
}

void FolderStoreImpl::LookForHolders() {
    for (const host::UTF16String& path : std::vector(mHeldHere.begin(), mHeldHere.end())) {
        Folder* folder = nullptr;
        const FolderItems::Item* item = FindItem(path, folder);
        const bool isHeldHere = item && IsHeldHere(item->mFacts);
        if (isHeldHere && !IsLockStale(*item->mFacts.mLock, *GetServices().mDesktop)) continue;
        mHeldHere.erase(path);
        if (!isHeldHere) continue;
        Changes changes;
        changes.mContent.push_back(
            MakeProperties(*folder->mPath, folder->mItems->NameOf(*item), item->mFacts.mKind));
        const FolderPtr kept = FindFolderPtr(folder->mPath->mText);
        DeliverChanges(kept, std::move(changes));
        DeliverNext(kept);
    }
    if (mHeldHere.empty()) GetServices().mMainThread->StopTimer(std::exchange(mHolderTimer, 0));
}

}  // namespace desk
