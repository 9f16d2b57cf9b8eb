#pragma once

#include <string>

namespace desk {

class WorkProgress;

/// Copies the folder `from` to where the empty folder `to` stands, as `CopyItem` copies folders. The copy comes
/// to its place in one step when it is complete; what somebody puts into `to` meanwhile stays, and then there
/// is no copy (ENOTEMPTY). A failure or a cancel takes the copy and the empty folder away. Throws
/// `host::FileException`; `MoveInDoubt` when it is not known whether the copy stands in its place. Paths in the
/// bytes of the disk. Waits for the volume. On a worker.
void CopyDirectoryTree(const std::string& from, const std::string& to, WorkProgress& progress);

}  // namespace desk
