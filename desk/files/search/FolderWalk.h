#pragma once

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "desk/core/edges/FileSystem.h"
#include "desk/files/live/AnswerWatch.h"
#include "desk/files/live/ReadingLane.h"
#include "host/core/Strings.h"

namespace desk {

class WorkProgress;

/// Lists folders and all folders below them: one task for each folder, behind what waits already, in a lane of
/// its own, so that a volume that stands still never gets all workers. What comes first is entered first, but
/// the folders that stand in one folder take turns with those of others: many volumes look up the names of one
/// folder one after another. Symbolic links to folders are not entered; hidden folders and the host's own files
/// are left out. UI thread, but for what its workers do inside.
class FolderWalk : public std::enable_shared_from_this<FolderWalk> {
public:
    struct Parameters {
        /// Takes a folder's entries: files, folders, and links, which are not looked behind. On workers,
        /// several at a time.
        std::function<void(const host::UTF16String& folder, const std::vector<FolderEntry>& entries)> mVisitor;
        /// When set, says of a folder that was come upon whether it is entered. On workers, several at a time.
        std::function<bool(const host::UTF16String& folder)> mIsEntered;
        /// Lock files are among a folder's entries too.
        bool mHasLockFiles = false;
        /// Is told of the calls to the volume; may be null.
        std::shared_ptr<AnswerWatch> mAnswerWatch;
        /// The one folder whose absence is no matter of course (normalised).
        host::UTF16String mRoot;
    };
    struct UnreadableFolder {
        host::UTF16String mPath;
        /// An errno value.
        int mSystemError = 0;
    };
    /// The folders that could not be read; the log names each. Folders that are not there (ENOENT) have
    /// vanished meanwhile, of which the log says nothing, but for the root.
    using Result = std::vector<UnreadableFolder>;
    using Completion = std::function<void(Result)>;

    /// The completion may be empty for `Run`.
    FolderWalk(Parameters parameters, Completion completion)
        : mParameters(std::move(parameters)), mCompletion(std::move(completion)) {}

    /// Begins the walk at `folders` (normalised); `completion` is called later. Called once.
    void Start(const host::UTF16StringVec& folders);
    /// Walks from the root, and returns when all is done: on this worker and on others that are free. Throws
    /// `host::FileException` (ECANCELED) when `progress` is cancelled. Called once, in place of `Start`.
    Result Run(const WorkProgress& progress);
    /// From now on `completion` is not called any more; no more folders are begun.
    void Cancel();

private:
    void SubmitFolders(host::UTF16StringVec siblings);
    host::UTF16String TakeNext();
    void EnterFolder(const host::UTF16String& folder);
    bool ListFolder(const host::UTF16String& folder, std::vector<FolderEntry>& entries);
    bool TakeEntry(const host::UTF16String& folder, FolderEntry& entry, host::UTF16StringVec& below);
    void Finish();

    const Parameters mParameters;
    Completion mCompletion;
    const std::shared_ptr<ReadingLane> mLane = std::make_shared<ReadingLane>();
    std::atomic<bool> mIsCancelled = false;
    std::atomic<std::size_t> mFoldersLeft = 0;
    std::mutex mMutex;
    Result mResult;
    bool mIsRun = false;
    /// The folders to be entered; none of the lists is empty.
    std::deque<host::UTF16StringVec> mWaiting;
};

/// What stands at `path` where a folder's entry alone does not tell: behind a link, or of unknown kind; `Other`
/// for what cannot be read. Waits for the volume; any thread.
ItemKind ResolveKind(const std::string& path, ItemKind kind);

}  // namespace desk
