#pragma once

#include <functional>
#include <set>

#include "host/toolkit/UI_MultiColumnTree.h"

namespace HandlerSharedProjects {

using namespace host;

/// Where a tree's selection goes when the selected rows leave it: to the row after them in their folder, or
/// when there is none, to the one before, or to the folder, so that who presses the key once too often does not
/// reach into another folder; only where that goes too, to what shows after or before it. Among hits of a
/// search that show in the folders they stand in, the next one is meant in whatever folder, else the one
/// before. UI thread.
class SelectionAfterRemoval {
public:
    using RowTest = std::function<bool(const RowRef&)>;

    enum class Order { FolderFirst, AsShown };

    /// The rows that are selected in `tree` now are to leave it, with what is below them. The selection will go
    /// to a row for which `mayBeSelected` holds.
    void Expect(const UI_MultiColumnTree& tree, const RowTest& mayBeSelected, Order order);
    /// Rows have left `tree`; `isThere` says of a row whether it has stayed. Selects when all that were
    /// expected to leave have left. Once something else has been selected, or nothing, that is left alone.
    void OnRowsRemoved(UI_MultiColumnTree& tree, const RowTest& isThere);

private:
    /// The rows that are to leave.
    std::set<RowRef> mLeaving;
    /// Those that may be selected then, the best first.
    RowVec mCandidates;
};

}  // namespace HandlerSharedProjects
