#include "desk/core/edges/QtMainThread.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QObject>
#include <QTimer>
#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <utility>

namespace desk {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How long tasks run before input and painting get their turn: as long as those took since the batch before,
/// within these limits. Rows that keep coming would else be laid out again for every few of them.
constexpr milliseconds kShortestBatch{8};
constexpr milliseconds kLongestBatch{16};

bool IsOfUser(QEvent::Type type) {
    switch (type) {
        case QEvent::KeyPress:
        case QEvent::InputMethod:
        case QEvent::MouseButtonPress:
        case QEvent::MouseMove:
        case QEvent::Wheel:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::DragMove:
        case QEvent::Drop:
        case QEvent::WindowActivate:
            return true;
        default:
            return false;
    }
}

}  // namespace

class QtMainThread::Receiver : public QObject {
public:
    void Post(Task task);
    void StartDelayed(Task task, Clock::time_point due);
    TimerID StartTimer(milliseconds interval, Task task);
    void StopTimer(TimerID timer);
    bool IsIdleFor(milliseconds time) const;
    /// When somebody last used the program; it begins as used.
    Clock::time_point GetLastUse() const { return mLastUse; }

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void customEvent(QEvent*) override { RunBatch(); }
    void timerEvent(QTimerEvent*) override { RunBatch(); }

private:
    void RunBatch();
    Task TakeTask();

    mutable std::mutex mMutex;
    std::deque<Task> mTasks;
    /// When the delayed tasks fall due. UI thread.
    std::multiset<Clock::time_point> mDue;
    /// True while an event or `mContinue` will run the queue.
    bool mIsScheduled = false;
    /// Runs what is left when Qt has nothing more urgent. On during a batch too: a task may enter an event
    /// loop of its own, which has to go on with the queue.
    QBasicTimer mContinue;
    /// When the last batch that left tasks ended; else in the future.
    Clock::time_point mEndOfBatch = Clock::time_point::max();
    Clock::time_point mLastUse = Clock::now();
    std::map<TimerID, QTimer*> mTimers;
    TimerID mLastTimer = 0;
};

void QtMainThread::Receiver::Post(Task task) {
    {
        const std::lock_guard lock(mMutex);
        mTasks.push_back(std::move(task));
        if (std::exchange(mIsScheduled, true)) return;
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

MainThread::Task QtMainThread::Receiver::TakeTask() {
    const std::lock_guard lock(mMutex);
    if (mTasks.empty()) {
        mIsScheduled = false;
        mContinue.stop();
        return {};
    }
    if (!mContinue.isActive()) mContinue.start(0, this);
    mIsScheduled = true;
    Task task = std::move(mTasks.front());
    mTasks.pop_front();
    return task;
}

void QtMainThread::Receiver::RunBatch() {
    const auto begin = Clock::now();
    const auto end = begin + std::clamp<Clock::duration>(begin - mEndOfBatch, kShortestBatch, kLongestBatch);
    do {
        const Task task = TakeTask();
        if (!task) {
            mEndOfBatch = Clock::time_point::max();
            return;
        }
        RunTask(task, "main thread: task");
        mEndOfBatch = Clock::now();
    } while (mEndOfBatch < end);
    // Timers that have fallen due meanwhile come first.
    mContinue.start(0, this);
}

void QtMainThread::Receiver::StartDelayed(Task task, Clock::time_point due) {
    const auto left = std::chrono::ceil<milliseconds>(due - Clock::now());
    QTimer::singleShot(std::max(left, milliseconds(0)), Qt::PreciseTimer, this,
                       [this, task = std::move(task), place = mDue.insert(due)] {
                           mDue.erase(place);
                           RunTask(task, "main thread: delayed task");
                       });
}

MainThread::TimerID QtMainThread::Receiver::StartTimer(milliseconds interval, Task task) {
    auto* timer = new QTimer(this);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, timer, [task = std::move(task)] { RunTask(task, "main thread: timer"); });
    timer->start(interval);
    mTimers.emplace(++mLastTimer, timer);
    return mLastTimer;
}

void QtMainThread::Receiver::StopTimer(TimerID timer) {
    const auto found = mTimers.find(timer);
    if (found == mTimers.end()) return;
    found->second->stop();
    found->second->deleteLater();  // It may be its own task that stops it.
    mTimers.erase(found);
}

bool QtMainThread::Receiver::IsIdleFor(milliseconds time) const {
    const std::lock_guard lock(mMutex);
    return mTasks.empty() && (mDue.empty() || *mDue.begin() > Clock::now() + time);
}

bool QtMainThread::Receiver::eventFilter(QObject*, QEvent* event) {
    if (IsOfUser(event->type())) mLastUse = Clock::now();
    return false;
}

QtMainThread::QtMainThread() : mReceiver(std::make_unique<Receiver>()) {
    QCoreApplication::instance()->installEventFilter(mReceiver.get());
}
QtMainThread::~QtMainThread() = default;

void QtMainThread::Post(Task task) {
    mReceiver->Post(std::move(task));
}

void QtMainThread::PostDelayed(Task task, milliseconds delay) {
    Post([receiver = mReceiver.get(), task = std::move(task), due = Clock::now() + delay]() mutable {
        receiver->StartDelayed(std::move(task), due);
    });
}

MainThread::TimerID QtMainThread::StartTimer(milliseconds interval, Task task) {
    return mReceiver->StartTimer(interval, std::move(task));
}

void QtMainThread::StopTimer(TimerID timer) {
    mReceiver->StopTimer(timer);
}

bool QtMainThread::IsIdleFor(milliseconds time) const {
    return mReceiver->IsIdleFor(time);
}

Clock::time_point QtMainThread::Now() const {
    return Clock::now();
}

milliseconds QtMainThread::GetTimeUnused() const {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - mReceiver->GetLastUse());
}

}  // namespace desk
