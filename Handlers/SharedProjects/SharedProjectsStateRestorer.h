#pragma once

#include <functional>
#include <memory>
#include <set>

#include "Handlers/SharedProjects/SharedProjectsDirectoryView.h"

namespace HandlerSharedProjects {

/// Puts a state of the directory view back as the contents of its folders come, and keeps what cannot be
/// reached of it: what lies in folders that the volume does not let be listed. UI thread.
class StateRestorer {
public:
    using StateData = SharedProjectsDirectoryView::StateData;

    /// `owner` and its `opener` outlive the restorer. `goOn` is called whenever one of its jobs has ended.
    StateRestorer(SharedProjectsDirectoryView& owner, FolderOpener& opener, std::function<void()> goOn);

    /// Puts open folders, selection and scroll position back (`UpdateFromStateData`).
    void Restore(const StateData& state, bool waitForRoot);
    /// Puts a state back when the item at `path`, which has just got that name, has a row; not once the user
    /// has selected something else.
    void RestoreWhenShown(const StateData& state, const UTF16String& path);
    /// What waited for the opener, or for content, goes on.
    void GoOn();
    /// Ends it where it is. What could not be reached stays kept.
    void Stop();
    /// Forgets everything: another production is shown from now on.
    void Clear();

    /// Folders, selection and top row as they are now, with what cannot be reached; while a state is being put
    /// back, or waits to be, that state.
    StateData GetCurrentState() const;
    /// The top row that was put back, while it is the top row: facts that come later change the order.
    RowRef FindTopRow();
    /// The user has chosen an order.
    void ForgetTopRow() { mTopRow.reset(); }

    /// A delivery for the folder at `path`, of whatever outcome.
    void OnDelivery(const UTF16String& path, const ContentDelivery& delivery);
    /// The production's folder has been listed, and its rows are there.
    void OnRootListed() { mIsRootListed = true; }
    /// The user has closed a folder: how it is left is decided.
    void OnFolderClosed(const UTF16String& path);
    void OnSelectionChanged() { mUnreached.mSelectedRowPaths.clear(); }

private:
    bool MayBeginPending();
    void Begin(StateData state, FolderOpener::Paths awaitedPaths);
    void Finish(const RowVec& selectedBefore);
    void SelectAndScrollTo(const StateData& state);
    bool IsUnreached(UTF16String path) const;
    void KeepUnreached(const StateData& state);
    void OpenReached();

    SharedProjectsDirectoryView& mOwner;
    FolderOpener& mOpener;
    const std::function<void()> mGoOn;
    /// What is to be put back when there is content and the opener is idle.
    std::unique_ptr<StateData> mPending;
    /// It waits for this item too, when not empty, while nothing or this is selected.
    UTF16String mAwaitedPath;
    RowVec mSelectedBeforeAwaited;
    /// What is being put back.
    std::unique_ptr<StateData> mRestored;
    RowRef mTopRow;
    bool mIsRootListed = false;
    /// Folders that the volume did not let be listed, for another reason than that they are gone.
    std::set<UTF16String> mUnlisted;
    /// What could not be put back because it lies in such folders; a folder until it is open or known to be
    /// gone.
    StateData mUnreached;
    /// One of them has been listed since.
    bool mMayReachMore = false;
};

}  // namespace HandlerSharedProjects
