#include "Handlers/SharedProjects/SharedProjectsItemTree.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "Handlers/SharedProjects/SharedProjectsTabView.h"
#include "host/files/PathUtils.h"
#include "host/project/KnownProjects.h"
#include "host/project/ProjectLockFile.h"
#include "host/project/SharedProjectsManager.h"

namespace HandlerSharedProjects {

namespace {

constexpr int kSpinnerInCentre = 1;
/// A sorting that takes less may follow each batch of facts.
constexpr std::chrono::milliseconds kQuickSort(5);
/// So many times its duration nothing is sorted after a longer one, unless no facts have come for a while.
constexpr int kPausePerSort = 4;
constexpr double kQuietSeconds = 0.05;
/// The facts by which the user has just chosen to sort mostly come within this time.
constexpr std::chrono::milliseconds kFirstFacts(100);
/// The host is asked for so many projects at a time: many more would not stay in the processor's caches.
constexpr std::size_t kProjectsPerQuestion = 512;
/// Where more rows have changed than these and one of so many, it counts as all.
constexpr std::size_t kFewRows = 256;
constexpr std::size_t kRowsPerChange = 32;

}  // namespace

SharedProjectsItemTree::SharedProjectsItemTree(Owner& owner, Utils::TreeRef tree,
                                               const std::shared_ptr<SharedProjectsTabView>& tabView,
                                               std::weak_ptr<const void> lifetime)
    : mOwner(owner), mTree(std::move(tree)), mTabView(tabView), mLifetime(std::move(lifetime)) {
    SetupTree();
    SetupHeaderRow();
    mQueuedSort = new QueueOnlyOnce(GetRegisteredMainThread(), [this, lifetime = mLifetime] {
        if (!lifetime.expired()) SortOrOwe();
    });
}

void SharedProjectsItemTree::SetupTree() {
    using Self = SharedProjectsItemTree;
    mTree->SetSupportMultipleSelections(true);
    mTree->SetSupportNoneSelected(true);
    mTree->SetSupportDeselectAllOnEmptyTreeClick(true);
    mTree->SetSpinnerAlignment(kSpinnerInCentre);
    mTree->SetCellSortDataFunction(Utils::BindCallback(this, &Self::GetCellSortDataAsString, mLifetime));
    mTree->SetRowsSortDataFunction(Utils::BindCallback(this, &Self::GetRowsSortData, mLifetime));
    mTree->SetRowsSortNumbersFunction(Utils::BindCallback(this, &Self::GetRowsSortNumbers, mLifetime));
    mTree->SetRowsSortedCallback(Utils::BindCallback(this, &Self::OnRowsSorted, mLifetime));
    mTree->SetCellAccessibleTextFunction(Utils::BindCallback(this, &Self::GetCellAccessibleText, mLifetime));
    mTree->SetCellToolTipFunction(Utils::BindCallback(this, &Self::GetCellToolTip, mLifetime));
    mTree->SetRowVisibilityChangedCallback(Utils::BindCallback(this, &Self::OnRowVisibilityChanged, mLifetime));
    mTree->SetColumnMovedCallback(Utils::BindCallback(this, &Self::OnColumnMoved, mLifetime));
    mTree->SetColumnResizedCallback(Utils::BindCallback(this, &Self::OnColumnResized, mLifetime));
}

void SharedProjectsItemTree::SetupHeaderRow() {
    using Self = SharedProjectsItemTree;
    mHeaderRow = new UI_MultiColumnTreeHeaderRow(*mTree);
    mTree->SetHeaderRow(mHeaderRow);
    Columns::SetupHeaderRow(mHeaderRow, Utils::BindCallback(this, &Self::ColumnSortStringIsLess, mLifetime),
                            Utils::BindCallback(this, &Self::OnSortChanged, mLifetime));
}

bool SharedProjectsItemTree::IsRowExposed(const RowRef& row) {
    for (RowRef parent = row->GetParentRow(); parent; parent = parent->GetParentRow())
        if (!parent->IsOpen()) return false;
    return true;
}

void SharedProjectsItemTree::AddRow(const RowRef& row, bool isProject) {
    row->SetBackgroundColorID(kRowBackgroundColorID);
    row->SetMarks(isProject ? kIsProject : 0);
}

bool SharedProjectsItemTree::RemoveRow(const RowRef& row) {
    const bool isProject = IsFileRow(row);
    row->SetMarks(0);
    mRowToMetadata.erase(row);
    return isProject;
}

UTF16String SharedProjectsItemTree::GetPath(const RowRef& row) const {
    return PathUtils::RemoveTrailingSlash(mOwner.GetItemPath(row));
}

UTF16String SharedProjectsItemTree::GetPathOfKind(const RowRef& row) const {
    const UTF16String path = GetPath(row);
    return IsFileRow(row) ? path : PathUtils::AddTrailingSlash(path);
}

const Columns::FileMetadata* SharedProjectsItemTree::GetMetadata(const RowRef& row) const {
    const auto entry = mRowToMetadata.find(row);
    return entry == mRowToMetadata.end() ? nullptr : &entry->second;
}

void SharedProjectsItemTree::UpdateCellsOfRow(const RowRef& row) {
    mTree->RedrawRow(row.get());
    UpdateMetadataForRow(row);
    AddNameCellView(row);
}

void SharedProjectsItemTree::UpdateRow(const RowRef& row, bool exposed) {
    UpdateCellsOfRow(row);
    // What has come to be seen since the volume told its news has them already, and shows no difference.
    if (exposed && IsFileRow(row) && IsSortedByFacts()) SortLater({row});
}

std::size_t SharedProjectsItemTree::CountRowsInView() const {
    const int first = mTree->GetFirstVisibleOpenedRowIndex();
    return first < 0 ? 0 : static_cast<std::size_t>(mTree->GetLastVisibleOpenedRowIndex() - first + 1);
}

void SharedProjectsItemTree::UpdateOpenRows() {
    const int last = mTree->GetLastVisibleOpenedRowIndex();
    for (int i = std::max(mTree->GetFirstVisibleOpenedRowIndex(), 0); i <= last; ++i)
        if (const RowRef row = mTree->GetOpenedRow(i)) UpdateCellsOfRow(row);
}

bool SharedProjectsItemTree::IsSortedByFacts() const {
    const ColumnID column = mHeaderRow->GetSortColumn();
    return column != 0 && column != Columns::kNameColumnID;
}

void SharedProjectsItemTree::UpdateMetadataForRow(const RowRef& row) {
    if (!IsFileRow(row) || !mTree->IsRowVisible(row.get())) return;
    const auto [entry, isNew] = mRowToMetadata.try_emplace(row);
    if (isNew) entry->second = Columns::FileMetadata(GetPath(row));
    // While all sort keys stay as they were, so does the order: scrolling sorts nothing.
    if (entry->second.Update(true, mHeaderRow->GetSortColumn()) && !isNew) SortLater({row});
}

void SharedProjectsItemTree::SortLater() {
    mChangedRows.reset();
    BeginSortLater();
}

void SharedProjectsItemTree::SortLater(const std::vector<RowRef>& changed) {
    if (mChangedRows) mChangedRows->insert(mChangedRows->end(), changed.begin(), changed.end());
    if (mChangedRows && mChangedRows->size() > kFewRows + GetOpenedRowsCount() / kRowsPerChange)
        mChangedRows.reset();
    BeginSortLater();
}

void SharedProjectsItemTree::SortBelowLater(const RowRef& row) {
    SortLater(row->GetChildRows());
    for (const RowRef& child : row->GetChildRows())
        if (child->IsOpen()) SortBelowLater(child);
}

/// Facts come many at a time, and each sorting looks at all rows: the longer that takes, the rarer it is while
/// they come.
void SharedProjectsItemTree::BeginSortLater() {
    mHasSortKeyChanged = true;
    if (std::exchange(mIsSortAwaited, true)) return;
    const bool isQuick = mLastSortDuration < kQuickSort;
    mSortDue = std::max(mEarliestSort,
                        mEndOfLastSort + (isQuick ? Clock::duration() : kPausePerSort * mLastSortDuration));
    if (mSortDue <= Clock::now())
        mQueuedSort->Queue();
    else
        SortWhenDue();
}

void SharedProjectsItemTree::OnFactsChanged() {
    UpdateOpenRows();
    if (IsSortedByFacts()) SortLater();
}

/// However often that is, sorting leaves half of the time.
void SharedProjectsItemTree::OnFactsComplete() {
    if (mIsSortAwaited && Clock::now() >= mEndOfLastSort + mLastSortDuration) mQueuedSort->Queue();
}

/// Or as soon as nothing comes any more.
void SharedProjectsItemTree::SortWhenDue() {
    if (!mIsSortAwaited) return;
    if (Clock::now() >= mSortDue || !std::exchange(mHasSortKeyChanged, false)) return SortOrOwe();
    AsyncCallFromMainThread(
        [this, lifetime = mLifetime] {
            if (!lifetime.expired()) SortWhenDue();
        },
        kQuietSeconds);
}

void SharedProjectsItemTree::AddNameCellView(const RowRef& row) {
    // Composing the path of a row that nobody sees would be the larger part of the work.
    if (!mTree->IsRowVisible(row.get())) return;
    const Columns::FileMetadata* metadata = GetMetadata(row);
    Columns::AddNameCellView(*mTree, row, GetPathOfKind(row),
                             metadata ? metadata->GetLockState() : std::nullopt);
}

bool SharedProjectsItemTree::ListenToMessage(const Message& message) {
    if (const auto* opened = MessageCast<ProjectOpenedMessage>(message))
        UpdateRowOfProject(opened->GetProject());
    else if (const auto* closed = MessageCast<ProjectClosedMessage>(message))
        UpdateRowOfProject(closed->GetProject());
    else if (const auto* readOnly = MessageCast<ReadOnlyStateChangedMessage>(message))
        UpdateRowOfProject(readOnly->GetProject());
    else
        return false;
    return true;
}

void SharedProjectsItemTree::UpdateRowOfProject(const ProjectRef& project) {
    // Whoever opened it through a link has it open under two names.
    for (const UTF16String& path :
         std::set{project->GetProjectPath(), Utilities::GetRealProjectPath(project)}) {
        if (!IsWithinCurrentZuProductionFolder(path)) continue;
        if (mIsHolding)
            mHeldProjectPaths.push_back(path);
        else if (const RowRef row = mOwner.GetRowFromPath(path))
            UpdateRow(row);
    }
}

void SharedProjectsItemTree::SortOrOwe() {
    mIsSortAwaited = false;
    if (mIsHolding || mTree->IsSorting()) {
        mIsSortOwed = true;
        return;
    }
    mBeginOfSort = Clock::now();
    mOwner.SortRows(std::exchange(mChangedRows, RowVec()));
    if (!mTree->IsSorting()) NoteEndOfSort();
}

void SharedProjectsItemTree::NoteEndOfSort() {
    if (!mBeginOfSort) return;
    mEndOfLastSort = Clock::now();
    mLastSortDuration = mEndOfLastSort - *std::exchange(mBeginOfSort, std::nullopt);
}

void SharedProjectsItemTree::OnRowsSorted() {
    NoteEndOfSort();
    mOwner.OnRowsSorted();
    if (!mIsHolding && std::exchange(mIsSortOwed, false)) mQueuedSort->Queue();
}

void SharedProjectsItemTree::HoldUpdates(bool hold) {
    mIsHolding = hold;
    if (hold) return;
    std::set<UTF16String> updated;
    for (const UTF16String& path : std::exchange(mHeldProjectPaths, {})) {
        if (!updated.insert(path).second) continue;
        if (const RowRef row = mOwner.GetRowFromPath(path)) UpdateRow(row);
    }
    if (std::exchange(mIsSortOwed, false)) mQueuedSort->Queue();
}

void SharedProjectsItemTree::OnRowDoubleClicked(const RowRef& row) {
    if (IsFileRow(row))
        Utils::OpenProjectOutsideTrash(GetPath(row));
    else
        ToggleRow(row);
}

void SharedProjectsItemTree::ToggleRow(const RowRef& row) {
    if (mTree->IsRowOpen(row.get()))
        mTree->CloseRow(row.get());
    else
        mTree->OpenRow(row.get());
}

void SharedProjectsItemTree::OnDrawCellOfRow(Drawbot& drawbot, const RowRef& row, unsigned column,
                                             const RectT<float>& cell) {
    if (!mTree->IsRowVisible(row.get())) return;
    if (const Columns::FileMetadata* metadata = GetMetadata(row))
        Columns::DrawMetadataCellOfRow(drawbot, *metadata, column, cell, mHeaderRow);
}

void SharedProjectsItemTree::OnRowOpenStateChanged(const RowRef& row, bool open) {
    // Facts of the rows below it were of no interest so far.
    if (open && IsSortedByFacts()) SortBelowLater(row);
    if (const auto tabView = mTabView.lock()) tabView->OnTreeChanged();
}

void SharedProjectsItemTree::OnRowVisibilityChanged(const RowRef& row) {
    if (!mTree->IsRowVisible(row.get())) {
        mRowToMetadata.erase(row);
        return;
    }
    UpdateMetadataForRow(row);
    AddNameCellView(row);
}

bool SharedProjectsItemTree::ColumnSortStringIsLess(const UTF16String& a, const UTF16String& b) {
    return Columns::SortStringIsLess(a, b);
}

UTF16String SharedProjectsItemTree::GetCellSortDataAsString(const RowRef& row, unsigned column) {
    if (Columns::IsNameColumn(mHeaderRow, column)) return GetNameKey(row);
    return GetRowsSortData(std::span(&row, 1), column).front();
}

UTF16String SharedProjectsItemTree::GetNameKey(const RowRef& row) const {
    const UTF16String name = mOwner.GetItemName(row);
    if (IsFileRow(row)) return Columns::GetPathDisplayName(name);
    // The trash is at the top.
    return row->GetParentRow() ? name : Columns::GetShownName(GetPathOfKind(row));
}

UTF16StringVec SharedProjectsItemTree::GetRowsSortData(std::span<const RowRef> rows, unsigned column) {
    UTF16StringVec keys;
    if (rows.empty()) return keys;
    keys.reserve(rows.size());
    if (Columns::IsNameColumn(mHeaderRow, column)) {
        for (const RowRef& row : rows) keys.push_back(GetNameKey(row));
        return keys;
    }
    const std::vector<KnownProject> projects = GetKnownProjectsOf(rows, KnownLocks::Find);
    const ColumnID columnID = mHeaderRow->GetColumnAt(column);
    for (std::size_t i = 0; i < rows.size(); ++i)
        keys.push_back(IsFileRow(rows[i]) ? Columns::FileMetadata(mOwner.GetItemName(rows[i]), projects[i])
                                                .GetColumnDataAsSortableString(columnID)
                                          : UTF16String());
    return keys;
}

std::vector<std::uint64_t> SharedProjectsItemTree::GetRowsSortNumbers(std::span<const RowRef> rows,
                                                                      unsigned column) {
    const ColumnID columnID = mHeaderRow->GetColumnAt(column);
    std::vector<std::uint64_t> numbers;
    if (!Columns::IsNumberColumn(columnID)) return numbers;
    numbers.reserve(rows.size());
    while (!rows.empty()) {
        const std::span some = rows.first(std::min(rows.size(), kProjectsPerQuestion));
        for (const KnownProject& project : GetKnownProjectsOf(some, KnownLocks::Omit))
            numbers.push_back(Columns::GetSortNumber(project, columnID));
        rows = rows.subspan(some.size());
    }
    return numbers;
}

/// Rows in closed folders have the facts that are known: those that are not are asked for when the folder is
/// opened.
std::vector<KnownProject> SharedProjectsItemTree::GetKnownProjectsOf(std::span<const RowRef> rows,
                                                                     KnownLocks locks) const {
    UTF16StringVec names;
    names.reserve(rows.size());
    for (const RowRef& row : rows) names.push_back(IsFileRow(row) ? mOwner.GetItemName(row) : UTF16String());
    const RowRef parent = rows.front()->GetParentRow();
    const bool areExposed = !parent || (parent->IsOpen() && IsRowExposed(parent));
    return GetKnownProjects(
        parent ? GetPath(parent) : PathUtils::ToNormalizedPath(SharedProjectsHandler::GetRootDirectory()),
        names, areExposed ? MissingFacts::Request : MissingFacts::Leave, locks);
}

UTF16String SharedProjectsItemTree::GetCellAccessibleText(const RowRef& row, unsigned column) {
    const UTF16String path = GetPathOfKind(row);
    if (const Columns::FileMetadata* metadata = GetMetadata(row); metadata || !IsFileRow(row))
        return Columns::GetCellAccessibleText(mHeaderRow, column, path, metadata);
    const Columns::FileMetadata known(
        path, GetKnownProjects(PathUtils::GetFullDirectoryPart(path), {PathUtils::GetFullFilePart(path)},
                               MissingFacts::Leave)
                  .front());
    return Columns::GetCellAccessibleText(mHeaderRow, column, path, &known);
}

UTF16String SharedProjectsItemTree::GetCellToolTip(const RowRef& row, unsigned column) {
    const bool isLockOfProject = mHeaderRow->GetColumnAt(column) == Columns::kLockedColumnID && IsFileRow(row);
    return isLockOfProject ? DescribeProjectLock(GetPath(row)) : UTF16String();
}

void SharedProjectsItemTree::OnSortChanged(ColumnID, bool) {
    mIsHeaderChanged = true;
    mEarliestSort = Clock::now() + kFirstFacts;
    mOwner.OnSortChosen();
    UpdateOpenRows();
}

void SharedProjectsItemTree::OnColumnMoved(unsigned, unsigned) {
    mIsHeaderChanged = true;
    const auto tabView = mTabView.lock();
    if (tabView && tabView->AreTreeViewsCreated())
        Utils::LogViewPropertyUsage("ColumnOrder", tabView->GetViewPropertyLoggingData());
}

void SharedProjectsItemTree::OnColumnResized(unsigned column, float) {
    mIsHeaderChanged = true;
    const auto tabView = mTabView.lock();
    if (tabView && tabView->AreTreeViewsCreated()) tabView->UpdateBaseColumnWidthMap(mHeaderRow, column);
}

}  // namespace HandlerSharedProjects
