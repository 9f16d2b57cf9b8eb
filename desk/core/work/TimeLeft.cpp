#include "desk/core/work/TimeLeft.h"

#include <algorithm>
#include <cmath>

namespace desk {

namespace {

using namespace std::chrono_literals;

constexpr auto kBetweenSamples = 500ms;
constexpr auto kShortest = 3s;
constexpr std::size_t kMostSamples = 16;
constexpr double kSteady = 2.0;

}  // namespace

void TimeLeft::Note(Time now, std::uint64_t bytesDone) {
    mNow = now;
    const bool isStep = mSamples.empty() || (now - mSamples.back().mTime >= kBetweenSamples &&
                                             bytesDone != mSamples.back().mBytesDone);
    if (!isStep) return;
    mSamples.push_back({now, bytesDone});
    if (mSamples.size() > kMostSamples) mSamples.pop_front();
}

double TimeLeft::PaceBetween(const Sample& from, const Sample& to) {
    const double bytes = static_cast<double>(to.mBytesDone) - static_cast<double>(from.mBytesDone);
    return bytes / std::chrono::duration<double>(to.mTime - from.mTime).count();
}

std::optional<std::chrono::seconds> TimeLeft::Estimate(std::uint64_t bytesTotal) const {
    if (mSamples.size() < 4 || mSamples.back().mTime - mSamples.front().mTime < kShortest) return {};
    const Sample& last = mSamples.back();
    const Sample& middle = mSamples[mSamples.size() / 2];
    const double before = PaceBetween(mSamples.front(), middle);
    const double after = PaceBetween(middle, last);
    if (std::min(before, after) <= 0 || std::max(before, after) > kSteady * std::min(before, after)) return {};
    const auto span = last.mTime - mSamples.front().mTime;
    const auto sinceStep = mNow - last.mTime;
    if (sinceStep > std::max<Time::duration>(kShortest, 2 * span / (mSamples.size() - 1))) return {};
    const std::uint64_t rest = bytesTotal - std::min(bytesTotal, last.mBytesDone);
    const double left = static_cast<double>(rest) / PaceBetween(mSamples.front(), last) -
                        std::chrono::duration<double>(sinceStep).count();
    return std::chrono::seconds(std::llround(std::max(left, 0.0)));
}

}  // namespace desk
