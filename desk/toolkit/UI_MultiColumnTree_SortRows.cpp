// Rows whose sort keys have changed go to their places, without a look at the others.
#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <unordered_map>

#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/TreeImpl.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;
using Access = Row::Access;
using Order = std::vector<std::uint32_t>;

namespace {

/// Where one row of so many has changed, or more, all are sorted: a single key costs more than one of many.
constexpr std::size_t kRowsPerChange = 32;

/// The order of rows that stand under one row. Each key is asked for once, and only when it is needed.
class RowOrder {
public:
    RowOrder(const TreeImpl& tree, bool areRanked)
        : mTree(tree),
          mAreRanked(areRanked),
          mIsAscending(tree.mHeader->IsSortDirectionAscending()),
          mLess(tree.SortOrder(mIsAscending)),
          mNameLess(tree.SortOrder(true)) {}

    bool IsLess(Row& a, Row& b) {
        const auto numberOfA = NumberOf(a);
        const auto numberOfB = NumberOf(b);
        if (numberOfA && numberOfB)
            return *numberOfA != *numberOfB ? (*numberOfA < *numberOfB) == mIsAscending : IsNameLess(a, b);
        const UTF16String& keyOfA = KeyOf(a);
        const UTF16String& keyOfB = KeyOf(b);
        if (mLess(keyOfA, keyOfB)) return true;
        if (mTree.IsSortedByName() || mLess(keyOfB, keyOfA)) return false;
        return IsNameLess(a, b);
    }

private:
    bool IsNameLess(Row& a, Row& b) const {
        if (mAreRanked) return Access::NameRank(a) < Access::NameRank(b);
        return mNameLess(mTree.NameKey(a), mTree.NameKey(b));
    }
    std::optional<std::uint64_t> NumberOf(Row& row) {
        const auto [known, isNew] = mNumbers.try_emplace(&row);
        if (!isNew) return known->second;
        const RowRef asked(&row);
        const std::vector<std::uint64_t> numbers = mTree.SortNumbersOf(std::span(&asked, 1));
        if (!numbers.empty()) known->second = numbers.front();
        return known->second;
    }
    const UTF16String& KeyOf(const Row& row) {
        const auto known = mKeys.find(&row);
        return known != mKeys.end() ? known->second : mKeys.emplace(&row, mTree.SortKey(row)).first->second;
    }

    const TreeImpl& mTree;
    const bool mAreRanked;
    const bool mIsAscending;
    const TreeImpl::Less mLess;
    const TreeImpl::Less mNameLess;
    std::unordered_map<const Row*, std::optional<std::uint64_t>> mNumbers;
    std::unordered_map<const Row*, UTF16String> mKeys;
};

/// Nobody may have named a row yet whose key has changed. One such row can lead the search for a place astray,
/// which then ends beside it: there, something is out of order.
template <class Less>
bool IsInOrderAround(const Order& rows, std::size_t place, const Less& isLess) {
    const auto begin = rows.begin() + static_cast<std::ptrdiff_t>(place - std::min<std::size_t>(place, 2));
    const auto end = rows.begin() + static_cast<std::ptrdiff_t>(std::min(place + 3, rows.size()));
    return std::is_sorted(begin, end, isLess);
}

/// The order, by old places, of rows that stand in order but for those at `places`, which rise; empty when
/// others are found that do not.
Order OrderWithMoved(const Access::Children& children, const Order& places, RowOrder& order) {
    const std::vector<RowRef>& rows = children.mRows;
    const auto isLess = [&](std::uint32_t a, std::uint32_t b) { return order.IsLess(*rows[a], *rows[b]); };
    Order all(children.mCountOfLaidOut);
    std::iota(all.begin(), all.end(), 0u);
    Order others;
    others.reserve(all.size());
    std::ranges::set_difference(all, places, std::back_inserter(others));
    Order moved = places;
    std::ranges::stable_sort(moved, isLess);
    Order merged;
    merged.reserve(all.size());
    std::vector<std::size_t> newPlaces;
    auto next = others.begin();
    for (const std::uint32_t place : moved) {
        const auto end = std::upper_bound(next, others.end(), place, isLess);
        merged.insert(merged.end(), next, end);
        newPlaces.push_back(merged.size());
        merged.push_back(place);
        next = end;
    }
    merged.insert(merged.end(), next, others.end());
    const auto isInOrder = [&](std::size_t place) { return IsInOrderAround(merged, place, isLess); };
    return std::ranges::all_of(newPlaces, isInOrder) ? merged : Order();
}

}  // namespace

void TreeImpl::SortRows(const RowVec& changed) {
    if (!IsSorted()) return;
    if (mSorting) return Sort();
    std::map<const Row*, Order> byFolder;
    for (const RowRef& row : changed) {
        if (!IsMine(row.get())) continue;
        const Row* folder = Access::Parent(*row);
        const auto place = static_cast<std::uint32_t>(PositionOf(*row));
        if (place < CountOfLaidOutChildren(folder)) byFolder[folder].push_back(place);
    }
    std::vector<std::pair<const Row*, Order>> changes;
    for (auto& [folder, places] : byFolder) {
        std::ranges::sort(places);
        places.erase(std::ranges::unique(places).begin(), places.end());
        if (places.size() * kRowsPerChange > CountOfLaidOutChildren(folder)) {
            if (CountOfLaidOutChildren(folder) > kMostRowsAtOnce) return Sort();
            changes.emplace_back(folder, OrderOf(folder));
            continue;
        }
        // What the keys of all were is not what they are.
        mSortedKeys.erase(folder);
        const Access::Children& children = Access::ChildrenOf(folder ? const_cast<Row&>(*folder) : *mRoot);
        RowOrder order(*this, children.mNameOrder == Access::NameOrder::Ranked);
        Order moved = OrderWithMoved(children, places, order);
        changes.emplace_back(folder, moved.empty() ? OrderOf(folder) : std::move(moved));
    }
    ReorderAll(changes);
}

}  // namespace host
