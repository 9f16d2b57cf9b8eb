#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// A search of folders and all folders below them. The walk runs on worker threads; symbolic links
/// to folders are found but not entered.
class ZUHOST_API FileSearch {
public:
    /// What has changed since a search was completed.
    struct Changes {
        /// Items that the search accepts and that are new, or whose facts (dates, size, lock) have come or
        /// changed.
        UTF16StringVec mPaths;
        /// Items that are gone, with all that was below them, whether the search accepts them or not; to be
        /// dealt with before `mPaths`.
        UTF16StringVec mRemovedPaths;
    };

    struct Parameters {
        /// Files count only with one of these extensions (with the dot, ASCII letter case ignored).
        UTF16StringVec mExtensions;
        /// Accepts a found path. Called on any thread, on several at a time, and a few times more after
        /// the request was dropped: it owns what it uses. Must not throw.
        std::function<bool(const UTF16String& path)> mFilter;
        /// When set, and `root` lies below a folder that `DirectoryChangeMonitor` monitors, the search goes on
        /// after its completion for as long as the request lives: the folders are listed in the background,
        /// those with hits first, and then watched or polled; from the beginning of the search on `File` and
        /// `ReadProjectLockFile` answer for what it finds without waiting for the volume. Told here, at once
        /// and then in batches, is what changes; never before the completion. Of very many folders some are
        /// followed only when the facts of one of their items have been asked for. UI thread.
        std::function<void(const Changes& changes)> mChanged;
    };

    /// A folder that could not be read, and why (an errno value).
    struct UnreadableFolder {
        UTF16String mPath;
        int mSystemError = 0;
    };

    struct Result {
        /// What was found, sorted.
        UTF16StringVec mPaths;
        /// Folders whose items are missing; the log names each with the reason. The root stands here when
        /// nothing could be searched at all: an empty result then says nothing.
        std::vector<UnreadableFolder> mUnreadable;
    };

    /// Takes the search's result. Called once; a search with `mChanged` whose root could not be read calls it
    /// again when it can be. UI thread.
    using Completion = std::function<void(Result result)>;

    /// A search; dropping it cancels it, and nothing is called any more.
    class ZUHOST_API Request {
    public:
        virtual ~Request();
    };

    /// Finds the files with one of the extensions, and the folders, below `root` that the filter
    /// accepts. Returns at once and never waits for the volume; `completion` is called later unless the
    /// request is dropped. Hidden folders and the host's own files are left out. UI thread.
    [[nodiscard]] static std::unique_ptr<Request> FindFilesOrDirectories(const UTF16String& root,
                                                                         Parameters parameters,
                                                                         Completion completion);

    /// The files below `root`, at any depth, with the extension (with its dot, ASCII letter case ignored),
    /// sorted by path. Hidden folders, the host's own files and what cannot be read are left out; symbolic
    /// links are not entered. Throws `FileException` (ECANCELED) when the user cancelled. Waits for the volume;
    /// events go on being handled when it takes long, but no command is let in. UI thread.
    static UTF16StringVec FindFiles(const UTF16String& root, const UTF16String& extension);
};

}  // namespace host
