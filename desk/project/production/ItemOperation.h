#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "desk/files/copy/ItemCopier.h"
#include "desk/project/production/MoveLocks.h"
#include "desk/project/production/Production.h"
#include "host/core/Export.h"
#include "host/project/ItemOperations.h"

namespace desk {

class WorkProgress;

/// Everything that moves or copies items ends here: `host::MoveItems`, `host::CopyItems`, `host::File::Move`,
/// `host::FileUtils::Copy`, `host::Utilities::CopyDirectoryTree`, and the queue of copies (`CopyQueue`). One
/// piece of long work with five steps, on batches of items:
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
        /// Of a folder, to where an empty folder stands.
        CopyOntoEmptyFolder,
        /// Of a project's file, for a link its target's.
        Add,
        /// The same; a name that is taken gets a number.
        AddUnderFreeName,
    };
    enum class Telling {
        /// What failed is listed in one message box.
        Message,
        /// The status bar tells each.
        Notices,
    };

    ItemOperation(Verb verb, Telling telling, const std::vector<host::PlannedItem>& plan);

    /// Check to announce, while the window lives. UI thread. Called once.
    std::vector<host::ItemOutcome> Run();

    /// The first two steps, for who has a worker of their own; then `Conclude` does the rest. A copy only. Any
    /// thread. Waits for the volume.
    void RunOnWorker(WorkProgress& progress);
    /// UI thread.
    std::vector<host::ItemOutcome> Conclude();
    /// Where the item was to land, or has landed. Once the work is done.
    const host::UTF16String& GetDestination(std::size_t index) const { return mItems[index].mDestination; }
    /// Why an item failed, or where its copy may stand: a sentence for the user (localised). UI thread.
    host::UTF16String DescribeFailure(std::size_t index) const;

private:
    struct Item {
        Item(const host::PlannedItem& plan, Verb verb);
        void Fail(const host::FileException& exception);
        void SetDestination(const host::UTF16String& path);
        bool IsProject() const { return mLocks && !mOutcome.mIsFolder; }
        bool IsDone() const { return mOutcome.mResult == host::ItemOutcome::Result::Done; }

        const host::UTF16String mSource;
        host::UTF16String mDestination;
        const std::string mFrom;
        std::string mTo;
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
    void CheckAll(std::span<Item> items, WorkProgress& progress);
    void TakeOver(std::span<Item> items, SharedLocks& locks, const LockRecord& owner, WorkProgress& progress);
    void Check(Item& item, SharedLocks& locks) const;
    void TakeLocks(Item& item, SharedLocks* locks) const;
    /// False when the operation ends here.
    bool Do(Item& item, WorkProgress& progress);
    void Copy(Item& item, WorkProgress& progress) const;
    static void CopyUnderFreeName(const std::string& file, Item& item, WorkProgress& progress);
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
    /// One item gets another name in its folder.
    bool IsRename() const;
    /// Why it keeps its own; empty when it does not, or nobody knows.
    host::UTF16String DescribeNotRenamed(const Item& item) const;
    host::UTF16String DescribeFailure(const Item& item) const;
    /// Empty when the user cancelled it.
    host::UTF16String DescribeNotCopied(const Item& item) const;

    bool IsCopy() const { return mVerb != Verb::Move && mVerb != Verb::MoveLocked; }
    std::uint64_t GetItemWeight() const;

    const Verb mVerb;
    const Telling mTelling;
    std::vector<Item> mItems;
    /// While a command runs that the user waits for.
    std::optional<ScPausePanelUpdates> mPaused;
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
/// Its title tells whether something else was done. Within `host::TellTogether` that waits for its end. UI
/// thread.
void TellWhatWasNotDone(ItemOperation::Verb verb, const host::UTF16StringVec& texts, bool isSomethingDone);
/// The same under a title of its own.
void TellWhatWasNotDone(const char* titleKey, const host::UTF16StringVec& texts);

}  // namespace desk
