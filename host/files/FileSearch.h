#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// A search of folders and all folders below them, on worker threads; symbolic links to folders are found but
/// not entered. What is found is told by its path: that of a folder that is called like a project has a
/// separator at its end.
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
        /// What the names of the items that are found contain (`IsMatch`).
        UTF16String mText;
        /// When set, and `root` lies below a folder that `DirectoryChangeMonitor` monitors, the search goes on
        /// after its completion for as long as the request lives: the folders are listed in the background,
        /// those with hits first, and then watched or polled; from the beginning of the search on `File` and
        /// `ReadProjectLockFile` answer for what it finds without waiting for the volume. Told here, at once
        /// and then in batches, is what changes; never before the completion. Of very many folders some are
        /// followed only when the facts of one of their items have been asked for; these are read again at
        /// each search. UI thread.
        std::function<void(const Changes& changes)> mChanged;
    };

    /// A folder that could not be read, and why (an errno value).
    struct UnreadableFolder {
        UTF16String mPath;
        int mSystemError = 0;
    };

    struct Result {
        /// What was found, the items of one folder together.
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

    /// Finds the projects and folders below `root` whose names match. Returns at once and never waits for the
    /// volume; `completion` is called later unless the request is dropped. The volume is asked only for the
    /// folders whose names are not known yet: those of folders that a view has listed are, and those that a
    /// search with `mChanged` has looked through, for as long as one lives. Hidden folders and the host's own
    /// files are left out. UI thread.
    [[nodiscard]] static std::unique_ptr<Request> FindFilesOrDirectories(const UTF16String& root,
                                                                         Parameters parameters,
                                                                         Completion completion);

    /// True when the displayed name of the item at `path` (a project's is without its extension; what has a
    /// separator at the end of its path is none) contains
    /// `text`, the case of the letters A to Z ignored; all else must be the same. Any thread.
    static bool IsMatch(const UTF16String& path, const UTF16String& text);

    /// Takes the folders that were found, sorted.
    using LeafCompletion = std::function<void(UTF16StringVec folders)>;

    /// Finds the folders below `root`, at any depth, that hold no folder. Hidden folders and the host's own are
    /// left out, and symbolic links are not entered; a folder that cannot be read counts as holding none.
    /// Returns at once and never waits for the volume; `completion` is called later unless the request is
    /// dropped. UI thread.
    [[nodiscard]] static std::unique_ptr<Request> FindLeafFolders(const UTF16String& root,
                                                                  LeafCompletion completion);

    /// The files below `root`, at any depth, with the extension (with its dot, ASCII letter case ignored),
    /// sorted by path. Hidden folders, the host's own files and what cannot be read are left out; symbolic
    /// links are not entered. Throws `FileException` (ECANCELED) when the user cancelled. Waits for the volume;
    /// events go on being handled when it takes long, but no command is let in. UI thread.
    static UTF16StringVec FindFiles(const UTF16String& root, const UTF16String& extension);
};

}  // namespace host
