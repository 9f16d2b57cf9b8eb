#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "desk/core/work/Lifetime.h"
#include "host/core/Export.h"
#include "host/core/Messaging.h"
#include "host/core/Strings.h"

namespace desk {

/// One copy of the queue, as it stands.
struct CopyJob {
    enum class State : std::uint8_t {
        Waiting,
        UnderWay,
        Done,
        Failed,
        /// The volume does not tell whether the copy has got its name.
        InDoubt,
        Cancelled
    };

    /// Never given to another job.
    std::uint64_t mID = 0;
    host::UTF16String mSource;
    /// Where it is to land; once it is done, where it has landed (a name that was taken got another).
    host::UTF16String mDestination;
    State mState = State::Waiting;
    /// Under way, and cancelled: it ends at its next step.
    bool mIsCancelling = false;
    std::uint64_t mBytesDone = 0;
    /// 0 while it is not known.
    std::uint64_t mBytesTotal = 0;
    /// Absent until the pace is steady.
    std::optional<std::chrono::seconds> mTimeLeft;
    /// Why it failed, or where the copy may stand, localised.
    host::UTF16String mReason;

    bool HasFailed() const { return mState == State::Failed || mState == State::InDoubt; }
    bool IsFinished() const { return mState != State::Waiting && mState != State::UnderWay; }
};

/// The queue has changed: jobs, their states, or how far they have come.
class ZUHOST_API CopyQueueChangedMessage : public host::MessageTemplate<CopyQueueChangedMessage> {
public:
    ~CopyQueueChangedMessage() override;
};

/// Where `CopyQueueChangedMessage` is announced: the first change at once, those that follow and the progress
/// of what is under way once in `CopyQueue::kPace`.
inline const host::StationID kStation_CopyQueue{"desk.copyqueue"};

/// The copies of projects that are made in the background, one after another on one worker, in the order in
/// which they were asked for. Nothing is ever replaced; a copy that fails or is cancelled leaves nothing of its
/// own; a copied project carries no lock. When a production is closed, the jobs that were to land in it are
/// cancelled. The queue that was made last is the process's while it exists. UI thread.
class ZUHOST_API CopyQueue : private host::Listener {
public:
    static constexpr std::chrono::milliseconds kPace{100};

    CopyQueue();
    /// Cancels all jobs. A step that is under way comes to its end on its worker.
    ~CopyQueue() override;

    /// Null when the process has none.
    static CopyQueue* Current();

    /// What is done when something stands at a job's destination.
    enum class IfTaken : std::uint8_t { Fail, MakeUnique };
    /// Adds a copy of the project file at `source`. The disk is not touched before its turn.
    void Add(const host::UTF16String& source, const host::UTF16String& destination, IfTaken ifTaken);

    /// All jobs that have not been cleared, in the order in which they were added.
    std::vector<CopyJob> GetJobs() const;
    /// True while a job is waiting or under way.
    bool IsBusy() const;
    /// True when a job that is not finished is to land at `path` (normalised).
    bool IsDestination(const host::UTF16String& path) const;

    /// Cancels a job that is not finished: a waiting one at once, one under way at its next step. Unknown jobs
    /// are ignored.
    void Cancel(std::uint64_t id);
    void CancelAll();
    /// Forgets the jobs that are finished.
    void ClearFinished();

private:
    struct Job;
    using JobPtr = std::shared_ptr<Job>;

    void ListenToMessage(const host::Message& message) override;
    void CancelJob(const JobPtr& job);
    void StartNext();
    void Finish(const JobPtr& job);
    void LeaveBehind(const JobPtr& job);
    void Announce();
    void AnnounceNow();

    std::deque<JobPtr> mJobs;
    JobPtr mUnderWay;
    std::uint64_t mLastID = 0;
    /// Something was announced less than `kPace` ago.
    bool mIsPaced = false;
    bool mIsChanged = false;
    CopyQueue* mBefore;
    Lifetime mLifetime;
};

}  // namespace desk
