#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/files/FileException.h"

namespace host {

/// A file or folder, and the path that it, or its copy, is to get.
struct PlannedItem {
    UTF16String mSource;
    UTF16String mDestination;
};

/// What has come of a planned item.
struct ItemOutcome {
    enum class Result {
        Done,
        /// A project's lock could not be taken at its old place, or at its new one. Nothing was moved.
        NoSourceLock,
        NoDestinationLock,
        /// Nothing was moved: the source is not there any more, or is a project that somebody else holds.
        Refused,
        /// `mFailure` says why. Nothing was moved or copied.
        Failed,
        /// The volume does not tell whether it was done, for the reason `mFailure`: the item stands at its old
        /// place, at its new one, or at both.
        InDoubt,
        /// The operation had ended before its turn came. Nothing was touched.
        NotReached,
    };
    Result mResult = Result::NotReached;
    /// The source is a project whose lock was held, by this process or by another, when its turn came.
    bool mWasHeld = false;
    bool mIsFolder = false;
    /// Set when `Failed` (what the disk has refused, or ECANCELED) or `InDoubt`.
    std::shared_ptr<const FileException> mFailure;

    /// True when the source stands as it did.
    bool HasStayed() const { return mResult != Result::Done && mResult != Result::InDoubt; }
};

/// True when moves out of the folders of `sources`, and into `folder`, can begin: permissions and volumes allow
/// changes, as far as they tell. Else the user is told in one message what would not move, and why. For who is
/// about to do something for a move that could not be taken back. Throws `FileException` (ECANCELED) when the
/// user does not want to wait for the volume. UI thread.
ZUHOST_API bool CanMoveItemsTo(const UTF16StringVec& sources, const UTF16String& folder);

/// Tells the user in one message what was not moved: `sentences` are one for each item. UI thread.
ZUHOST_API void TellNotMoved(const UTF16StringVec& sentences);

/// Runs `work`; all that moves and copies, `CanMoveItemsTo` and `TellNotMoved` have to tell meanwhile is told
/// in one message at the end. What `work` throws is thrown here. UI thread.
ZUHOST_API void TellTogether(const std::function<void()>& work);

/// Moves items, in the order of the plan, as one piece of long work: the window lives, and after half a second
/// a dialog shows the names and offers to cancel. Each item stands whole at one of its two places, and nothing
/// is ever replaced (see `File::Move`).
///
/// - A project moves with its lock: the lock is taken at the source, if nobody holds it, and then at the
///   destination, before the file moves. Open projects go on at their new places with their locks.
/// - A project that cannot be locked stays, and the rest goes on. The first item that the disk refuses ends the
///   operation, and so does a cancel: those before it stay done, the rest stays untouched.
/// - What moves to the production's trash is recorded there.
/// - The user is told in one message what was not done, and why; nothing of what they cancelled.
///
/// Returns one outcome for each item of the plan. May wait for the volume. UI thread.
ZUHOST_API std::vector<ItemOutcome> MoveItems(const std::vector<PlannedItem>& plan);

/// Copies items, in the order of the plan, as `MoveItems` moves them; each copy as by `FileUtils::Copy`.
ZUHOST_API std::vector<ItemOutcome> CopyItems(const std::vector<PlannedItem>& plan);

}  // namespace host
