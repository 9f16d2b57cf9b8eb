#include "Handlers/SharedProjects/SharedProjectsFolderOpener.h"

#include <utility>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"
#include "Handlers/SharedProjects/SharedProjectsUtils.h"

namespace HandlerSharedProjects {

FolderOpener::FolderOpener(SharedProjectsDirectoryView& owner) : mOwner(owner) {}

FolderOpener::~FolderOpener() = default;

void FolderOpener::OpenFolders(UTF16StringVec folders, Paths awaitedPaths, Completion completion) {
    if (!Begin(std::move(awaitedPaths), std::move(completion))) return;
    mFoldersToOpen = std::move(folders);
    mOwner.ReadAhead(mFoldersToOpen);
    if (mAwaitedContent.empty()) StartExpanding();
}

void FolderOpener::OpenAllFoldersInDirectory(const UTF16String& directory, Paths awaitedPaths,
                                             Completion completion) {
    if (!Begin(std::move(awaitedPaths), std::move(completion))) return;
    mSearch = FileSearch::FindLeafFolders(directory, [this](UTF16StringVec folders) {
        const std::unique_ptr<FileSearch::Request> search = std::move(mSearch);
        mFoldersToOpen = std::move(folders);
        for (const UTF16String& folder : mLeftOut) LeaveOut(folder);
        mOwner.ReadAhead(mFoldersToOpen);
        if (mAwaitedContent.empty()) StartExpanding();
    });
}

/// False while another job runs.
bool FolderOpener::Begin(Paths&& awaitedPaths, Completion&& completion) {
    if (!IsIdle()) return false;
    mState = State::Waiting;
    mAwaitedContent = std::move(awaitedPaths);
    mCompletion = std::move(completion);
    mOwner.GetTree()->BeginBusy();
    return true;
}

void FolderOpener::Stop() {
    if (IsIdle()) return;
    mCompletion = nullptr;
    Leave();
}

void FolderOpener::Finish() {
    const Completion completion = std::exchange(mCompletion, nullptr);
    Leave();
    if (completion) completion();
}

void FolderOpener::Leave() {
    mState = State::Idle;
    mSearch.reset();
    mFoldersToOpen.clear();
    mLeftOut.clear();
    mAwaitedContent.clear();
    mOwner.CancelExpansions();
    mOwner.ReadAhead({});
    mOwner.GetTree()->EndBusy();
}

void FolderOpener::LeaveOut(const UTF16String& folder) {
    if (mSearch) mLeftOut.push_back(folder);
    std::erase_if(mFoldersToOpen, [&](const UTF16String& path) { return Utils::IsAtOrBelow(path, folder); });
}

void FolderOpener::StartExpanding() {
    mState = State::Expanding;
    RequestNextExpansion();
}

void FolderOpener::RequestNextExpansion() {
    while (!mFoldersToOpen.empty()) {
        const UTF16String folder = std::move(mFoldersToOpen.back());
        mFoldersToOpen.pop_back();
        if (mOwner.ExpandContainerList(mOwner.GetContainerListForPath(folder),
                                       [this](const RowRef& row) { OnExpansionComplete(row); }))
            return;
    }
    mState = State::WaitingForLastContents;
    if (mAwaitedContent.empty()) Finish();
}

void FolderOpener::OnExpansionComplete(const RowRef& folder) {
    if (folder) mOwner.GetTree()->OpenRow(folder.get());
    // Those above it may have opened with the first part of a long content.
    for (RowRef row = folder; row; row = row->GetParentRow())
        if (mOwner.IsContentAwaited(row)) mAwaitedContent.insert(mOwner.GetRowPath(row.get()));
    RequestNextExpansion();
}

void FolderOpener::OnContentUpdated(const UTF16String& path, bool isLast) {
    if (isLast) mAwaitedContent.erase(path);
    if (!mAwaitedContent.empty() || mSearch) return;
    if (mState == State::Waiting)
        StartExpanding();
    else if (mState == State::WaitingForLastContents)
        Finish();
}

void FolderOpener::OnFolderRemoved(const UTF16String& path) {
    mAwaitedContent.erase(path);
}

}  // namespace HandlerSharedProjects
