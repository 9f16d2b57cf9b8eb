#include "desk/files/live/FactReader.h"

#include <iterator>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"

namespace desk {
namespace {

using Clock = std::chrono::steady_clock;

/// Answers that come one after another are brought to the UI thread at this pace.
constexpr std::chrono::milliseconds kPace{16};
/// No more of them in one turn of the event loop.
constexpr std::size_t kMostAtOnce = 10'000;

/// Takes so many at most from the back of `all`.
template <class Item>
std::vector<Item> TakeLast(std::vector<Item>& all, std::size_t most) {
    if (all.size() <= most) return std::exchange(all, {});
    const auto begin = all.end() - static_cast<std::ptrdiff_t>(most);
    std::vector<Item> last(std::make_move_iterator(begin), std::make_move_iterator(all.end()));
    all.erase(begin, all.end());
    return last;
}

}  // namespace

FactReader::FactReader(std::shared_ptr<VolumeSpeed> speed, std::shared_ptr<ReadingLane> lane,
                       std::shared_ptr<AnswerWatch> answerWatch, Receiver receiver)
    : mSpeed(std::move(speed)),
      mLane(std::move(lane)),
      mAnswerWatch(std::move(answerWatch)),
      mReceiver(std::move(receiver)) {}

void FactReader::Ask(std::vector<Question> questions) {
    {
        const std::lock_guard lock(mMutex);
        mWaiting.insert(mWaiting.end(), std::make_move_iterator(questions.begin()),
                        std::make_move_iterator(questions.end()));
    }
    StartWorkers();
}

std::vector<FactReader::Question> FactReader::DropWaiting() {
    const std::lock_guard lock(mMutex);
    return std::exchange(mWaiting, {});
}

void FactReader::StartWorkers() {
    std::size_t count = 0;
    {
        const std::lock_guard lock(mMutex);
        const std::size_t wanted = (mWaiting.size() + mSpeed->ChunkSize() - 1) / mSpeed->ChunkSize();
        const std::size_t most = ReadingLane::CountWorkers();
        count = std::min(wanted, most - std::min(mWorkers, most));
        mWorkers += count;
    }
    for (; count > 0; --count) mLane->Submit([self = shared_from_this()] { self->Work(); });
}

/// Answers one chunk and stands in line again.
void FactReader::Work() {
    std::vector<Question> questions = TakeChunk();
    if (questions.empty()) return;
    std::vector<Answer> answers;
    answers.reserve(questions.size());
    const auto begin = Clock::now();
    for (Question& question : questions) {
        const AnswerWatch::Call call(mAnswerWatch, question.mFolder);
        Answer& answer = answers.emplace_back();
        answer.mUpdate = ReadItem(*question.mFolder, question.mName, question.mHasLockFile);
        answer.mFolder = std::move(question.mFolder);
    }
    mSpeed->Note(Clock::now() - begin, answers.size());
    Finish(std::move(answers));
    mLane->Submit([self = shared_from_this()] { self->Work(); });
}

std::vector<FactReader::Question> FactReader::TakeChunk() {
    const std::lock_guard lock(mMutex);
    if (mWaiting.empty()) {
        --mWorkers;
        return {};
    }
    std::vector<Question> chunk = TakeLast(mWaiting, mSpeed->ChunkSize());
    mUnderWay += chunk.size();
    return chunk;
}

void FactReader::Finish(std::vector<Answer> answers) {
    const std::lock_guard lock(mMutex);
    mUnderWay -= answers.size();
    mAnswers.insert(mAnswers.end(), std::make_move_iterator(answers.begin()),
                    std::make_move_iterator(answers.end()));
    const bool isAllDone = mUnderWay == 0 && mWaiting.empty();
    if (isAllDone)
        GetServices().mMainThread->Post([self = shared_from_this()] { self->Flush(); });
    else if (!std::exchange(mIsFlushQueued, true))
        GetServices().mMainThread->PostDelayed([self = shared_from_this()] { self->Flush(); }, kPace);
}

void FactReader::Flush() {
    std::vector<Answer> answers;
    bool areAll = false;
    {
        const std::lock_guard lock(mMutex);
        answers = TakeLast(mAnswers, kMostAtOnce);
        mIsFlushQueued = !mAnswers.empty();
        areAll = mUnderWay == 0 && mWaiting.empty() && mAnswers.empty();
        if (mIsFlushQueued) GetServices().mMainThread->Post([self = shared_from_this()] { self->Flush(); });
    }
    if (!answers.empty()) mReceiver(std::move(answers), areAll);
}

}  // namespace desk
