#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <set>

#include "host/files/FileSearch.h"
#include "host/toolkit/UI_MultiColumnTree.h"

namespace HandlerSharedProjects {

using namespace host;

class SharedProjectsDirectoryView;

/// Opens many folders of the directory view one after another, as their contents come: to put a saved view
/// back, or to open a folder with all below it. One job at a time; the tree shows meanwhile that it is busy. UI
/// thread.
class FolderOpener {
public:
    enum class State : std::uint32_t {
        Idle = 0,
        /// For the search for folders, or for content that must be there before the first folder is opened.
        Waiting = 1,
        Expanding = 2,
        /// All folders are open; some of their contents are to come.
        WaitingForLastContents = 3,
    };
    using Paths = std::set<UTF16String>;
    using Completion = std::function<void()>;

    /// `owner` outlives the opener.
    explicit FolderOpener(SharedProjectsDirectoryView& owner);
    ~FolderOpener();

    State GetState() const { return mState; }
    bool IsIdle() const { return mState == State::Idle; }

    /// Opens `folders`, the last one first, with those above them, as soon as the contents of `awaitedPaths`,
    /// which have been asked for, have come; when all contents are there, calls `completion` (may be empty)
    /// once: the opener is idle by then, and it may begin the next job. Folders that are not there are passed
    /// over. Nothing happens while another job runs.
    void OpenFolders(UTF16StringVec folders, Paths awaitedPaths, Completion completion);
    /// Likewise all folders below `directory`; the host finds them in the background.
    void OpenAllFoldersInDirectory(const UTF16String& directory, Paths awaitedPaths, Completion completion);
    /// Ends the job where it is; its completion is not called.
    void Stop();
    /// A folder and those below it are not to be opened any more.
    void LeaveOut(const UTF16String& folder);

    /// A delivery for the folder at `path` has come, whatever it told, and the rows are as it says; with
    /// `isLast` it was the last one that answers a request.
    void OnContentUpdated(const UTF16String& path, bool isLast);
    /// The folder has gone: its content will not come. `OnContentUpdated` follows, for the folder that held it.
    void OnFolderRemoved(const UTF16String& path);

private:
    bool Begin(Paths&& awaitedPaths, Completion&& completion);
    void Finish();
    void Leave();
    void StartExpanding();
    void RequestNextExpansion();
    void OnExpansionComplete(const RowRef& row);

    SharedProjectsDirectoryView& mOwner;
    /// Taken from the back.
    UTF16StringVec mFoldersToOpen;
    /// What the search may still find, and is not to be opened.
    UTF16StringVec mLeftOut;
    /// Folders whose contents must come before the job goes on.
    Paths mAwaitedContent;
    State mState = State::Idle;
    Completion mCompletion;
    /// Null unless it is under way.
    std::unique_ptr<FileSearch::Request> mSearch;
};

}  // namespace HandlerSharedProjects
