#include "desk/project/production/CopyQueue.h"

#include <algorithm>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/TimeLeft.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/project/production/ItemOperation.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {

namespace {

CopyQueue* sCurrent = nullptr;

}  // namespace

CopyQueueChangedMessage::~CopyQueueChangedMessage() = default;

struct CopyQueue::Job {
    /// The worker's while it runs.
    std::shared_ptr<ItemOperation> mOperation;
    WorkProgress mProgress;
    /// The UI thread's.
    CopyJob mFacts;
    TimeLeft mTimeLeft;
};

CopyQueue::CopyQueue() : mBefore(std::exchange(sCurrent, this)) {
    host::AddListener(host::kStation_ZuProductionFolderPanel, this);
}

CopyQueue::~CopyQueue() {
    host::RemoveListener(host::kStation_ZuProductionFolderPanel, this);
    for (const JobPtr& job : mJobs) job->mProgress.Cancel();
    sCurrent = mBefore;
}

CopyQueue* CopyQueue::Current() {
    return sCurrent;
}

void CopyQueue::Add(const host::UTF16String& source, const host::UTF16String& destination, IfTaken ifTaken) {
    auto job = std::make_shared<Job>();
    const auto verb =
        ifTaken == IfTaken::Fail ? ItemOperation::Verb::Add : ItemOperation::Verb::AddUnderFreeName;
    job->mOperation = std::make_shared<ItemOperation>(verb, ItemOperation::Telling::Notices,
                                                      std::vector<host::PlannedItem>{{source, destination}});
    job->mFacts.mID = ++mLastID;
    job->mFacts.mSource = source;
    job->mFacts.mDestination = destination;
    mJobs.push_back(std::move(job));
    StartNext();
    Announce();
}

std::vector<CopyJob> CopyQueue::GetJobs() const {
    std::vector<CopyJob> jobs;
    jobs.reserve(mJobs.size());
    for (const JobPtr& job : mJobs) {
        const WorkProgress::State progress = job->mProgress.Get();
        CopyJob& facts = jobs.emplace_back(job->mFacts);
        facts.mBytesDone = progress.mBytesDone;
        facts.mBytesTotal = progress.mBytesTotal;
        if (facts.mState == CopyJob::State::UnderWay)
            facts.mTimeLeft = job->mTimeLeft.Estimate(progress.mBytesTotal);
    }
    return jobs;
}

bool CopyQueue::IsBusy() const {
    return std::ranges::any_of(mJobs, [](const JobPtr& job) { return !job->mFacts.IsFinished(); });
}

bool CopyQueue::IsDestination(const host::UTF16String& path) const {
    return std::ranges::any_of(mJobs, [&](const JobPtr& job) {
        return !job->mFacts.IsFinished() && job->mFacts.mDestination == path;
    });
}

void CopyQueue::Cancel(std::uint64_t id) {
    const auto found = std::ranges::find(mJobs, id, [](const JobPtr& job) { return job->mFacts.mID; });
    if (found != mJobs.end()) CancelJob(*found);
}

void CopyQueue::CancelAll() {
    for (const JobPtr& job : mJobs) CancelJob(job);
}

void CopyQueue::CancelJob(const JobPtr& job) {
    CopyJob& facts = job->mFacts;
    if (facts.IsFinished() || facts.mIsCancelling) return;
    job->mProgress.Cancel();
    if (facts.mState == CopyJob::State::Waiting) {
        facts.mState = CopyJob::State::Cancelled;
    } else {
        facts.mIsCancelling = true;
        GetServices().mMainThread->PostDelayed(mLifetime.Guard([this, job] { LeaveBehind(job); }),
                                               kVolumePatience);
    }
    Announce();
}

/// Its worker may hang for good; the others need not.
void CopyQueue::LeaveBehind(const JobPtr& job) {
    if (mUnderWay != job) return;
    mUnderWay.reset();
    StartNext();
    Announce();
}

void CopyQueue::ClearFinished() {
    std::erase_if(mJobs, [](const JobPtr& job) { return job->mFacts.IsFinished(); });
    Announce();
}

void CopyQueue::ListenToMessage(const host::Message& message) {
    const auto* closed = host::MessageCast<host::ZuProductionFolderClosedMessage>(message);
    if (!closed) return;
    for (const JobPtr& job : mJobs)
        if (IsSameOrBelow(job->mFacts.mDestination, closed->GetPath())) CancelJob(job);
}

void CopyQueue::StartNext() {
    if (mUnderWay) return;
    const auto next =
        std::ranges::find(mJobs, CopyJob::State::Waiting, [](const JobPtr& job) { return job->mFacts.mState; });
    if (next == mJobs.end()) return;
    mUnderWay = *next;
    mUnderWay->mFacts.mState = CopyJob::State::UnderWay;
    const auto finish = mLifetime.Guard([this, job = mUnderWay] { Finish(job); });
    GetServices().mWorkerPool->Submit([job = mUnderWay, finish] {
        job->mOperation->RunOnWorker(job->mProgress);
        GetServices().mMainThread->Post(finish);
    });
}

void CopyQueue::Finish(const JobPtr& job) {
    CopyJob& facts = job->mFacts;
    const host::ItemOutcome outcome = job->mOperation->Conclude().front();
    facts.mDestination = job->mOperation->GetDestination(0);
    if (outcome.mFailure) facts.mReason = job->mOperation->DescribeFailure(0);
    if (outcome.mResult == host::ItemOutcome::Result::Done)
        facts.mState = CopyJob::State::Done;
    else if (job->mProgress.IsCancelled())
        facts.mState = CopyJob::State::Cancelled;
    else
        facts.mState = outcome.mResult == host::ItemOutcome::Result::InDoubt ? CopyJob::State::InDoubt
                                                                             : CopyJob::State::Failed;
    if (mUnderWay == job) mUnderWay.reset();
    StartNext();
    Announce();
}

void CopyQueue::Announce() {
    mIsChanged = true;
    if (!mIsPaced) AnnounceNow();
}

void CopyQueue::AnnounceNow() {
    mIsChanged = false;
    mIsPaced = true;
    MainThread& mainThread = *GetServices().mMainThread;
    if (mUnderWay) mUnderWay->mTimeLeft.Note(mainThread.Now(), mUnderWay->mProgress.Get().mBytesDone);
    mainThread.PostDelayed(mLifetime.Guard([this] {
        mIsPaced = false;
        if (mIsChanged || mUnderWay) AnnounceNow();
    }),
                           kPace);
    host::BroadcastMessage(kStation_CopyQueue, CopyQueueChangedMessage());
}

}  // namespace desk
