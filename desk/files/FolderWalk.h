#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "desk/files/AnswerWatch.h"
#include "desk/files/FileSystem.h"
#include "desk/files/ReadingLane.h"
#include "host/core/Strings.h"

namespace desk {

class WorkProgress;

/// Finds the files with certain extensions, and the folders, below a root: one task for each folder, behind
/// what waits already, in a lane of its own, so that a volume that stands still never gets all workers.
/// Symbolic links to folders are found but not entered; hidden folders and the host's own files are left out.
/// UI thread, but for what its workers do inside.
class FolderWalk : public std::enable_shared_from_this<FolderWalk> {
public:
    struct Parameters {
        /// With the dot; ASCII letter case is ignored.
        host::UTF16StringVec mExtensions;
        /// Accepts what is found; empty accepts all. On workers, several at a time.
        std::function<bool(const host::UTF16String& path)> mFilter;
        /// Folders are results too, not only looked into.
        bool mFindsFolders = true;
        /// Is told of the calls to the volume; may be null.
        std::shared_ptr<AnswerWatch> mAnswerWatch;
    };
    struct UnreadableFolder {
        host::UTF16String mPath;
        /// An errno value.
        int mSystemError = 0;
    };
    struct Result {
        /// What was found, sorted.
        host::UTF16StringVec mPaths;
        /// The root and all folders that were entered, also those that could not be read; in no order.
        host::UTF16StringVec mFolders;
        /// Folders that could not be read, but for those that vanished meanwhile; the log names each. Also a
        /// root that is not there.
        std::vector<UnreadableFolder> mUnreadable;
    };
    using Completion = std::function<void(Result)>;

    /// The completion may be empty for `Run`.
    FolderWalk(Parameters parameters, Completion completion)
        : mParameters(std::move(parameters)), mCompletion(std::move(completion)) {}

    /// Begins the walk; `completion` is called later. Called once.
    void Start(const host::UTF16String& root);
    /// Walks, and returns when all is done: on this worker and on others that are free. Throws
    /// `host::FileException` (ECANCELED) when `progress` is cancelled. Called once, in place of `Start`.
    Result Run(const host::UTF16String& root, const WorkProgress& progress);
    /// From now on `completion` is not called any more; no more folders are begun.
    void Cancel();

private:
    void SubmitFolder(const host::UTF16String& path);
    void SearchFolder(const host::UTF16String& folder);
    bool ListFolder(const host::UTF16String& folder, std::vector<FolderEntry>& entries);
    void SearchEntry(const host::UTF16String& folder, const FolderEntry& entry, host::UTF16StringVec& found);
    ItemKind ResolveKind(const std::string& path, ItemKind kind) const;
    void Finish();

    const Parameters mParameters;
    Completion mCompletion;
    const std::shared_ptr<ReadingLane> mLane = std::make_shared<ReadingLane>();
    host::UTF16String mRoot;
    std::atomic<bool> mIsCancelled = false;
    std::atomic<std::size_t> mFoldersLeft = 0;
    std::mutex mMutex;
    Result mResult;
    /// In `Run`: the folders to be entered next.
    bool mIsRun = false;
    host::UTF16StringVec mNextFolders;
};

/// `name` ends with one of the extensions, ASCII letter case ignored, and has something before it. Any thread.
bool HasExtension(std::u16string_view name, const host::UTF16StringVec& extensions);

}  // namespace desk
