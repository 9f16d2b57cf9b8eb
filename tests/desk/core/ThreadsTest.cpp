#include <gtest/gtest.h>

#include <QtWidgets>
#include <algorithm>
#include <atomic>
#include <future>
#include <stdexcept>
#include <vector>

#include "desk/core/edges/QtMainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/work/WorkerPool.h"
#include "host/core/MainThread.h"
#include "tests/support/LogExpectation.h"
#include "tests/support/ManualMainThread.h"

using namespace std::chrono_literals;

namespace {

/// Runs Qt's loop until `loop.quit()`; a test that never gets there fails.
void Exec(QEventLoop& loop) {
    QTimer::singleShot(20s, &loop, [&] { loop.exit(1); });
    EXPECT_EQ(loop.exec(), 0) << "the loop did not end";
}

/// A task that says when it runs and goes on when it may.
struct HeldTask {
    void operator()() {
        mStarted.set_value();
        mGate.get_future().wait();
    }
    std::promise<void> mStarted, mGate;
};

}  // namespace

TEST(WorkerPoolTest, TakesTheNewestFirstAndTheLastLast) {
    desk::WorkerPool pool(1);
    HeldTask held;
    pool.Submit([&] { held(); });
    held.mStarted.get_future().wait();
    std::string order;
    for (const char c : {'a', 'b', 'c'}) pool.Submit([&order, c] { order += c; });
    pool.SubmitLast([&] { order += 'z'; });
    EXPECT_FALSE(pool.WaitUntilIdle(1ms));
    held.mGate.set_value();
    EXPECT_TRUE(pool.WaitUntilIdle(20s));
    EXPECT_EQ(order, "cbaz");
}

TEST(WorkerPoolTest, SurvivesExceptionsAndEndsAfterTheRunningTask) {
    const ExpectLogged log("boiled over");
    std::atomic<bool> isDone = false;
    HeldTask held;
    const auto resource = std::make_shared<int>(1);
    {
        desk::WorkerPool pool(1);
        pool.Submit([] { throw std::runtime_error("boiled over"); });
        pool.Submit([resource] {});
        EXPECT_TRUE(pool.WaitUntilIdle(20s));
        EXPECT_EQ(resource.use_count(), 1) << "what a task holds is gone when the pool is idle";
        pool.Submit([&] {
            held();
            isDone = true;
        });
        held.mStarted.get_future().wait();
        for (int i = 0; i < 100; ++i) pool.Submit([] {});
        held.mGate.set_value();
    }
    EXPECT_TRUE(isDone);
}

TEST(WorkerPoolTest, HasAsManyThreadsAsWaitAndLetsIdleOnesGo) {
    constexpr int kTasks = 12;
    desk::WorkerPool pool(kTasks, 1ms);
    EXPECT_EQ(pool.CountRunningThreads(), 0u);
    std::vector<HeldTask> held(kTasks + 8);
    const auto submit = [&](int first, int last) {
        for (int i = first; i < last; ++i) pool.SubmitLast([&task = held[i]] { task(); });
        for (int i = first; i < last; ++i) held[i].mStarted.get_future().wait();
    };
    submit(0, 1);
    EXPECT_EQ(pool.CountRunningThreads(), 1u);
    submit(1, kTasks);
    EXPECT_EQ(pool.CountRunningThreads(), kTasks);
    // All of them hang: others stand in.
    pool.StandInFor(8);
    submit(kTasks, kTasks + 8);
    EXPECT_EQ(pool.CountRunningThreads(), kTasks + 8);
    for (HeldTask& task : held) task.mGate.set_value();
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (pool.CountRunningThreads() > 1 && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    EXPECT_EQ(pool.CountRunningThreads(), 1u);
    std::promise<void> done;
    pool.Submit([&] { done.set_value(); });
    done.get_future().wait();
}

TEST(QtMainThreadTest, KeepsTheOrderAcrossThreadsAndNestedLoopsAndLeavesRoomForOthers) {
    const ExpectLogged log("spilt");
    desk::QtMainThread main;
    QEventLoop loop;
    std::vector<int> order;
    main.Post([&] {
        order.push_back(0);
        // A dialog's loop must go on with what is queued.
        QEventLoop nested;
        main.Post([&] { nested.quit(); });
        Exec(nested);
        order.push_back(3);
    });
    std::thread([&] {
        main.Post([&] { order.push_back(1); });
        main.Post([&] {
            order.push_back(2);
            throw std::runtime_error("spilt");
        });
    }).join();
    const std::function<void()> again = [&] {
        if (loop.isRunning() || order.size() < 4) main.Post(again);
    };
    main.Post(again);
    QTimer::singleShot(50, &loop, [&] { loop.quit(); });
    Exec(loop);
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
}

TEST(QtMainThreadTest, DelaysAndTimers) {
    desk::QtMainThread main;
    QEventLoop loop;
    std::string order;
    main.PostDelayed([&] { order += 'b'; }, 30ms);
    main.PostDelayed([&] { order += 'a'; }, 1ms);
    desk::MainThread::TimerID timer = 0;
    timer = main.StartTimer(20ms, [&] {
        order += 't';
        if (std::ranges::count(order, 't') < 3) return;
        main.StopTimer(timer);
        main.PostDelayed([&] { loop.quit(); }, 50ms);
    });
    Exec(loop);
    EXPECT_EQ(order, "atbtt") << "a timer that its own task stopped ends";
    EXPECT_GE(main.GetTimeUnused(), 50ms);
    QEvent key(QEvent::KeyPress);
    QCoreApplication::sendEvent(&loop, &key);
    EXPECT_LT(main.GetTimeUnused(), 50ms);
}

TEST(MainThreadTest, QueueOnlyOnceRunsOnceAndMayQueueItselfAgain) {
    ManualMainThread main;
    int runs = 0;
    host::RefPtr<host::QueueOnlyOnce> task;
    task = new host::QueueOnlyOnce(host::GetRegisteredMainThread(), [&] {
        if (++runs == 1) task->Queue();
    });
    task->Queue();
    task->Queue();
    main.RunUntilIdle();
    EXPECT_EQ(runs, 2);
    task->Queue();
    task.reset();
    main.RunUntilIdle();
    EXPECT_EQ(runs, 3) << "dropping the last reference cancelled a queued run";
}
