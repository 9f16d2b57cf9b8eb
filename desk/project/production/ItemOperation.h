#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "desk/files/copy/ItemCopier.h"
#include "desk/project/production/MoveLocks.h"
#include "host/core/Export.h"
#include "host/project/ItemOperations.h"

namespace desk {

class WorkProgress;

/// Everything that moves or copies items ends here: `host::MoveItems`, `host::CopyItems`, `host::File::Move`
/// and `host::FileUtils::Copy`. One piece of long work with five steps, on batches of items:
///
/// 1. check: what stands at the source, and the locks of projects (`MoveLocks`); many items at a time;
/// 2. do: on the disk, item by item in their order; the folders are flushed once for the batch;
/// 3. follow: locks in moved folders, and open projects (`ItemOperation_Follow.cpp`); on the UI thread;
/// 4. record: the trash's record, one for the batch; the locks are given up, many at a time;
/// 5. announce: the folders that do not report changes, the log, what the user is told
///    (`ItemOperation_Announce.cpp`); on the UI thread.
///
/// Nothing is followed, recorded or told before its folders have been flushed.
class ItemOperation : public std::enable_shared_from_this<ItemOperation> {
public:
    enum class Verb {
        Move,
        /// Of a project the caller holds the locks; the operation only makes sure that nobody else does.
        MoveLocked,
        Copy,
    };
    enum class Telling {
        /// What failed is listed in one message box.
        Message,
        /// The status bar tells each.
        Notices,
    };

    ItemOperation(Verb verb, Telling telling, const std::vector<host::PlannedItem>& plan);

    /// UI thread. Called once.
    std::vector<host::ItemOutcome> Run();

private:
    struct Item {
        Item(const host::PlannedItem& plan, Verb verb);
        void Fail(const host::FileException& exception);
        bool IsProject() const { return mLocks && !mOutcome.mIsFolder; }
        bool IsDone() const { return mOutcome.mResult == host::ItemOutcome::Result::Done; }

        const host::UTF16String mSource;
        const host::UTF16String mDestination;
        const std::string mFrom;
        const std::string mTo;
        /// Of what is called like a project, which a folder can be; absent for the rest.
        std::unique_ptr<MoveLocks> mLocks;
        MoveLocks::Taking mLocking = MoveLocks::Taking::Taken;
        bool mIsThere = true;
        LeftBehind mLeftBehind;
        /// Where locks of this process stood that came along with a folder.
        std::vector<LockRemains> mLocksBefore;
        host::ItemOutcome mOutcome;
    };

    // On a worker.
    void Work(WorkProgress& progress);
    bool CheckTrash();
    std::size_t FindBatchEnd(std::size_t begin) const;
    bool DoBatch(std::span<Item> items, WorkProgress& progress);
    void CheckAll(std::span<Item> items, const WorkProgress& progress);
    void Check(Item& item, const SharedLocks& locks) const;
    /// False when the operation ends here.
    bool Do(Item& item, WorkProgress& progress);
    void Refuse(Item& item) const;
    void FlushFolders(std::span<Item> items) const;
    void LookUp(std::span<const Item> items) const;
    void Record(std::span<const Item> items) const;
    void Finish(Item& item) const;

    // On the UI thread.
    host::UTF16String MakeTitle() const;
    void AskToFollow();
    void Follow();
    void FollowItem(Item& item);
    void TryOwnLocksAgain();
    void GiveUpLeftLocks();
    void LookAgain() const;
    void Announce() const;
    host::UTF16String DescribeOutcome(const Item& item) const;

    const Verb mVerb;
    const Telling mTelling;
    std::vector<Item> mItems;
    /// Empty when nothing moves to the trash.
    std::string mTrashFolder;
    std::string mProductionFolder;
    /// Hidden files of a worker.
    std::vector<LockRemains> mRemains;
    /// Neither a cancel nor a failure ended the work before.
    bool mIsEndReached = false;
    /// So many items have been flushed, and so many have been followed.
    std::atomic<std::size_t> mFlushed = 0;
    std::size_t mFollowed = 0;
};

/// That the project `name` was not moved, because of the holder of its lock: a sentence for the user
/// (localised). UI thread.
host::UTF16String DescribeHolder(const host::UTF16String& name, const LockRecord& holder);

/// Shows one message with `texts`, one sentence for each item, and writes them to the log; nothing without any.
/// Within `host::TellTogether` that waits for its end. UI thread.
void TellWhatWasNotDone(ItemOperation::Verb verb, const host::UTF16StringVec& texts);

}  // namespace desk
