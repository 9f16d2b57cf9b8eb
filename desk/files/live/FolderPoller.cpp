#include "desk/files/live/FolderPoller.h"

#include <algorithm>
#include <utility>

#include "desk/core/edges/Services.h"

namespace desk {
namespace {

/// A folder is polled at most for this part of the time.
constexpr int kShareOfTime = 3;
/// But after a hang it is asked again this soon.
constexpr std::chrono::seconds kLongestInterval(30);

/// So often at most while nobody uses the program: the volume and the processor are left alone, and who comes
/// back sees what is new within two seconds.
FolderPoller::Milliseconds ShortestInterval() {
    const auto unused = GetServices().mMainThread->GetTimeUnused();
    if (unused >= std::chrono::minutes(1)) return std::chrono::seconds(30);
    return unused >= std::chrono::seconds(20) ? std::chrono::seconds(10) : FolderPoller::kInterval;
}

}  // namespace

FolderPoller::~FolderPoller() {
    if (mTimer != 0) GetServices().mMainThread->StopTimer(mTimer);
}

void FolderPoller::Add(const host::UTF16String& folder) {
    if (!mFolders.try_emplace(folder).second) return;
    if (mTimer == 0) mTimer = GetServices().mMainThread->StartTimer(kInterval, [this] { Tick(); });
}

void FolderPoller::Remove(const host::UTF16String& folder) {
    const auto found = mFolders.find(folder);
    if (found == mFolders.end()) return;
    if (found->second.mIsUnderWay) --mUnderWay;
    mFolders.erase(found);
    if (mFolders.empty()) GetServices().mMainThread->StopTimer(std::exchange(mTimer, 0));
}

void FolderPoller::Finished(const host::UTF16String& folder, Milliseconds duration) {
    const auto found = mFolders.find(folder);
    if (found == mFolders.end() || !found->second.mIsUnderWay) return;
    found->second.mIsUnderWay = false;
    found->second.mInterval = std::clamp<Milliseconds>(kShareOfTime * duration, kInterval, kLongestInterval);
    found->second.mFinished = GetServices().mMainThread->Now();
    --mUnderWay;
    StartWaiting();
}

FolderPoller::Milliseconds FolderPoller::GetInterval() const {
    Milliseconds longest = ShortestInterval();
    for (const auto& [folder, poll] : mFolders) longest = std::max(longest, poll.mInterval);
    return longest;
}

void FolderPoller::Tick() {
    const auto now = GetServices().mMainThread->Now();
    const Milliseconds shortest = ShortestInterval();
    mWaiting.clear();
    for (const auto& [folder, poll] : mFolders)
        if (!poll.mIsUnderWay && poll.mFinished + std::max(shortest, poll.mInterval) - kInterval <= now)
            mWaiting.push_back(folder);
    StartWaiting();
}

void FolderPoller::StartWaiting() {
    while (mUnderWay < mMostAtATime && !mWaiting.empty()) {
        const host::UTF16String folder = std::move(mWaiting.front());
        mWaiting.pop_front();
        const auto found = mFolders.find(folder);
        if (found == mFolders.end() || std::exchange(found->second.mIsUnderWay, true)) continue;
        ++mUnderWay;
        mPoll(folder);
    }
}

}  // namespace desk
