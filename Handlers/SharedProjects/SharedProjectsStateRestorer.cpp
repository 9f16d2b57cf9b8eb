#include "Handlers/SharedProjects/SharedProjectsStateRestorer.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include "Handlers/SharedProjects/SharedProjectsHandler.h"
#include "host/files/PathUtils.h"

namespace HandlerSharedProjects {

namespace {

void AppendMissing(UTF16StringVec& paths, const UTF16StringVec& more) {
    std::set<UTF16String> known(paths.begin(), paths.end());
    std::ranges::copy_if(more, std::back_inserter(paths),
                         [&](const UTF16String& path) { return known.insert(path).second; });
}

}  // namespace

StateRestorer::StateRestorer(SharedProjectsDirectoryView& owner, FolderOpener& opener,
                             std::function<void()> goOn)
    : mOwner(owner), mOpener(opener), mGoOn(std::move(goOn)) {}

void StateRestorer::Restore(const StateData& state, bool waitForRoot) {
    mAwaitedPath.clear();
    const bool isRootAwaited = mOwner.IsContentAwaited({});
    if (!mOpener.IsIdle() || (waitForRoot && !isRootAwaited && !mIsRootListed)) {
        mPending = std::make_unique<StateData>(state);
        return;
    }
    FolderOpener::Paths awaitedPaths;
    if (waitForRoot && isRootAwaited)
        awaitedPaths.insert(PathUtils::ToNormalizedPath(SharedProjectsHandler::GetRootDirectory()));
    Begin(state, std::move(awaitedPaths));
}

void StateRestorer::RestoreWhenShown(const StateData& state, const UTF16String& path) {
    mPending = std::make_unique<StateData>(state);
    mAwaitedPath = path;
    mSelectedBeforeAwaited = mOwner.GetTree()->GetSelectedRows();
    GoOn();
}

bool StateRestorer::MayBeginPending() {
    if (!mPending || !mIsRootListed || !mOpener.IsIdle()) return false;
    if (mAwaitedPath.empty()) return true;
    const RowVec selected = mOwner.GetTree()->GetSelectedRows();
    const bool hasUserSelected = !selected.empty() && selected != mSelectedBeforeAwaited;
    const bool isThere = mOwner.GetRowFromPath(mAwaitedPath) != nullptr;
    if (hasUserSelected || isThere) mAwaitedPath.clear();
    if (hasUserSelected && !isThere) mPending.reset();
    if (hasUserSelected && mPending) mPending->mSelectedRowPaths = mOwner.GetSelectedPaths();
    return mPending && isThere;
}

void StateRestorer::Begin(StateData state, FolderOpener::Paths awaitedPaths) {
    mPending.reset();
    mRestored = std::make_unique<StateData>(std::move(state));
    mOpener.OpenFolders(
        mRestored->mOpenFolderPaths, std::move(awaitedPaths),
        [this, selectedBefore = mOwner.GetTree()->GetSelectedRows()] { Finish(selectedBefore); });
}

void StateRestorer::Finish(const RowVec& selectedBefore) {
    const std::unique_ptr<const StateData> state = std::move(mRestored);
    // The production could not be listed after all; what is to be put back since then comes before it.
    if (!mIsRootListed) {
        if (!mPending) mPending = std::make_unique<StateData>(*state);
        return;
    }
    const bool hasUserSelected = mOwner.GetTree()->GetSelectedRows() != selectedBefore;
    if (!hasUserSelected) SelectAndScrollTo(*state);
    KeepUnreached(*state);
    if (hasUserSelected) mUnreached.mSelectedRowPaths.clear();
    mGoOn();
}

void StateRestorer::SelectAndScrollTo(const StateData& state) {
    const auto tree = mOwner.GetTree();
    mOwner.SelectRowsByPaths(state.mSelectedRowPaths);
    mTopRow = mOwner.GetRowFromPath(state.mTopVisibleRowPath);
    if (!state.mTopVisibleRowPath.empty())
        tree->ScrollRowToTop(mTopRow.get());
    else if (!state.mSelectedRowPaths.empty())
        tree->ScrollRowIntoView(mOwner.GetRowFromPath(state.mSelectedRowPaths.front()).get(), false, 0, false);
}

void StateRestorer::GoOn() {
    if (MayBeginPending()) Begin(*mPending, {});
    OpenReached();
}

void StateRestorer::Stop() {
    mOpener.Stop();
    mPending.reset();
    mAwaitedPath.clear();
    mRestored.reset();
}

void StateRestorer::Clear() {
    Stop();
    mTopRow.reset();
    mIsRootListed = false;
    mUnlisted.clear();
    mUnreached = {};
}

SharedProjectsDirectoryView::StateData StateRestorer::GetCurrentState() const {
    if (mPending) return *mPending;
    if (mRestored) return *mRestored;
    StateData state;
    state.mOpenFolderPaths = mOwner.GetDeepestOpenFolderPaths();
    state.mSelectedRowPaths = mOwner.GetSelectedPaths();
    state.mTopVisibleRowPath = mOwner.GetRowPath(mOwner.GetTree()->GetTopRow().get());
    AppendMissing(state.mOpenFolderPaths, mUnreached.mOpenFolderPaths);
    AppendMissing(state.mSelectedRowPaths, mUnreached.mSelectedRowPaths);
    return state;
}

/// The user, who scrolls, lets go of it.
RowRef StateRestorer::FindTopRow() {
    if (mTopRow && mTopRow != mOwner.GetTree()->GetTopRow()) mTopRow.reset();
    return mTopRow;
}

void StateRestorer::OnDelivery(const UTF16String& path, const ContentDelivery& delivery) {
    const bool isGone = delivery.mSystemError == ENOENT || delivery.mSystemError == ENOTDIR;
    if (delivery.mSystemError != 0 && !isGone)
        mUnlisted.insert(path);
    else if (mUnlisted.erase(path) > 0)
        mMayReachMore = true;
}

void StateRestorer::OnFolderClosed(const UTF16String& path) {
    std::erase_if(mUnreached.mOpenFolderPaths,
                  [&](const UTF16String& kept) { return Utils::IsAtOrBelow(kept, path); });
}

/// True for what lies at or below a folder that the volume did not let be listed: it may be there.
bool StateRestorer::IsUnreached(UTF16String path) const {
    while (!mUnlisted.contains(path)) {
        UTF16String folder = PathUtils::RemoveTrailingSlash(PathUtils::GetFullDirectoryPart(path));
        if (folder.size() >= path.size()) return false;
        path = std::move(folder);
    }
    return true;
}

void StateRestorer::KeepUnreached(const StateData& state) {
    if (mUnlisted.empty()) return;
    const auto keep = [this](UTF16StringVec& kept, UTF16StringVec paths) {
        std::erase_if(paths, [this](const UTF16String& path) { return !IsUnreached(path); });
        AppendMissing(kept, paths);
    };
    keep(mUnreached.mOpenFolderPaths, state.mOpenFolderPaths);
    keep(mUnreached.mSelectedRowPaths, state.mSelectedRowPaths);
}

/// Opens what has been kept of folders that have been listed after all. Their rows are not selected any more.
void StateRestorer::OpenReached() {
    if (!mMayReachMore || !mOpener.IsIdle()) return;
    mMayReachMore = false;
    const auto isReached = [this](const UTF16String& path) { return !IsUnreached(path); };
    std::erase_if(mUnreached.mSelectedRowPaths, isReached);
    UTF16StringVec folders;
    std::ranges::copy_if(mUnreached.mOpenFolderPaths, std::back_inserter(folders), isReached);
    if (folders.empty()) return;
    const auto forgetAndGoOn = [this, isReached, tried = std::set(folders.begin(), folders.end())] {
        std::erase_if(mUnreached.mOpenFolderPaths,
                      [&](const UTF16String& path) { return tried.contains(path) && isReached(path); });
        mGoOn();
    };
    mOpener.OpenFolders(std::move(folders), {}, forgetAndGoOn);
}

}  // namespace HandlerSharedProjects
