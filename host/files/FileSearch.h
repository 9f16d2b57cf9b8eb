#pragma once

#include <functional>
#include <memory>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// A search of folders and all folders below them. The walk runs on worker threads; symbolic links
/// to folders are found but not entered.
class ZUHOST_API FileSearch {
public:
    struct Parameters {
        /// Files count only with one of these extensions (with the dot, ASCII letter case ignored).
        UTF16StringVec mExtensions;
        /// Accepts a found path. Called on worker threads, several at a time, and a few times more after
        /// the request was dropped: it owns what it uses. Must not throw.
        std::function<bool(const UTF16String& path)> mFilter;
    };

    /// Takes the search's result, sorted by path. A folder that could not be read is logged and left
    /// out. UI thread.
    using Completion = std::function<void(UTF16StringVec paths)>;

    /// A search under way; dropping it cancels the search, and the completion is then never called.
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

    /// The files below `root`, at any depth, with the extension (with its dot, ASCII letter case ignored), sorted
    /// by path. Hidden folders, the host's own files and what cannot be read are left out; symbolic links are not
    /// entered. Waits for the volume; events go on being handled when it takes long, but no command is let in.
    /// UI thread.
    static UTF16StringVec FindFiles(const UTF16String& root, const UTF16String& extension);
};

}  // namespace host
