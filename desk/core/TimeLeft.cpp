#include "desk/core/TimeLeft.h"

#include <algorithm>
#include <cmath>

namespace desk {

namespace {

using namespace std::chrono_literals;

constexpr auto kBetweenSamples = 500ms;
constexpr auto kShortest = 3s;
constexpr auto kLongest = 8s;
constexpr double kSteady = 2.0;

}  // namespace

void TimeLeft::Note(Time now, std::uint64_t bytesDone) {
    if (!mSamples.empty() && now - mSamples.back().mTime < kBetweenSamples) return;
    mSamples.push_back({now, bytesDone});
    while (now - mSamples.front().mTime > kLongest) mSamples.pop_front();
}

double TimeLeft::PaceBetween(const Sample& from, const Sample& to) {
    const double bytes = static_cast<double>(to.mBytesDone) - static_cast<double>(from.mBytesDone);
    return bytes / std::chrono::duration<double>(to.mTime - from.mTime).count();
}

std::optional<std::chrono::seconds> TimeLeft::Estimate(std::uint64_t bytesTotal) const {
    if (mSamples.size() < 3 || mSamples.back().mTime - mSamples.front().mTime < kShortest) return {};
    const Sample& last = mSamples.back();
    const Sample& middle = mSamples[mSamples.size() / 2];
    const double before = PaceBetween(mSamples.front(), middle);
    const double after = PaceBetween(middle, last);
    if (std::min(before, after) <= 0 || std::max(before, after) > kSteady * std::min(before, after)) return {};
    const std::uint64_t rest = bytesTotal - std::min(bytesTotal, last.mBytesDone);
    return std::chrono::seconds(std::llround(static_cast<double>(rest) / PaceBetween(mSamples.front(), last)));
}

}  // namespace desk
