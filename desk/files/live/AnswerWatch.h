#pragma once

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>

#include "desk/core/names/FolderPath.h"

namespace desk {

/// Notices when a volume leaves a call without any answer: a hung call cannot be cancelled, and says nothing.
/// Has other workers stand in for those that wait (`WorkerPool::StandInFor`). Workers mark their calls; made,
/// asked and stopped on the UI thread.
class AnswerWatch : public std::enable_shared_from_this<AnswerWatch> {
    using Time = std::chrono::steady_clock::time_point;
    struct Waiting {
        std::shared_ptr<const FolderPath> mFolder;
        Time mSince;
    };

public:
    /// Calls to a folder's volume, one after another, while it exists. On a worker.
    class Call {
    public:
        Call(std::shared_ptr<AnswerWatch> watch, std::shared_ptr<const FolderPath> folder);
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;
        /// The volume has answered; the next call begins.
        void Next();

    private:
        const std::shared_ptr<AnswerWatch> mWatch;
        std::list<Waiting>::iterator mWaiting;
    };

    /// Calls to folders for which `counts` is true are waited for. `changed` is called when the silence of the
    /// volume may have begun, grown or ended.
    AnswerWatch(std::function<bool(const host::UTF16String& folder)> counts, std::function<void()> changed);
    /// After it neither is called any more.
    void Stop();
    /// How long a call has been without an answer, in whole seconds; 0 while the volume answers.
    std::chrono::seconds GetSilence() const;

private:
    void Answered();
    void CheckIn(std::chrono::milliseconds delay);
    void CheckAgain();
    void Check();
    void ReplaceHungWorkers();
    std::optional<Waiting> FindOldest();
    void SetSilent(std::optional<Waiting> silent);

    std::function<bool(const host::UTF16String&)> mCounts;
    std::function<void()> mChanged;
    /// What the volume does not answer.
    std::optional<Waiting> mSilent;

    std::mutex mMutex;
    std::list<Waiting> mWaiting;
    bool mIsCheckDue = false;
    /// Calls have begun since the last check.
    bool mHasHadCalls = false;
    bool mIsSilent = false;
};

}  // namespace desk
