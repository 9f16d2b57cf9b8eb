#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "host/core/FoldASCII.h"
#include "host/core/Geometry.h"
#include "host/core/Strings.h"
#include "host/project/ItemOperations.h"
#include "host/toolkit/UI_MultiColumnTree.h"

namespace HandlerSharedProjects {

using namespace host;

/// The production's background colour of rows, in the host's colour table.
inline constexpr int kRowBackgroundColorID = 277;

/// What both trees and the panel's commands share: usage events, questions about paths, operations on the
/// production's files, page moves. UI thread.
namespace Utils {

/// The state of the panel's view that goes with a view-property event.
struct ViewPropertyLoggingData {
    /// In view units.
    float mRowHeight = 0;
    /// Display positions of the metadata columns by their keys; negative for a column that is not there.
    std::map<std::string_view, int> mColumnIndices;
};

/// Records a usage event under the production's category; nothing while usage is not recorded.
void LogUsage(const char* category, const char* action);

/// Records that the user has changed a property of the view ("Zoom", "ColumnOrder").
void LogViewPropertyUsage(const char* property, const ViewPropertyLoggingData& data);

/// True for a project that is open read-only and whose file on disk is newer than what was read.
bool IsRefreshable(const UTF16String& path);

/// True when somebody else than the local user has the project locked. A lock whose holder is known to be gone
/// does not count; one whose holder has not been told yet does. For projects of listed folders it does not wait
/// for the volume.
bool IsALockedProject(const UTF16String& path);

/// Why nobody here may change the item now, as far as is known: a sentence for the user; empty when one may. A
/// project is held that somebody else has locked, and a folder that is known to hold one. For items of listed
/// folders it does not wait for the volume.
UTF16String DescribeWhyHeld(const UTF16String& path);

/// Why the item cannot be moved here from where it is: a sentence for the user about one that does not lie in
/// the open production; empty for one that does.
UTF16String DescribeWhyForeign(const UTF16String& path);

// Moving, copying, trashing. All may wait for the volume and for the user; events go on being handled
// meanwhile.

/// Moves a project, taking its lock at `destination` before the file moves; an open project goes on there.
/// False, with nothing moved, when either path is no project's, when a lock cannot be had, or when the project
/// is held by somebody else: the user is told, and the trace says which. Throws `FileException` when the disk
/// refuses; then the project stands where it was, and all locks are as they were.
bool MoveProjectAndLockFiles(const UTF16String& source, const UTF16String& destination);

/// Traces why a project was not moved; nothing for one that was, nor for what the disk refused.
void TraceOutcome(const ItemOutcome& outcome, const UTF16String& source, const UTF16String& destination);

/// Tells the projects that are open for writing and lay inside `oldFolder` that the folder is now `newFolder`,
/// and gives each a lock at its new place. Every occurrence of the old folder's text in a project's path is
/// replaced. A project that is not found at its new path keeps the old one.
void UpdatePathsOfOpenProjectsAndLockFiles(const UTF16String& oldFolder, const UTF16String& newFolder);

/// Copies, or with `move` moves, files and folders into `destinationFolder`. All are checked first, and one
/// that cannot go refuses them all, each such item with a message: a folder into itself, or a name that is
/// taken. With `makeUniqueNames` a taken name is exchanged for a free one instead ("x_1"). An item that lies
/// there already is passed over. They then go in the order of their paths, as one piece of long work
/// (`MoveItems`, `CopyItems`). When the disk refuses one, those before it stay done and the rest untouched.
/// False when the check or the disk refused, or when the user cancelled; a project that could not be locked
/// just stays.
bool CopyFiles(const UTF16StringVec& sources, const UTF16String& destinationFolder, bool move,
               bool makeUniqueNames);

/// What has become of items that were to be copied or moved.
struct CopyReport {
    /// The sources that are known to stand as they did.
    UTF16StringVec mStayed;
    /// Those that were copied or moved, with their new places.
    std::vector<PlannedItem> mDone;
    /// The user has ended it before its end.
    bool mIsCancelled = false;
};

/// The same; `report` becomes what has come of it.
bool CopyFiles(const UTF16StringVec& sources, const UTF16String& destinationFolder, bool move,
               bool makeUniqueNames, CopyReport& report);

/// Says in the status bar what was moved into `folder`, and when that was cancelled how much has stayed;
/// nothing of no items.
void TellMoved(const CopyReport& report, const UTF16String& folder);

/// Moves items to the production's trash, which is made when there is none; names that are taken there get free
/// ones. Projects among and inside them that are open are closed first (see `CloseOpenProjectsInList`, which
/// gets the two flags); when that says false, nothing is moved.
void MoveToSharedProjectsTrash(const UTF16StringVec& paths, bool closeWithoutPrompt, bool saveFirst);

/// True when all of `paths`, at least one, may go to the trash: none is there already, none is a project that
/// somebody else has locked nor a folder that is known to hold one. Of folders that no view has listed nothing
/// is known. For items of listed folders it does not wait for the volume.
bool CanAllBeDeleted(const UTF16StringVec& paths);
/// Why not all of `paths` may go there: a sentence for the user about the first that may not; empty when all
/// may.
UTF16String DescribeWhyNotDeleted(const UTF16StringVec& paths);

/// True for `folder` itself and what lies in it at any depth; both normalised. Touches no disk.
bool IsAtOrBelow(const UTF16String& path, const UTF16String& folder);

/// True for a path inside the production's trash; with `includeTrashFolder` for the trash folder too.
bool IsInTrash(const UTF16String& path, bool includeTrashFolder);

// Names that users give.

/// Why an item may not get another name: as `DescribeWhyHeld`, and the trash folder keeps its name.
UTF16String DescribeWhyNotRenamed(const UTF16String& path);

/// `name` without the blanks around it: slips of the keyboard, which could not be seen.
UTF16String TrimBlanks(const UTF16String& name);

/// `name` with the extension of projects, unless it has that in any letter case.
UTF16String AddProjectExtension(const UTF16String& name);

/// Tells the user which characters a name in `folder` cannot hold (after the localised text), and why `name` is
/// not valid there.
void TellInvalidName(const char* titleKey, const char* textKey, const UTF16String& name,
                     const UTF16String& folder);

/// Tells the user of a name that begins with a dot that it does not show; nothing for another.
void TellHiddenName(const char* titleKey, const char* textKey, const UTF16String& name);

// Projects.

/// Copies projects from outside into `destinationFolder`, once the user has agreed, and brings the progress
/// panel forward. When the first of them is in the production already, the user is told so and nothing happens.
/// Returns at once, with the paths at which the copies are expected to land; a name that is taken meanwhile
/// gets another. May wait for the volume and for the user.
UTF16StringVec AddProjectsToZuProductionWithPrompt(const UTF16StringVec& paths,
                                                   const UTF16String& destinationFolder);

/// Opens the project at `path` with the host's questions; of one in the trash the status bar says that nothing
/// is opened from there. May wait for the volume
/// and for the user.
void OpenProjectOutsideTrash(const UTF16String& path);

/// Closes the projects that are open among `paths` and, at any depth, in the folders among them. The user is
/// asked about unsaved changes unless `closeWithoutPrompt` is set; then they are saved with `saveFirst`, else
/// dropped. When several have some, the questions offer one answer for all. False when one stays open: those
/// before it are closed then, the others not. False with nothing closed when the user cancelled looking into a
/// folder. May wait for the volume and for the user.
bool CloseOpenProjectsInList(const UTF16StringVec& paths, bool closeWithoutPrompt, bool saveFirst);
/// The same for all open projects but those.
bool CloseOpenProjectsNotInList(const UTF16StringVec& paths, bool closeWithoutPrompt, bool saveFirst);

/// The bits of a path-type mask.
inline constexpr int kPathTypeFile = 1;
inline constexpr int kPathTypeFolder = 2;
inline constexpr int kPathTypeTrashFolder = 4;
inline constexpr int kPathTypeInTrash = 8;

/// The kinds of the paths, as a mask of the bits above; 0 for no paths. For paths that no listed folder
/// holds it may wait for the volume.
int GetPathTypes(UTF16StringVec paths);

/// A framework rectangle in the toolkit's numbers.
inline RectT<float> ToToolkitRect(const Rect& rect) {
    return {static_cast<float>(rect.x), static_cast<float>(rect.y), static_cast<float>(rect.width),
            static_cast<float>(rect.height)};
}

/// The rows but those inside the folder of another of them, in the same order.
RowVec GetNonRedundantRows(const RowVec& rows);

using TreeRef = RefPtr<UI_MultiColumnTree>;

/// Select the first or the last opened row and scroll it into view.
void MoveHome(const TreeRef& tree);
void MoveEnd(const TreeRef& tree);

/// Select the first (last) visible row; when just that one is selected, the row a page before (after) it.
void MovePageUp(const TreeRef& tree);
void MovePageDown(const TreeRef& tree);

/// A callback that runs `member` of `view` as long as `lifetime` lives. Queued work keeps trees alive longer
/// than their views; a callback that comes after the view's end answers a default value.
template <class View, class Result, class... Arguments>
SharedFunction<Result(Arguments...)> BindCallback(View* view, Result (View::*member)(Arguments...),
                                                  std::weak_ptr<const void> lifetime) {
    return std::make_shared<std::function<Result(Arguments...)>>(
        [view, member, lifetime = std::move(lifetime)](Arguments... arguments) -> Result {
            if (lifetime.expired()) return Result();
            return (view->*member)(arguments...);
        });
}

}  // namespace Utils
}  // namespace HandlerSharedProjects
