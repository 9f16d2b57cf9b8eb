#include "desk/toolkit/SelectedRows.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace desk {

using Run = SelectedRows::Run;

namespace {

bool StandsBefore(const Run& a, const Run& b) {
    return std::tuple(a.mParent.get(), a.mFirst) < std::tuple(b.mParent.get(), b.mFirst);
}

}  // namespace

std::vector<Run> SelectedRows::RunsByPlace() const {
    std::vector<Run> sorted = mRuns;
    std::ranges::sort(sorted, StandsBefore);
    SelectedRows merged;
    for (const Run& run : sorted) merged.Append(run);
    return std::move(merged.mRuns);
}

void SelectedRows::KeepFirst() {
    if (IsEmpty()) return;
    mRuns.resize(1);
    mRuns.front().mCount = 1;
    mCount = 1;
}

void SelectedRows::Append(const Run& run) {
    if (run.mCount == 0) return;
    mCount += run.mCount;
    if (!mRuns.empty() && mRuns.back().mParent == run.mParent && mRuns.back().End() == run.mFirst)
        mRuns.back().mCount += run.mCount;
    else
        mRuns.push_back(run);
}

void SelectedRows::Replace(const std::function<void(const Run& run, SelectedRows& replaced)>& replace) {
    SelectedRows replaced;
    for (const Run& run : mRuns) replace(run, replaced);
    *this = std::move(replaced);
}

void SelectedRows::Take(std::vector<Run> runs) {
    std::ranges::sort(runs, StandsBefore);
    Replace([&runs](const Run& run, SelectedRows& kept) {
        std::uint32_t next = run.mFirst;
        auto taken = std::ranges::lower_bound(runs, run, StandsBefore);
        // One that begins before it may reach into it.
        if (taken != runs.begin()) --taken;
        for (; taken != runs.end() && !StandsBefore({run.mParent, run.End(), 0}, *taken); ++taken) {
            if (taken->mParent != run.mParent || taken->End() <= next || taken->mFirst >= run.End()) continue;
            if (taken->mFirst > next) kept.Append({run.mParent, next, taken->mFirst - next});
            next = taken->End();
        }
        if (next < run.End()) kept.Append({run.mParent, next, run.End() - next});
    });
}

void SelectedRows::TakeBelow(const std::function<bool(const host::RowRef& parent)>& isGone) {
    Replace([&isGone](const Run& run, SelectedRows& kept) {
        if (!run.mParent || !isGone(run.mParent)) kept.Append(run);
    });
}

bool SelectedRows::HasAnyBehind(const Run& place) const {
    return std::ranges::any_of(
        mRuns, [&](const Run& run) { return run.mParent == place.mParent && run.End() > place.mFirst; });
}

void SelectedRows::RowsInserted(const Run& inserted) {
    if (!HasAnyBehind(inserted)) return;
    Replace([&inserted](const Run& run, SelectedRows& moved) {
        if (run.mParent != inserted.mParent || run.End() <= inserted.mFirst) return moved.Append(run);
        const std::uint32_t before = inserted.mFirst - std::min(inserted.mFirst, run.mFirst);
        moved.Append({run.mParent, run.mFirst, before});
        moved.Append({run.mParent, run.mFirst + before + inserted.mCount, run.mCount - before});
    });
}

void SelectedRows::RowsRemoved(const Run& removed) {
    if (!HasAnyBehind(removed)) return;
    Take({removed});
    Replace([&removed](Run run, SelectedRows& moved) {
        if (run.mParent == removed.mParent && run.mFirst >= removed.End()) run.mFirst -= removed.mCount;
        moved.Append(run);
    });
}

void SelectedRows::RowsReordered(const host::UI_MultiColumnTreeRow* parent,
                                 const std::vector<std::uint32_t>& order) {
    if (std::ranges::none_of(mRuns, [parent](const Run& run) { return run.mParent.get() == parent; })) return;
    std::vector<std::uint32_t> places(order.size());
    for (std::uint32_t i = 0; i < order.size(); ++i) places[order[i]] = i;
    Replace([&](const Run& run, SelectedRows& moved) {
        if (run.mParent.get() != parent) return moved.Append(run);
        for (std::uint32_t i = run.mFirst; i < run.End(); ++i) moved.Append({run.mParent, places[i], 1});
    });
}

}  // namespace desk
