#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/toolkit/UI_MultiColumnTreeRow.h"

namespace desk {

/// Which rows of a tree are selected, in the order in which they were: as runs of rows that stand one after
/// another under one row, so that a hundred thousand selected at once are one. It knows positions only; the
/// tree tells it what moves. Every operation costs by the runs, not by the rows; only rows that change places
/// cost by all that stand beside them, and may leave as many runs as rows. UI thread.
class SelectedRows {
public:
    struct Run {
        /// Empty for rows at the top.
        host::RowRef mParent;
        std::uint32_t mFirst = 0;
        std::uint32_t mCount = 0;

        std::uint32_t End() const { return mFirst + mCount; }
        bool operator==(const Run&) const = default;
    };

    std::size_t Count() const { return mCount; }
    bool IsEmpty() const { return mCount == 0; }
    const std::vector<Run>& Runs() const { return mRuns; }
    /// The same rows by their places, in as few runs as there can be.
    std::vector<Run> RunsByPlace() const;
    void Clear() { *this = {}; }
    void KeepFirst();
    /// Adds rows that are not among them yet.
    void Append(const Run& run);
    /// Leaves out rows, which need not be among them; no two of `runs` share one.
    void Take(std::vector<Run> runs);
    /// Leaves out the rows that stand directly under those rows for which `isGone` holds.
    void TakeBelow(const std::function<bool(const host::RowRef& parent)>& isGone);

    // Rows have come or gone, or have changed places: the i-th is the one that stood at `order[i]`.

    void RowsInserted(const Run& inserted);
    void RowsRemoved(const Run& removed);
    void RowsReordered(const host::UI_MultiColumnTreeRow* parent, const std::vector<std::uint32_t>& order);

    /// The same rows in the same order.
    bool operator==(const SelectedRows& other) const { return mRuns == other.mRuns; }

private:
    /// Whether what comes or goes at `place` concerns any.
    bool HasAnyBehind(const Run& place) const;
    /// Exchanges each run for those that `replace` appends.
    void Replace(const std::function<void(const Run& run, SelectedRows& replaced)>& replace);

    /// No two that follow each other could be one.
    std::vector<Run> mRuns;
    std::size_t mCount = 0;
};

}  // namespace desk
