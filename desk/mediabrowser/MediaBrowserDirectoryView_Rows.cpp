// Rows and the paths that they stand for.
#include <algorithm>

#include "desk/mediabrowser/ContentManagerImpl.h"
#include "desk/mediabrowser/DirectoryViewImpl.h"

namespace host {

using Row = UI_MultiColumnTreeRow;
using DirectoryImpl = MediaBrowserDirectoryView::DirectoryImpl;

namespace {

/// From so many child rows on, an index finds them by name.
constexpr std::size_t kManyRows = 64;

void AppendRowAndBelow(const RowRef& row, RowVec& rows) {
    if (desk::NameOfRow(row.get()).empty()) return;
    rows.push_back(row);
    for (const RowRef& child : row->GetChildRows()) AppendRowAndBelow(child, rows);
}

}  // namespace

UTF16String DirectoryImpl::PathOf(const Row* row) const {
    if (!row || desk::NameOfRow(row).empty()) return {};
    std::size_t size = mRoot.size();
    for (const Row* each = row; each; each = Row::Access::Parent(*each))
        size += desk::NameOfRow(each).size() + 1;
    if (mRoot.ends_with(u'/')) --size;
    UTF16String path;
    path.reserve(size);
    path = mRoot;
    path.resize(size, u'/');
    for (const Row* each = row; each; each = Row::Access::Parent(*each)) {
        const desk::NameText name = desk::NameOfRow(each);
        size -= name.size();
        name.CopyTo(path.data() + size);
        path[--size] = u'/';
    }
    return path;
}

bool DirectoryImpl::FindRow(std::u16string_view path, Row*& row) const {
    row = nullptr;
    if (mRoot.empty() || !path.starts_with(mRoot)) return false;
    path.remove_prefix(mRoot.size());
    if (!path.empty() && path.front() != u'/' && !mRoot.ends_with(u'/')) return false;
    while (!path.empty()) {
        if (path.front() == u'/') path.remove_prefix(1);
        const std::size_t end = std::min(path.find(u'/'), path.size());
        row = FindChild(row, path.substr(0, end));
        if (!row) return false;
        path.remove_prefix(end);
    }
    return true;
}

Row* DirectoryImpl::FindChild(const Row* parent, std::u16string_view name) const {
    const auto folder = mFolders.find(parent);
    if (folder != mFolders.end() && folder->second.mHasIndex) {
        const auto row = folder->second.mIndex.find(name);
        return row == folder->second.mIndex.end() ? nullptr : *row;
    }
    const std::vector<RowRef>& rows = mTree->GetChildRowsOf(parent);
    const auto found =
        std::ranges::find_if(rows, [name](const RowRef& row) { return desk::NameOfRow(row.get()) == name; });
    return found == rows.end() ? nullptr : found->get();
}

void DirectoryImpl::ReserveRows(const Row* parent, std::size_t count) {
    const auto found = mFolders.find(parent);
    if (found == mFolders.end()) return;
    Folder& folder = found->second;
    if (count < kManyRows) return;
    folder.mIndex.reserve(count);
    if (std::exchange(folder.mHasIndex, true)) return;
    for (const RowRef& row : mTree->GetChildRowsOf(parent)) folder.mIndex.insert(row.get());
}

bool DirectoryImpl::IsEachNew(const Row* parent, const ContentDelivery& delivery) {
    using Extent = ContentDelivery::Extent;
    const bool isEmpty = mTree->GetChildRowsOf(parent).empty();
    const auto folder = mFolders.find(parent);
    if (folder == mFolders.end()) return isEmpty && delivery.mExtent != Extent::Change;
    bool& isComingInParts = folder->second.mIsComingInParts;
    const bool isFirstPart = delivery.mCountOfAllParts > 0;
    isComingInParts = delivery.mExtent == Extent::Part && (isFirstPart ? isEmpty : isComingInParts);
    return isComingInParts || (isEmpty && delivery.mExtent == Extent::Whole);
}

void DirectoryImpl::Record(Row& row, std::u16string_view name) {
    Row::Access::DataOf(row) = desk::RowName::Make(name);
    const auto folder = mFolders.find(Row::Access::Parent(row));
    if (folder != mFolders.end() && folder->second.mHasIndex) folder->second.mIndex.insert(&row);
}

void DirectoryImpl::ForgetRow(Row& row) {
    const desk::NameText name = desk::NameOfRow(&row);
    if (name.empty()) return;
    const auto parent = mFolders.find(Row::Access::Parent(row));
    if (parent != mFolders.end() && parent->second.mHasIndex) parent->second.mIndex.erase(&row);
    const auto folder = mFolders.find(&row);
    if (folder != mFolders.end()) {
        SetBusy(folder->second, false);
        mFolders.erase(folder);
        mStale.erase(&row);
        mContentManager->GetImpl().Forget(PathOf(&row), this);
    }
    Row::Access::DataOf(row).reset();
}

void DirectoryImpl::ForgetRowAndBelow(const RowRef& row) {
    for (const RowRef& child : row->GetChildRows()) ForgetRowAndBelow(child);
    mView.RemoveRowFromMaps(row);
}

bool DirectoryImpl::IsShown(const Row* row) {
    for (; row; row = Row::Access::Parent(*row))
        if (!row->IsOpen()) return false;
    return true;
}

UTF16String MediaBrowserDirectoryView::GetRowPath(const UI_MultiColumnTreeRow* row) const {
    return mDirectoryImpl->PathOf(row);
}

UTF16String MediaBrowserDirectoryView::GetRowName(const UI_MultiColumnTreeRow* row) const {
    return row ? desk::NameOfRow(row).ToString() : UTF16String();
}

RowVec MediaBrowserDirectoryView::GetAllRows() const {
    RowVec rows;
    for (const RowRef& row : GetTree()->GetTopLevelRows()) AppendRowAndBelow(row, rows);
    return rows;
}

RowRef MediaBrowserDirectoryView::FindChildRow(const UI_MultiColumnTreeRow* parent,
                                               std::u16string_view name) const {
    return RowRef(mDirectoryImpl->FindChild(parent, name));
}

void MediaBrowserDirectoryView::AddRowToMaps(const RowRef& row, const DirectoryRowData& data) {
    if (row) mDirectoryImpl->Record(*row, data.mName);
}

void MediaBrowserDirectoryView::RemoveRowFromMaps(const RowRef& row) {
    if (row) mDirectoryImpl->ForgetRow(*row);
}

void MediaBrowserDirectoryView::UpdateRow(const RowRef& row) {
    GetTree()->RedrawRow(row.get());
}

}  // namespace host
