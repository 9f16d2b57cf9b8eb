#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <vector>

#include "host/core/Export.h"
#include "host/core/Strings.h"
#include "host/project/ProjectLockFile.h"

namespace host {

/// What the host knows of a project's file. What no volume has told yet is absent.
struct KnownProject {
    /// A listing tells of it, and of no folder called like it.
    bool mIsListed = false;
    /// Seconds since the epoch.
    std::optional<std::time_t> mModified;
    std::optional<std::time_t> mCreated;
    /// In bytes.
    std::optional<std::uint64_t> mSize;
    /// As `ReadProjectLockFile` reads it; empty for a project that is not locked.
    ProjectLockFileRef mLock;
};

enum class MissingFacts {
    Leave,
    /// Those of listed folders are asked for in the background; whoever shows the folder is told of them.
    Request,
};

enum class KnownLocks {
    Find,
    /// `mLock` stays empty: who holds a project costs most of the answer.
    Omit,
};

/// What is known of the projects `names` of `folder` (normalised), one by one in the same order; nothing of an
/// empty name. Costs a comparison in memory for names that are asked for in the order in which they are shown,
/// a look-up for others; asks no disk and waits for nothing. UI thread.
ZUHOST_API std::vector<KnownProject> GetKnownProjects(const UTF16String& folder, const UTF16StringVec& names,
                                                      MissingFacts missing,
                                                      KnownLocks locks = KnownLocks::Find);

/// The names of the projects of `folder` (normalised) beside which a lock file is known to stand, whoever has
/// locked them, in no order; absent for a folder that is not listed. Costs a look in memory at each item of the
/// folder, one after another; asks no disk and waits for nothing. UI thread.
ZUHOST_API std::optional<UTF16StringVec> GetKnownLockedNames(const UTF16String& folder);

}  // namespace host
