#include "desk/files/live/ChangeCollector.h"

#include <utility>

#include "desk/core/edges/Services.h"

namespace desk {

void FolderChange::Add(host::UTF16String name) {
    if (mIsWhole) return;
    mNames.insert(std::move(name));
    if (mNames.size() > kMostNames) AddWhole();
}

void FolderChange::AddWhole() {
    mIsWhole = true;
    mNames.clear();
}

void FolderChange::Merge(FolderChange&& other) {
    if (other.mIsWhole) AddWhole();
    mIsLost |= other.mIsLost;
    if (mIsWhole) return;
    mNames.merge(other.mNames);
    if (mNames.size() > kMostNames) AddWhole();
}

void ChangeCollector::Add(FolderChanges&& changes) {
    const std::lock_guard lock(mMutex);
    for (auto& [folder, change] : changes) mChanges[folder].Merge(std::move(change));
    if (mChanges.empty() || std::exchange(mIsFlushing, true)) return;
    GetServices().mMainThread->Post([self = shared_from_this()] { self->Flush(); });
}

void ChangeCollector::Flush() {
    FolderChanges changes;
    {
        const std::lock_guard lock(mMutex);
        changes.swap(mChanges);
        if (changes.empty()) {
            mIsFlushing = false;
            return;
        }
    }
    GetServices().mMainThread->PostDelayed([self = shared_from_this()] { self->Flush(); }, kPace);
    if (mReceiver) mReceiver(std::move(changes));
}

}  // namespace desk
