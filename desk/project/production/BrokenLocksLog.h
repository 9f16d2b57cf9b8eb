#pragma once

#include "desk/core/names/LockRecord.h"
#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// Notes in the open production that the local user has broken the lock of `project` (normalised), which
/// `broken` was the record of: one line is added to "broken-locks.jsonl", in the records folder of the
/// production's trash. A line is one JSON object: "brokenAt" (UTC, ISO 8601), "user" and "machine" (who broke),
/// "project" (bytes relative to the production's folder, percent-encoded as by RFC 3986), "owner" and
/// "ownerMachine" (both empty for a lock that could not be read), "takenAt" (likewise) and "nonce". Nothing is
/// done for a project outside the open production, nor while that has no trash folder. Written by a worker; a
/// failure is logged. UI thread.
ZUHOST_API void LogBrokenLock(const host::UTF16String& project, const LockRecord& broken);

}  // namespace desk
