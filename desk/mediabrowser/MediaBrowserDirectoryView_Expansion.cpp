// Opening folders one after another, as their rows come.
#include <algorithm>
#include <climits>
#include <utility>

#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/mediabrowser/DirectoryViewImpl.h"
#include "host/files/PathUtils.h"

namespace host {

using DirectoryImpl = MediaBrowserDirectoryView::DirectoryImpl;

bool DirectoryImpl::IsAwaited(const Row* row) const {
    const auto folder = mFolders.find(row);
    return folder != mFolders.end() && folder->second.mIsBusy;
}

DirectoryImpl::Progress DirectoryImpl::Advance(Expansion& expansion) {
    for (;;) {
        const Row* folder = expansion.mRow.get();
        if (folder && (desk::NameOfRow(folder).empty() || !folder->IsOpen())) return Progress::Fails;
        const RowRef row(FindChild(folder, expansion.mNames[expansion.mOpened]));
        if (!row) return IsAwaited(folder) ? Progress::Waits : Progress::Fails;
        if (!mView.CanOpenRow(row)) return Progress::Fails;
        expansion.mRow = row;
        if (expansion.mOpened + 1 == expansion.mNames.size()) return Progress::IsThere;
        ++expansion.mOpened;
        mTree->OpenRow(row.get());
    }
}

void DirectoryImpl::AdvanceExpansions() {
    // Opening a row calls the view, which may begin and end expansions.
    for (const auto& expansion : std::vector(mExpansions)) {
        if (std::erase(mExpansions, expansion) == 0) continue;
        const unsigned period = mExpansionPeriod;
        const Progress progress = Advance(*expansion);
        if (period != mExpansionPeriod) continue;
        if (progress == Progress::Waits)
            mExpansions.push_back(expansion);
        else
            CompleteExpansion(expansion->mCompletion,
                              progress == Progress::IsThere ? expansion->mRow : RowRef());
    }
}

void DirectoryImpl::CompleteExpansion(ExpansionCallback completion, const RowRef& row) {
    desk::GetServices().mMainThread->Post(
        mLifetime.Guard([this, row, completion = std::move(completion), period = mExpansionPeriod] {
            if (period == mExpansionPeriod) completion(row);
        }));
}

bool MediaBrowserDirectoryView::IsContentAwaited(const RowRef& row) const {
    return mDirectoryImpl->IsAwaited(row.get());
}

UTF16StringVec MediaBrowserDirectoryView::GetContainerListForPath(const UTF16String& path) const {
    const UTF16String& root = mDirectoryImpl->mRoot;
    const UTF16String folder = PathUtils::ToNormalizedPath(path);
    UTF16StringVec containers;
    // A path from a settings file may be no path at all.
    if (root.empty() || folder.size() <= root.size() || folder.size() > PATH_MAX) return containers;
    if (!desk::IsSameOrBelow(folder, root)) return containers;
    for (std::size_t end = root.size(); end < folder.size();) {
        end = std::min(folder.find(u'/', end + 1), folder.size());
        containers.push_back(folder.substr(0, end));
    }
    return containers;
}

bool MediaBrowserDirectoryView::ExpandContainerList(const UTF16StringVec& containers,
                                                    ExpansionCallback completion) {
    DirectoryImpl& impl = *mDirectoryImpl;
    if (containers.empty()) return false;
    const auto expansion = std::make_shared<DirectoryImpl::Expansion>();
    for (const UTF16String& container : containers)
        expansion->mNames.push_back(PathUtils::GetFullFilePart(container));
    expansion->mCompletion = std::move(completion);
    const unsigned period = impl.mExpansionPeriod;
    const DirectoryImpl::Progress progress = impl.Advance(*expansion);
    if (progress == DirectoryImpl::Progress::Fails || period != impl.mExpansionPeriod) return false;
    if (progress == DirectoryImpl::Progress::Waits)
        impl.mExpansions.push_back(expansion);
    else
        impl.CompleteExpansion(expansion->mCompletion, expansion->mRow);
    return true;
}

void MediaBrowserDirectoryView::CancelExpansions() {
    ++mDirectoryImpl->mExpansionPeriod;
    mDirectoryImpl->mExpansions.clear();
}

void MediaBrowserDirectoryView::ReadAhead(const UTF16StringVec& folders) {
    DirectoryImpl& impl = *mDirectoryImpl;
    impl.mReadAhead.reset();
    if (folders.empty() || impl.mRoot.empty()) return;
    impl.mReadAhead = std::make_shared<desk::FolderReadAhead>(impl.mRoot);
    impl.mReadAhead->Start(folders);
}

}  // namespace host
