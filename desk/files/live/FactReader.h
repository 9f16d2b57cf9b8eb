#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "desk/core/work/ParallelWork.h"
#include "desk/files/live/AnswerWatch.h"
#include "desk/files/live/ItemReading.h"
#include "desk/files/live/ReadingLane.h"

namespace desk {

/// Reads the facts of items on workers, the newest request first, and brings them to the UI thread many at a
/// time. Made, asked and dropped on the UI thread.
class FactReader : public std::enable_shared_from_this<FactReader> {
public:
    struct Question {
        std::shared_ptr<const FolderPath> mFolder;
        host::UTF16String mName;
        bool mHasLockFile = false;
    };
    struct Answer {
        std::shared_ptr<const FolderPath> mFolder;
        ItemUpdate mUpdate;
    };
    /// `areAll`: nothing that was asked for is left.
    using Receiver = std::function<void(std::vector<Answer> answers, bool areAll)>;

    FactReader(std::shared_ptr<VolumeSpeed> speed, std::shared_ptr<ReadingLane> lane,
               std::shared_ptr<AnswerWatch> answerWatch, Receiver receiver);
    void Ask(std::vector<Question> questions);
    /// Takes back and returns what no worker has begun.
    std::vector<Question> DropWaiting();

private:
    void StartWorkers();
    void Work();
    std::vector<Question> TakeChunk();
    void Finish(std::vector<Answer> answers);
    void Flush();

    const std::shared_ptr<VolumeSpeed> mSpeed;
    const std::shared_ptr<ReadingLane> mLane;
    const std::shared_ptr<AnswerWatch> mAnswerWatch;
    const Receiver mReceiver;
    std::mutex mMutex;
    /// The newest at the back.
    std::vector<Question> mWaiting;
    std::size_t mWorkers = 0;
    std::size_t mUnderWay = 0;
    std::vector<Answer> mAnswers;
    bool mIsFlushQueued = false;
};

}  // namespace desk
