#include <gtest/gtest.h>

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include "desk/core/QtMainThread.h"
#include "desk/core/Services.h"
#include "desk/core/WorkerPool.h"
#include "host/core/Logging.h"
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

}  // namespace

TEST(WorkerPoolTest, TakesTheNewestFirstAndTheLastLast) {
    desk::WorkerPool pool(1);
    std::promise<void> gate;
    std::promise<void> started;
    pool.Submit([&] {
        started.set_value();
        gate.get_future().wait();
    });
    started.get_future().wait();
    std::string order;
    pool.SubmitLast([&] { order += 'z'; });
    for (const char c : {'a', 'b', 'c'}) pool.Submit([&order, c] { order += c; });
    EXPECT_TRUE(pool.IsBusy());
    EXPECT_FALSE(pool.WaitUntilIdle(1ms));
    gate.set_value();
    EXPECT_TRUE(pool.WaitUntilIdle(20s));
    EXPECT_FALSE(pool.IsBusy());
    EXPECT_EQ(order, "cbaz");
}

TEST(WorkerPoolTest, SurvivesExceptionsAndDropsWaitingWorkAtTheEnd) {
    const ExpectLogged log("boiled over");
    std::atomic<int> runs = 0;
    std::promise<void> started;
    std::promise<void> gate;
    const auto held = std::make_shared<int>(1);
    {
        desk::WorkerPool pool(1);
        pool.Submit([] { throw std::runtime_error("boiled over"); });
        pool.Submit([held] {});
        EXPECT_TRUE(pool.WaitUntilIdle(20s));
        EXPECT_EQ(held.use_count(), 1) << "what a task holds is gone when the pool is idle";
        pool.Submit([&] {
            started.set_value();
            gate.get_future().wait();
            ++runs;
        });
        started.get_future().wait();
        for (int i = 0; i < 100; ++i) pool.Submit([&] { runs += 1000; });
        gate.set_value();
        // The running task is waited for; how many others begin before the pool ends is open.
    }
    EXPECT_EQ(runs % 1000, 1);
}

TEST(QtMainThreadTest, KeepsTheOrderAcrossThreadsBatchesAndNestedLoops) {
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
        main.Post([&] { order.push_back(2); });
    }).join();
    main.PostDelayed([&] { loop.quit(); }, 1ms);
    Exec(loop);
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3}));
}

TEST(QtMainThreadTest, LeavesRoomForOthersWhileTasksComeWithoutEnd) {
    desk::QtMainThread main;
    QEventLoop loop;
    bool isOver = false;
    std::function<void()> again = [&] {
        if (!isOver) main.Post(again);
    };
    main.Post(again);
    QTimer::singleShot(1, &loop, [&] {
        isOver = true;
        loop.quit();
    });
    Exec(loop);
    EXPECT_TRUE(isOver);
}

TEST(QtMainThreadTest, DelaysTimersAndExceptions) {
    const ExpectLogged log("spilt");
    desk::QtMainThread main;
    QEventLoop loop;
    std::string order;
    const auto begin = main.Now();
    main.PostDelayed([&] { order += 'b'; }, 30ms);
    main.PostDelayed([&] { order += 'a'; }, 1ms);
    main.Post([] { throw std::runtime_error("spilt"); });
    int ticks = 0;
    desk::MainThread::TimerID timer = 0;
    timer = main.StartTimer(20ms, [&] {
        if (++ticks < 3) return;
        main.StopTimer(timer);
        main.PostDelayed([&] { loop.quit(); }, 50ms);
    });
    Exec(loop);
    EXPECT_EQ(order, "ab");
    EXPECT_EQ(ticks, 3) << "a timer that its own task stopped went on";
    EXPECT_GE(main.Now() - begin, 110ms);
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

TEST(MainThreadTest, AsyncCallsWaitForTheirDelayAndExceptionsAreLogged) {
    ManualMainThread main;
    int runs = 0;
    host::AsyncCallFromMainThread([&] { ++runs; }, 0.25);
    host::AsyncCallFromMainThread([] { throw 7; }, -1);
    const ExpectLogged log("unknown kind");
    main.Advance(249ms);
    EXPECT_EQ(runs, 0);
    main.Advance(1ms);
    EXPECT_EQ(runs, 1);

    const ExpectLogged known("bad (std::runtime_error, caught in void Here())");
    host::LogException(std::runtime_error("bad"), "void Here()");
}
