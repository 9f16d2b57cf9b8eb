#pragma once

#include <functional>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// Copies the projects at `paths` into the folder `folder` of the open production. Returns at once: the copies
/// are made one after another by workers, show in the progress panel (`kProgressHandlerID`) and can be cancelled
/// there. A name that is taken gets a free one (`Utilities::MakeUniqueFilename(path, 1, "_", {})`). A project that
/// stands in `folder` or below it already is not copied: it is a project of the production as it is. What fails
/// is shown in the progress panel, told and logged, and does not keep the others. UI thread.
ZUHOST_API void AddProjectsToZuProduction(const UTF16StringVec& paths, const UTF16String& folder);

/// The same for one project, which lands at `destination`; if that is taken meanwhile, nothing is replaced and
/// the copy fails. Of a project that is open here what is on disk is copied. UI thread.
ZUHOST_API void AddProjectToZuProduction(const UTF16String& path, const UTF16String& destination);

/// Where a copy of the project or folder at `path` is to stand: beside it, as "x copy.zuproj", or when that
/// name is taken "x copy 2.zuproj", "x copy 3.zuproj" and so on; folders alike without extension. A name is
/// taken when it exists on disk or is in `existingNames` (names, not paths; compared exactly). May wait for the
/// volume. UI thread.
ZUHOST_API UTF16String GetZuProductionItemCopyPath(const UTF16String& path, const UTF16StringVec& existingNames);

/// True when `folder` holds a project whose lock is held by somebody else than the local user (stale locks do
/// not count, those that cannot be read do); with `recursive` in the folders below it too (symbolic links are
/// not followed), with `onlyOthers` false a lock of the local user counts as well. Answered from what the host
/// knows of listed folders; where it knows nothing it asks the disk and may wait for the volume. False for what
/// cannot be read. UI thread.
ZUHOST_API bool DoesDirectoryContainLockedProjects(const UTF16String& folder, bool recursive, bool onlyOthers);

namespace Utilities {

/// True when the normalised `path` lies inside the normalised `folder`, at any depth; with `orIsFolder` also
/// when it is the folder. Judges the texts only. Any thread.
ZUHOST_API bool IsPathWithinDirectory(const UTF16String& path, const UTF16String& folder, bool orIsFolder);

/// A free path made from `path`: the name with `separator` and the first number from `startNumber` on that makes
/// it free, before the project extension ("x.zuproj" becomes "x_1.zuproj", a folder "x" becomes "x_1"). Names in
/// `namesToAvoid` count as taken. A name that would grow beyond 255 bytes is shortened. May wait for the volume.
/// UI thread.
ZUHOST_API UTF16String MakeUniqueFilename(const UTF16String& path, int startNumber, const UTF16String& separator,
                                          const UTF16StringVec& namesToAvoid);

/// Copies what is in the folder `from` into the folder `to`, which exists; otherwise as `FileUtils::Copy` of
/// folders. A failure removes what was copied, and `to` stays empty.
ZUHOST_API void CopyDirectoryTree(const UTF16String& from, const UTF16String& to);

}  // namespace Utilities

namespace Scripting {

/// Installs the function by which scripts and the host move items of the production to its trash; an empty
/// function takes it away. UI thread.
ZUHOST_API void SetTryToMoveToSharedProjectsTrashFn(std::function<void(const UTF16StringVec& paths)> fn);

}  // namespace Scripting

}  // namespace host
