#pragma once

#include <QTimer>
#include <algorithm>
#include <vector>

#include "benchmarks/BenchApplication.h"

namespace bench {

/// Measures how long the event loop answers nothing: a timer that wants to fire every millisecond, and the
/// longest time between two of its shots. UI thread.
class EventLoopProbe {
public:
    EventLoopProbe() {
        mTimer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&mTimer, &QTimer::timeout, &mTimer, [this] { mShots.push_back(Clock::now()); });
    }
    void Start() {
        mShots = {Clock::now()};
        mTimer.start(1);
    }
    /// Returns the longest gap from the start until `end`, in milliseconds. What comes after it does not count:
    /// whoever looks whether all is done may have taken long.
    double Stop(Clock::time_point end) {
        mTimer.stop();
        mShots.push_back(end);
        double longest = 0;
        for (std::size_t i = 1; i < mShots.size() && mShots[i - 1] < end; ++i)
            longest = std::max(longest, Milliseconds(mShots[i - 1], std::min(mShots[i], end)));
        return longest;
    }

private:
    QTimer mTimer;
    std::vector<Clock::time_point> mShots;
};

}  // namespace bench
