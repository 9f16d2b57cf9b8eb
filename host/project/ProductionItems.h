#pragma once

#include <functional>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// Copies the projects at `paths` into the folder `folder` of the open production. Returns at once: the copies
/// are made one after another by workers, show in the progress panel (`kProgressHandlerID`) and can be
/// cancelled there; closing the production or the program cancels them. A name that is taken gets a free one
/// (`Utilities::MakeUniqueFilename(path, 1, "_", {})`); of a symbolic link its target is copied. A project that
/// stands in `folder` or below it already is not copied: it is a project of the production as it is. What fails
/// (also what is no project file, and a name too long to be locked) is shown in the progress panel, told and
/// logged, and does not keep the others. UI thread.
ZUHOST_API void AddProjectsToZuProduction(const UTF16StringVec& paths, const UTF16String& folder);

/// The same for one project, which lands at `destination`; if that is taken meanwhile, nothing is replaced and
/// the copy fails. Of a project that is open here what is on disk is copied. UI thread.
ZUHOST_API void AddProjectToZuProduction(const UTF16String& path, const UTF16String& destination);

/// Where a copy of the project or folder at `path` is to stand: beside it, as "x copy.zuproj", or when that
/// name is taken "x copy 2.zuproj", "x copy 3.zuproj" and so on; folders alike without extension. A copy of a
/// copy counts on: of "x copy 2.zuproj" it is "x copy 3.zuproj". The word is in the user's language. A name is
/// taken when something stands there on disk (links are not followed), when a copy that has been asked for is
/// to land there, or when it is in `existingNames` (names, not paths; compared exactly). A name that would grow
/// too long is shortened, as by `Utilities::MakeUniqueFilename`, and waits likewise. UI thread.
ZUHOST_API UTF16String GetZuProductionItemCopyPath(const UTF16String& path,
                                                   const UTF16StringVec& existingNames);

/// The same for each of `paths`, which get different places: by one listing of each folder, while the window
/// lives. Throws `FileException` (ECANCELED) when the user does not want to wait for the volume. UI thread.
ZUHOST_API UTF16StringVec GetZuProductionItemCopyPaths(const UTF16StringVec& paths);

/// True when `folder` is known to hold a project whose lock is held by somebody else than the local user (stale
/// locks do not count, those that cannot be read or have not been read yet do; the latter are then asked for in
/// the background); with `recursive` in the folders below it too (symbolic links are not followed), with
/// `onlyOthers` false a lock of the local user counts as well. Answered from what the host knows of listed
/// folders: a folder that no view has listed holds nothing that is known, and `File::Move` itself looks before
/// it moves a project. Never waits for the volume. UI thread.
ZUHOST_API bool DoesDirectoryContainLockedProjects(const UTF16String& folder, bool recursive, bool onlyOthers);

/// The path of such a project, one that is known to be locked before one whose lock has not been read yet;
/// empty when there is none. UI thread.
ZUHOST_API UTF16String FindLockedProjectInDirectory(const UTF16String& folder, bool recursive, bool onlyOthers);

/// Why items must not move: for each of `items` a sentence for the user, empty when nothing keeps it. An item
/// stays that is in the trash, a project that somebody else has locked (stale locks do not count, those that
/// cannot be read do), and a folder that holds such a project at any depth (neither can be told of a folder
/// that cannot be listed, so that one counts). Folders are looked through on the volume: one listing for each,
/// and the lock files in it; symbolic links are not followed, and a folder that is not there holds nothing. The
/// window lives meanwhile; after half a second a dialog offers to cancel it, which throws `FileException`
/// (ECANCELED) at once, also when the volume does not answer. UI thread.
ZUHOST_API UTF16StringVec FindReasonsToStay(const UTF16StringVec& items);

namespace Utilities {

/// True when the normalised `path` lies inside the normalised `folder`, at any depth; with `orIsFolder` also
/// when it is the folder. Judges the texts only. Any thread.
ZUHOST_API bool IsPathWithinDirectory(const UTF16String& path, const UTF16String& folder, bool orIsFolder);

/// A free path made from `path`: the name with `separator` and the first number from `startNumber` on that
/// makes it free, before the project extension ("x.zuproj" becomes "x_1.zuproj", a folder "x" becomes "x_1"; a
/// path with a separator at its end is a folder's, whatever its name). A
/// name is taken when it is in `namesToAvoid` (compared exactly), or when something stands there on disk (links
/// are not followed), as the volume itself sees letter case. On a volume that fails or does not answer for five
/// seconds every name counts as free: whatever is made there replaces nothing. A name that would grow beyond
/// what can be locked (projects: 249 bytes) or named (255 bytes) is shortened before the separator, at whole
/// characters. Waits for the volume so long at most. UI thread.
ZUHOST_API UTF16String MakeUniqueFilename(const UTF16String& path, int startNumber,
                                          const UTF16String& separator, const UTF16StringVec& namesToAvoid);

/// The same for each of `paths`, which get different names: by one listing of each folder, while the window
/// lives. Throws `FileException` (ECANCELED) when the user does not want to wait for the volume. UI thread.
ZUHOST_API UTF16StringVec MakeUniqueFilenames(const UTF16StringVec& paths, int startNumber,
                                              const UTF16String& separator);

/// Copies what is in the folder `from` into the folder `to`, which exists and is empty, and gives `to` the
/// times and permissions of `from`; otherwise as `FileUtils::Copy` of folders. `to` stays empty until the copy
/// is complete, and gets it in one step. A failure removes what was copied, and the folder `to` with it, unless
/// the volume does not tell whether the copy stands there. Throws with ENOTEMPTY, and changes nothing, when
/// something is in `to`.
ZUHOST_API void CopyDirectoryTree(const UTF16String& from, const UTF16String& to);

}  // namespace Utilities

namespace Scripting {

/// Installs the function by which scripts and the host move items of the production to its trash, as for an
/// open project from the menu of its tab; an empty function takes it away. The host calls it on the UI thread
/// only, with absolute paths. It asks what there is to ask and tells what failed; the items that may not move
/// stay. UI thread.
ZUHOST_API void SetTryToMoveToSharedProjectsTrashFn(std::function<void(const UTF16StringVec& paths)> fn);

}  // namespace Scripting

}  // namespace host
