#include <algorithm>
#include <numeric>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "desk/toolkit/Callback.h"
#include "desk/toolkit/HeaderRowImpl.h"
#include "desk/toolkit/TreeImpl.h"
#include "desk/toolkit/TreeView.h"

namespace host {

using TreeImpl = UI_MultiColumnTree::TreeImpl;
using Row = UI_MultiColumnTreeRow;
using Access = Row::Access;
using Less = TreeImpl::Less;
using Order = std::vector<std::uint32_t>;
using NameOrder = Access::NameOrder;

namespace {

/// Rows that come into more places than this are appended and sorted in by one change of the layout instead.
constexpr std::size_t kMaximumRuns = 8;

template <class Key>
std::uint64_t HashOf(const std::vector<Key>& keys, const Order& order, std::uint64_t seed) {
    for (const std::uint32_t i : order) seed = (seed ^ std::hash<Key>()(keys[i])) * 0x9E3779B97F4A7C15ull + 1;
    return seed;
}

Order Identity(std::size_t count) {
    Order order(count);
    std::iota(order.begin(), order.end(), 0u);
    return order;
}

/// By what the rows of a folder are sorted: their keys, and the names of rows whose keys are equal. Each is
/// asked for once, those of the first `countBefore` rows and names only when they are needed.
class SortKeys {
public:
    /// `known` may hold the keys already.
    SortKeys(const TreeImpl& tree, const Access::Children& children, std::size_t countBefore, std::size_t count,
             TreeImpl::KeysOfRows known = {})
        : mTree(tree),
          mRows(children.mRows),
          mAreRanked(children.mNameOrder == NameOrder::Ranked),
          mCountBefore(countBefore),
          mLess(tree.SortOrder(tree.mHeader->IsSortDirectionAscending())),
          mNameLess(tree.SortOrder(true)),
          mIsByName(tree.IsSortedByName()),
          mKeys(std::move(known.mKeys)),
          mNumbers(std::move(known.mNumbers)) {
        const std::span rows = std::span(mRows).subspan(countBefore, count - countBefore);
        if (mNumbers.size() != rows.size()) mNumbers = tree.SortNumbersOf(rows);
        if (mNumbers.empty() && mKeys.size() != rows.size()) mKeys = tree.SortKeysOf(rows);
        if (!tree.mHeader->IsSortDirectionAscending())
            for (std::uint64_t& number : mNumbers) number = ~number;
    }

    /// Of the rows from `countBefore` on, in an order.
    std::uint64_t Hash(const Order& order, std::uint64_t seed) const {
        return mNumbers.empty() ? HashOf(mKeys, order, seed) : HashOf(mNumbers, order, seed);
    }
    /// In place of all keys, rising as the rows do; empty where the keys are not the like.
    const std::vector<std::uint64_t>& GetNumbers() const { return mNumbers; }

    bool IsByName() const { return mIsByName; }
    bool IsLess(std::size_t a, std::size_t b) {
        if (!mNumbers.empty()) {
            const std::uint64_t numberOfA = NumberOf(a);
            const std::uint64_t numberOfB = NumberOf(b);
            return numberOfA != numberOfB ? numberOfA < numberOfB : IsNameLess(a, b);
        }
        const UTF16String& keyOfA = KeyOf(a);
        const UTF16String& keyOfB = KeyOf(b);
        if (mIsByName) return mLess(keyOfA, keyOfB);
        if (keyOfA != keyOfB) {
            if (mLess(keyOfA, keyOfB)) return true;
            if (mLess(keyOfB, keyOfA)) return false;
        }
        return IsNameLess(a, b);
    }
    bool IsKeyLess(std::size_t a, std::size_t b) { return mLess(KeyOf(a), KeyOf(b)); }
    bool IsNameLess(std::size_t a, std::size_t b) {
        if (mAreRanked) return Access::NameRank(*mRows[a]) < Access::NameRank(*mRows[b]);
        return mNameLess(NameOf(a), NameOf(b));
    }
    const UTF16String& KeyOf(std::size_t i) {
        if (i >= mCountBefore) return mKeys[i - mCountBefore];
        const auto known = mKeysBefore.find(i);
        return known != mKeysBefore.end() ? known->second
                                          : mKeysBefore.emplace(i, mTree.SortKey(*mRows[i])).first->second;
    }

private:
    std::uint64_t NumberOf(std::size_t i) {
        if (i >= mCountBefore) return mNumbers[i - mCountBefore];
        const auto [known, isNew] = mNumbersBefore.try_emplace(i);
        if (!isNew) return known->second;
        const std::vector<std::uint64_t> numbers = mTree.SortNumbersOf(std::span(mRows).subspan(i, 1));
        if (!numbers.empty())
            known->second = mTree.mHeader->IsSortDirectionAscending() ? numbers.front() : ~numbers.front();
        return known->second;
    }
    const UTF16String& NameOf(std::size_t i) {
        if (i < mCountBefore) {
            const auto known = mNamesBefore.find(i);
            return known != mNamesBefore.end()
                       ? known->second
                       : mNamesBefore.emplace(i, mTree.NameKey(*mRows[i])).first->second;
        }
        if (mNames.empty()) mNames.resize(std::max(mKeys.size(), mNumbers.size()));
        std::optional<UTF16String>& name = mNames[i - mCountBefore];
        if (!name) name = mTree.NameKey(*mRows[i]);
        return *name;
    }

    const TreeImpl& mTree;
    const std::vector<RowRef>& mRows;
    const bool mAreRanked;
    const std::size_t mCountBefore;
    const Less mLess;
    const Less mNameLess;
    const bool mIsByName;
    std::vector<UTF16String> mKeys;
    std::vector<std::uint64_t> mNumbers;
    std::vector<std::optional<UTF16String>> mNames;
    std::unordered_map<std::size_t, std::uint64_t> mNumbersBefore;
    std::unordered_map<std::size_t, UTF16String> mKeysBefore;
    std::unordered_map<std::size_t, UTF16String> mNamesBefore;
};

/// The places of `count` rows from `first` on by their keys alone, and for each the number of its key in the
/// order of the keys: each different key is compared once, however many rows have it. Rows with the same number
/// stand as they stood.
std::pair<Order, std::vector<std::uint32_t>> OrderByKeys(SortKeys& keys, std::size_t first, std::size_t count) {
    std::unordered_map<std::u16string_view, std::uint32_t> numbers;
    Order examples;
    std::vector<std::uint32_t> numberOf(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto [known, isNew] =
            numbers.try_emplace(keys.KeyOf(first + i), static_cast<std::uint32_t>(examples.size()));
        if (isNew) examples.push_back(i);
        numberOf[i] = known->second;
    }
    Order sorted = Identity(examples.size());
    const auto isLess = [&](std::uint32_t a, std::uint32_t b) {
        return keys.IsKeyLess(first + examples[a], first + examples[b]);
    };
    std::ranges::sort(sorted, isLess);
    std::vector<std::uint32_t> rankOf(examples.size());
    for (std::size_t i = 1; i < sorted.size(); ++i)
        rankOf[sorted[i]] = rankOf[sorted[i - 1]] + (isLess(sorted[i - 1], sorted[i]) ? 1 : 0);
    std::vector<std::uint32_t> ends(examples.size() + 1);
    for (std::uint32_t& number : numberOf) ++ends[(number = rankOf[number]) + 1];
    std::partial_sum(ends.begin(), ends.end(), ends.begin());
    Order order(count);
    for (std::uint32_t i = 0; i < count; ++i) order[ends[numberOf[i]]++] = i;
    return {std::move(order), std::move(numberOf)};
}

/// The places of all rows by their numbers; rows with the same number stand as they stood.
Order OrderByNumbers(const std::vector<std::uint64_t>& numbers) {
    std::vector<std::pair<std::uint64_t, std::uint32_t>> pairs(numbers.size());
    for (std::uint32_t i = 0; i < pairs.size(); ++i) pairs[i] = {numbers[i], i};
    std::ranges::sort(pairs);
    Order order(numbers.size());
    std::ranges::transform(pairs, order.begin(), [](const auto& pair) { return pair.second; });
    return order;
}

/// Of an order by numbers: rows with the same number by their names. They mostly stand so already, from the
/// order before: then each name is looked at once.
template <class Number>
void OrderEqualByNames(Order& order, const std::vector<Number>& numbers, SortKeys& keys, std::size_t first) {
    const auto isLess = [&](std::uint32_t a, std::uint32_t b) { return keys.IsNameLess(first + a, first + b); };
    for (auto begin = order.begin(); begin != order.end();) {
        const auto end = std::find_if(
            begin, order.end(), [&numbers, begin](std::uint32_t i) { return numbers[i] != numbers[*begin]; });
        if (!std::is_sorted(begin, end, isLess)) std::stable_sort(begin, end, isLess);
        begin = end;
    }
}

/// The order of rows that are not sorted by their names.
Order OrderByKeysAndNames(SortKeys& keys, std::size_t first, std::size_t count) {
    if (const std::vector<std::uint64_t>& numbers = keys.GetNumbers(); !numbers.empty()) {
        Order order = OrderByNumbers(numbers);
        OrderEqualByNames(order, numbers, keys, first);
        return order;
    }
    auto [order, numberOf] = OrderByKeys(keys, first, count);
    OrderEqualByNames(order, numberOf, keys, first);
    return std::move(order);
}

/// The order that sorts the `count` rows from `first` on, as places counted from there. Cheap for what is
/// sorted already, either way round.
Order SortedOrder(SortKeys& keys, std::size_t first, std::size_t count) {
    Order order = Identity(count);
    const auto isLess = [&](std::uint32_t a, std::uint32_t b) { return keys.IsLess(first + a, first + b); };
    if (std::is_sorted(order.begin(), order.end(), isLess)) return order;
    const auto isNotFalling = [&](std::uint32_t a, std::uint32_t b) { return !isLess(b, a); };
    if (std::adjacent_find(order.begin(), order.end(), isNotFalling) == order.end())
        std::reverse(order.begin(), order.end());
    else if (!keys.IsByName())
        return OrderByKeysAndNames(keys, first, count);
    else
        std::stable_sort(order.begin(), order.end(), isLess);
    return order;
}

bool IsIdentity(const Order& order) {
    return std::is_sorted(order.begin(), order.end());
}

/// Where rows stand that go into a sorted list: `mSorted` are they in order, `mPlaces` the indices in the old
/// list before which each goes.
struct Insertion {
    RowVec mSorted;
    std::vector<std::size_t> mPlaces;

    std::size_t CountRuns() const {
        std::size_t runs = 0;
        for (std::size_t i = 0; i < mPlaces.size(); ++i) runs += i == 0 || mPlaces[i] != mPlaces[i - 1];
        return runs;
    }
};

Insertion FindPlaces(const TreeImpl& tree, const Access::Children& children, std::size_t countBefore,
                     bool areInNameOrder) {
    Insertion insertion;
    const std::vector<RowRef>& rows = children.mRows;
    const std::size_t count = rows.size() - countBefore;
    const bool isOrderKnown = areInNameOrder && tree.IsSorted() && tree.IsSortedByName();
    Order order = Identity(count);
    if (isOrderKnown && !tree.mHeader->IsSortDirectionAscending()) std::ranges::reverse(order);
    if (!tree.IsSorted() || (isOrderKnown && countBefore == 0)) {
        for (const std::uint32_t i : order) insertion.mSorted.push_back(rows[countBefore + i]);
        insertion.mPlaces.assign(count, countBefore);
        return insertion;
    }
    // Of the rows that stand already only those are asked that the search meets.
    SortKeys keys(tree, children, isOrderKnown ? rows.size() : countBefore, rows.size());
    if (!isOrderKnown) order = SortedOrder(keys, countBefore, count);
    std::size_t first = 0;
    // The next part of a list mostly stands behind, or before, all that has come.
    const bool areAllBefore = isOrderKnown && keys.IsLess(countBefore + order.back(), 0);
    for (const std::uint32_t i : order) {
        const std::size_t row = countBefore + i;
        std::size_t last = areAllBefore ? 0 : countBefore;
        if (first < last && !keys.IsLess(row, countBefore - 1)) first = countBefore;
        while (first < last) {
            const std::size_t middle = (first + last) / 2;
            if (keys.IsLess(row, middle))
                last = middle;
            else
                first = middle + 1;
        }
        insertion.mSorted.push_back(rows[row]);
        insertion.mPlaces.push_back(first);
    }
    return insertion;
}

/// Each row notes its place by name, before rows that stand by name are put into another order.
void NoteNameRanks(Access::Children& children) {
    if (children.mNameOrder != NameOrder::Rising && children.mNameOrder != NameOrder::Falling) return;
    const std::uint32_t count = children.mCountOfLaidOut;
    const bool isRising = children.mNameOrder == NameOrder::Rising;
    for (std::uint32_t i = 0; i < count; ++i)
        Access::NameRank(*children.mRows[i]) = isRising ? i : count - 1 - i;
    children.mNameOrder = NameOrder::Ranked;
}

NameOrder ByName(bool isAscending) {
    return isAscending ? NameOrder::Rising : NameOrder::Falling;
}

/// The order by name of rows of which it is known, without asking for their keys.
Order KnownNameOrder(const Access::Children& children, bool isAscending) {
    Order order = Identity(children.mCountOfLaidOut);
    if (children.mNameOrder == NameOrder::Ranked) {
        std::vector<std::uint32_t> ranks(order.size());
        for (std::size_t i = 0; i < ranks.size(); ++i) ranks[i] = Access::NameRank(*children.mRows[i]);
        std::ranges::sort(order, [&](std::uint32_t a, std::uint32_t b) {
            return isAscending ? ranks[a] < ranks[b] : ranks[b] < ranks[a];
        });
    } else if (children.mNameOrder != ByName(isAscending)) {
        std::ranges::reverse(order);
    }
    return order;
}

/// The order of old and new rows together, the new ones standing at the end so far.
Order MergedOrder(const std::vector<std::size_t>& places, std::size_t countBefore) {
    Order order;
    order.reserve(countBefore + places.size());
    std::size_t next = 0;
    for (std::size_t i = 0; i <= countBefore; ++i) {
        while (next < places.size() && places[next] == i) order.push_back(std::uint32_t(countBefore + next++));
        if (i < countBefore) order.push_back(std::uint32_t(i));
    }
    return order;
}

}  // namespace

bool TreeImpl::IsSorted() const {
    return mHeader && desk::IsSet(mCallbacks.mSortData) && mHeader->GetSortColumn() != 0;
}

bool TreeImpl::IsSortedByName() const {
    return mHeader->GetImpl().Find(mHeader->GetSortColumn()) == 0;
}

Less TreeImpl::SortOrder(bool isAscending) const {
    const auto& custom = UI_MultiColumnTreeHeaderRow::Impl::Of(*mHeader).mLess;
    if (!desk::IsSet(custom)) {
        if (isAscending) return std::less<UTF16String>();
        return std::greater<UTF16String>();
    }
    if (isAscending) return [custom](const UTF16String& a, const UTF16String& b) { return (*custom)(a, b); };
    return [custom](const UTF16String& a, const UTF16String& b) { return (*custom)(b, a); };
}

UTF16String TreeImpl::SortKey(const Row& row) const {
    return desk::Call(mCallbacks.mSortData, RowRef(const_cast<Row*>(&row)),
                      unsigned(mHeader->GetIndexOfColumn(mHeader->GetSortColumn())));
}

UTF16StringVec TreeImpl::SortKeysOf(std::span<const RowRef> rows) const {
    const auto position = unsigned(mHeader->GetIndexOfColumn(mHeader->GetSortColumn()));
    UTF16StringVec keys;
    if (!rows.empty() && desk::IsSet(mCallbacks.mRowsSortData))
        keys = desk::Call(mCallbacks.mRowsSortData, rows, position);
    keys.reserve(rows.size());
    // None, or too few from a call that failed.
    while (keys.size() < rows.size()) keys.push_back(SortKey(*rows[keys.size()]));
    return keys;
}

std::vector<std::uint64_t> TreeImpl::SortNumbersOf(std::span<const RowRef> rows) const {
    if (rows.empty() || !desk::IsSet(mCallbacks.mRowsSortNumbers)) return {};
    std::vector<std::uint64_t> numbers = desk::Call(
        mCallbacks.mRowsSortNumbers, rows, unsigned(mHeader->GetIndexOfColumn(mHeader->GetSortColumn())));
    if (numbers.size() != rows.size()) numbers.clear();
    return numbers;
}

UTF16String TreeImpl::NameKey(const Row& row) const {
    return desk::Call(mCallbacks.mSortData, RowRef(const_cast<Row*>(&row)), unsigned(PositionOfColumn(0)));
}

/// New rows go among rows that stand by name, or are the first.
void TreeImpl::UpdateNameOrder(Access::Children& children, std::size_t countBefore, bool areInNameOrder) const {
    const bool isByName = IsSorted() && IsSortedByName();
    const NameOrder wanted = isByName ? ByName(mHeader->IsSortDirectionAscending()) : NameOrder::Ranked;
    const bool isKept = isByName && children.mNameOrder == wanted;
    const bool isFound = countBefore == 0 && IsSorted() && (isByName || areInNameOrder);
    children.mNameOrder =
        desk::IsSet(mCallbacks.mRowsSortData) && (isKept || isFound) ? wanted : NameOrder::Unknown;
    if (children.mNameOrder != NameOrder::Ranked) return;
    for (std::uint32_t i = 0; i < children.mRows.size(); ++i) Access::NameRank(*children.mRows[i]) = i;
}

void TreeImpl::InsertSorted(Row* parent, std::size_t countBefore, bool areInNameOrder) {
    // Those that have gone in may have found their places by keys that have changed since the last sorting.
    mSortedKeys.erase(parent);
    Access::Children& children = Access::ChildrenOf(parent ? *parent : *mRoot);
    std::vector<RowRef>& rows = children.mRows;
    UpdateNameOrder(children, countBefore, areInNameOrder);
    const Insertion insertion = FindPlaces(*this, children, countBefore, areInNameOrder);
    const bool isInModel = !parent || IsInModel(*parent);
    if (isInModel) BeginChange();
    rows.resize(countBefore);
    const bool inPlace = insertion.CountRuns() <= kMaximumRuns;
    for (std::size_t end = insertion.mSorted.size(); end > 0;) {
        std::size_t begin = end - 1;
        while (begin > 0 && (!inPlace || insertion.mPlaces[begin - 1] == insertion.mPlaces[begin])) --begin;
        const std::size_t place = inPlace ? insertion.mPlaces[begin] : countBefore;
        if (isInModel) mModel.beginInsertRows(mModel.IndexOf(parent), int(place), int(place + end - begin) - 1);
        rows.insert(rows.begin() + std::ptrdiff_t(place), insertion.mSorted.begin() + std::ptrdiff_t(begin),
                    insertion.mSorted.begin() + std::ptrdiff_t(end));
        Access::ChildrenOf(parent ? *parent : *mRoot).mCountOfLaidOut += std::uint32_t(end - begin);
        Renumber(parent, place);
        mSelected.RowsInserted({RowRef(parent), std::uint32_t(place), std::uint32_t(end - begin)});
        std::ptrdiff_t shown = 0;
        for (std::size_t i = begin; i < end; ++i)
            shown += static_cast<std::ptrdiff_t>(CountOfShown(*insertion.mSorted[i]));
        AddShown(parent, shown);
        if (isInModel) mModel.endInsertRows();
        end = begin;
    }
    if (inPlace) return;
    if (isInModel) BeginLayoutChange();
    Reorder(parent, MergedOrder(insertion.mPlaces, countBefore));
    if (isInModel) EndLayoutChange();
}

/// Without a question.
Order TreeImpl::OrderByKnownNames(const Row* folder, Access::Children& children) {
    // What they were sorted by before is not their order any more.
    mSortedKeys.erase(folder);
    const bool isAscending = mHeader->IsSortDirectionAscending();
    Order order = KnownNameOrder(children, isAscending);
    children.mNameOrder = ByName(isAscending);
    return order;
}

Order TreeImpl::OrderByKeys(const Row* folder, Access::Children& children, KeysOfRows known) {
    const std::uint64_t seed = mHeader->GetSortColumn() * 2ull + mHeader->IsSortDirectionAscending();
    const std::size_t count = children.mCountOfLaidOut;
    NoteNameRanks(children);
    SortKeys keys(*this, children, 0, count, std::move(known));
    const auto before = mSortedKeys.find(folder);
    if (before != mSortedKeys.end() && before->second == keys.Hash(Identity(count), seed))
        return Identity(count);
    Order order = SortedOrder(keys, 0, count);
    mSortedKeys[folder] = keys.Hash(order, seed);
    if (IsSortedByName() && desk::IsSet(mCallbacks.mRowsSortData))
        children.mNameOrder = ByName(mHeader->IsSortDirectionAscending());
    return order;
}

std::vector<RowRef> TreeImpl::FoldersToSort() {
    std::vector<RowRef> folders{nullptr};
    for (std::size_t next = 0; next < folders.size(); ++next) {
        const RowRef folder = folders[next];
        const std::vector<RowRef>& rows = ChildrenOf(folder.get());
        const std::size_t count = CountOfLaidOutChildren(folder.get());
        for (std::size_t i = 0; i < count; ++i)
            if (rows[i]->HasChild()) folders.push_back(rows[i]);
    }
    return folders;
}

void TreeImpl::Sort() {
    if (!IsSorted()) return SortAtOnce({});
    std::vector<RowRef> folders = FoldersToSort();
    std::size_t count = 0;
    for (const RowRef& folder : folders)
        if (!IsOrderKnown(folder.get())) count += CountOfLaidOutChildren(folder.get());
    if (count > kMostRowsAtOnce) return BeginSortInParts(std::move(folders));
    SortAtOnce(folders);
}

void TreeImpl::SortAtOnce(const std::vector<RowRef>& folders, std::vector<KeysOfRows> keys) {
    const bool endsSorting = mSorting.has_value();
    mSorting.reset();
    keys.resize(folders.size());
    std::vector<std::pair<const Row*, Order>> changes;
    for (std::size_t i = 0; i < folders.size(); ++i)
        changes.emplace_back(folders[i].get(), OrderOf(folders[i].get(), std::move(keys[i])));
    ReorderAll(changes);
    if (!endsSorting) return;
    Tree().EndBusy();
    desk::Call(mCallbacks.mRowsSorted);
}

bool TreeImpl::IsOrderKnown(const Row* folder) {
    const Access::Children& children = Access::ChildrenOf(folder ? const_cast<Row&>(*folder) : *mRoot);
    return IsSortedByName() && children.mNameOrder != NameOrder::Unknown;
}

Order TreeImpl::OrderOf(const Row* folder, KeysOfRows keys) {
    Access::Children& children = Access::ChildrenOf(folder ? const_cast<Row&>(*folder) : *mRoot);
    return IsOrderKnown(folder) ? OrderByKnownNames(folder, children)
                                : OrderByKeys(folder, children, std::move(keys));
}

void TreeImpl::ReorderAll(std::vector<std::pair<const Row*, Order>>& changes) {
    std::erase_if(changes, [](const auto& change) { return IsIdentity(change.second); });
    if (changes.empty()) return;
    BeginLayoutChange();
    for (const auto& [folder, order] : changes) Reorder(folder, order);
    EndLayoutChange();
}

void TreeImpl::SortLater() {
    RunLater(mSortLater, &TreeImpl::Sort);
}

void TreeImpl::Reorder(const Row* parent, const Order& order) {
    std::vector<RowRef>& rows = ChildrenOf(parent);
    RowVec reordered;
    reordered.reserve(rows.size());
    for (const std::uint32_t i : order) reordered.push_back(std::move(rows[i]));
    std::move(rows.begin() + std::ptrdiff_t(order.size()), rows.end(), std::back_inserter(reordered));
    rows = std::move(reordered);
    Renumber(parent, 0);
    mSelected.RowsReordered(parent, order);
}

void TreeImpl::BeginLayoutChange() {
    if (mView) mView->ScheduleLayout();
    // The hint spares an index held for each selected cell.
    Q_EMIT mModel.layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
}

void TreeImpl::EndLayoutChange() {
    QModelIndexList from;
    QModelIndexList to;
    for (const QModelIndex& index : mModel.persistentIndexList()) {
        if (!index.isValid()) continue;
        const QModelIndex now = mModel.IndexOf(desk::TreeModel::RowOf(index), index.column());
        if (now == index) continue;
        from.append(index);
        to.append(now);
    }
    mModel.changePersistentIndexList(from, to);
    Q_EMIT mModel.layoutChanged({}, QAbstractItemModel::VerticalSortHint);
    UpdateVisibleRowsLater();
}

}  // namespace host
