// The keys of very many rows, fetched over several turns of the event loop.
#include <algorithm>

#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/TreeImpl.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;

namespace {

/// Where rows keep changing meanwhile, they are sorted in one turn in the end.
constexpr int kMostAttempts = 4;
/// A posted task would run in the same turn.
constexpr std::chrono::milliseconds kNextTurn(1);

template <class Key>
void AppendKeys(std::vector<Key>& keys, std::vector<Key> more) {
    keys.insert(keys.end(), std::move_iterator(more.begin()), std::move_iterator(more.end()));
}

}  // namespace

void TreeImpl::BeginSortInParts(std::vector<RowRef> folders) {
    const std::pair sortedBy(mHeader->GetSortColumn(), mHeader->IsSortDirectionAscending());
    if (!mSorting) Tree().BeginBusy();
    const bool isAgain = mSorting && mSorting->mSortedBy == sortedBy;
    const int attempts = isAgain ? mSorting->mAttempts + 1 : 1;
    mSorting.emplace(Sorting{sortedBy, attempts, std::move(folders), {}, 0, mCountOfRowChanges});
    mSorting->mKeys.resize(mSorting->mFolders.size());
    RunLater(mSortPartLater, &TreeImpl::SortNextPart, kNextTurn);
}

/// Keys that change meanwhile have whoever says so sort again.
void TreeImpl::SortNextPart() {
    if (!mSorting) return;
    const std::pair sortedBy(mHeader ? mHeader->GetSortColumn() : 0,
                             mHeader && mHeader->IsSortDirectionAscending());
    const bool isLast = mSorting->mAttempts >= kMostAttempts;
    if (mSorting->mSortedBy != sortedBy || (!isLast && mSorting->mRowChanges != mCountOfRowChanges))
        return Sort();
    if (!isLast && FetchNextKeys()) return RunLater(mSortPartLater, &TreeImpl::SortNextPart, kNextTurn);
    if (isLast) return SortAtOnce(FoldersToSort());
    const std::vector<RowRef> folders = std::move(mSorting->mFolders);
    SortAtOnce(folders, std::move(mSorting->mKeys));
}

bool TreeImpl::FetchNextKeys() {
    std::size_t left = kRowsPerTurn;
    for (; mSorting->mNext < mSorting->mFolders.size(); ++mSorting->mNext) {
        const Row* folder = mSorting->mFolders[mSorting->mNext].get();
        if (IsOrderKnown(folder)) continue;
        KeysOfRows& keys = mSorting->mKeys[mSorting->mNext];
        const std::size_t done = keys.mNumbers.size() + keys.mKeys.size();
        const std::size_t count = std::min<std::size_t>(CountOfLaidOutChildren(folder) - done, left);
        const auto rows = std::span<const RowRef>(ChildrenOf(folder)).subspan(done, count);
        std::vector<std::uint64_t> numbers;
        if (keys.mKeys.empty()) numbers = SortNumbersOf(rows);
        if (numbers.empty() && keys.mNumbers.empty())
            AppendKeys(keys.mKeys, SortKeysOf(rows));
        else
            AppendKeys(keys.mNumbers, std::move(numbers));
        if ((left -= count) == 0) return true;
    }
    return false;
}

}  // namespace host
