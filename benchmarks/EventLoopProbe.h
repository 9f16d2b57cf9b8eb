#pragma once

#include <QTimer>

#include "benchmarks/BenchApplication.h"

namespace bench {

/// Measures how long the event loop answers nothing: a timer that wants to fire every millisecond, and the
/// longest time between two of its shots. UI thread.
class EventLoopProbe {
public:
    EventLoopProbe() {
        mTimer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this] { Beat(Clock::now()); });
    }
    void Start() {
        mLongest = 0;
        mLast = Clock::now();
        mTimer.start(1);
    }
    /// Returns the longest gap from the start until `end`, in milliseconds.
    double Stop(Clock::time_point end) {
        Beat(end);
        mTimer.stop();
        return mLongest;
    }

private:
    void Beat(Clock::time_point now) {
        mLongest = std::max(mLongest, Milliseconds(mLast, now));
        mLast = now;
    }

    QTimer mTimer;
    Clock::time_point mLast{};
    double mLongest = 0;
};

}  // namespace bench
