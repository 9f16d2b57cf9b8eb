#include "desk/files/live/AnswerWatch.h"

#include <algorithm>
#include <string>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/WorkerPool.h"

namespace desk {
namespace {

/// While something is not answered, it is looked at this often.
constexpr std::chrono::milliseconds kPace{1000};

}  // namespace

AnswerWatch::Call::Call(std::shared_ptr<AnswerWatch> watch, std::shared_ptr<const FolderPath> folder)
    : mWatch(std::move(watch)) {
    bool isFirst = false;
    {
        const std::lock_guard lock(mWatch->mMutex);
        mWaiting = mWatch->mWaiting.insert(mWatch->mWaiting.end(),
                                           {std::move(folder), GetServices().mMainThread->Now()});
        isFirst = !std::exchange(mWatch->mIsCheckDue, true);
        mWatch->mHasHadCalls = true;
    }
    if (isFirst) mWatch->CheckIn(kVolumePatience);
}

AnswerWatch::Call::~Call() {
    {
        const std::lock_guard lock(mWatch->mMutex);
        mWatch->mWaiting.erase(mWaiting);
    }
    mWatch->Answered();
}

void AnswerWatch::Call::Next() {
    {
        const std::lock_guard lock(mWatch->mMutex);
        mWaiting->mSince = GetServices().mMainThread->Now();
    }
    mWatch->Answered();
}

AnswerWatch::AnswerWatch(std::function<bool(const host::UTF16String&)> counts, std::function<void()> changed)
    : mCounts(std::move(counts)), mChanged(std::move(changed)) {}

void AnswerWatch::Stop() {
    mCounts = nullptr;
    mChanged = nullptr;
}

std::chrono::seconds AnswerWatch::GetSilence() const {
    if (!mSilent) return std::chrono::seconds(0);
    return std::chrono::duration_cast<std::chrono::seconds>(GetServices().mMainThread->Now() - mSilent->mSince);
}

/// The end of a silence shows at once.
void AnswerWatch::Answered() {
    {
        const std::lock_guard lock(mMutex);
        if (!std::exchange(mIsSilent, false)) return;
    }
    GetServices().mMainThread->Post([self = shared_from_this()] { self->Check(); });
}

void AnswerWatch::CheckIn(std::chrono::milliseconds delay) {
    GetServices().mMainThread->PostDelayed([self = shared_from_this()] { self->CheckAgain(); }, delay);
}

void AnswerWatch::CheckAgain() {
    Check();
    std::chrono::milliseconds delay = kVolumePatience;
    {
        const std::lock_guard lock(mMutex);
        // While calls come again and again, a worker need not wake the main thread for each.
        mIsCheckDue = mCounts && (std::exchange(mHasHadCalls, false) || !mWaiting.empty());
        if (!mIsCheckDue) return;
        if (const auto oldest = std::ranges::min_element(mWaiting, {}, &Waiting::mSince);
            oldest != mWaiting.end()) {
            const auto left = oldest->mSince + kVolumePatience - GetServices().mMainThread->Now();
            delay = std::max(kPace, std::chrono::ceil<std::chrono::milliseconds>(left));
        }
    }
    CheckIn(delay);
}

/// Calls that are not answered keep their workers for good; what other volumes answer goes on.
void AnswerWatch::ReplaceHungWorkers() {
    std::size_t hung = 0;
    {
        const std::lock_guard lock(mMutex);
        const auto now = GetServices().mMainThread->Now();
        hung = static_cast<std::size_t>(std::ranges::count_if(
            mWaiting, [now](const Waiting& waiting) { return now - waiting.mSince >= kVolumePatience; }));
    }
    GetServices().mWorkerPool->StandInFor(hung);
}

void AnswerWatch::Check() {
    if (!mCounts) return;
    ReplaceHungWorkers();
    std::optional<Waiting> oldest = FindOldest();
    const auto now = GetServices().mMainThread->Now();
    const bool isSilent = oldest && now - oldest->mSince >= kVolumePatience;
    if (!isSilent) oldest.reset();
    {
        const std::lock_guard lock(mMutex);
        mIsSilent = isSilent;
    }
    if (isSilent || mSilent) SetSilent(std::move(oldest));
}

std::optional<AnswerWatch::Waiting> AnswerWatch::FindOldest() {
    const std::lock_guard lock(mMutex);
    std::optional<Waiting> oldest;
    for (const Waiting& waiting : mWaiting)
        if ((!oldest || waiting.mSince < oldest->mSince) && mCounts(waiting.mFolder->mText)) oldest = waiting;
    return oldest;
}

void AnswerWatch::SetSilent(std::optional<Waiting> silent) {
    if (!silent && mCounts(mSilent->mFolder->mText))
        Log(LogLevel::Info, "The volume of " + mSilent->mFolder->mBytes + " did not answer for " +
                                std::to_string(GetSilence().count()) + " s");
    // Of several calls the first tells how long it has been.
    if (!silent || !mSilent) mSilent = std::move(silent);
    mChanged();
}

}  // namespace desk
