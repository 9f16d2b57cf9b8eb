#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>

#include "host/core/Export.h"

namespace desk {

/// Estimates how long work will take from how far it has come: only once its pace is steady. One thread at a
/// time.
class ZUHOST_API TimeLeft {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// To be told some times a second.
    void Note(Time now, std::uint64_t bytesDone);
    /// Absent before three steps over three seconds of work, while the pace of the last steps has doubled or
    /// halved, and when the next step is long overdue.
    std::optional<std::chrono::seconds> Estimate(std::uint64_t bytesTotal) const;

private:
    struct Sample {
        Time mTime;
        std::uint64_t mBytesDone;
    };
    static double PaceBetween(const Sample& from, const Sample& to);

    /// Where the work stood after its last steps.
    std::deque<Sample> mSamples;
    Time mNow;
};

}  // namespace desk
