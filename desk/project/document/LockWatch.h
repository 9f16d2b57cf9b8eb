#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "desk/project/document/ProjectDocument.h"
#include "desk/project/document/ProjectLooks.h"
#include "desk/project/lock/LockProtocol.h"

namespace desk {

/// What a look at the locks of an open project has found: the first that is not as it should be, else the last.
struct LockFinding {
    /// The lock file's path, in bytes, and the nonce that it bore.
    std::string mLockPath;
    std::string mNonce;
    LockReport mReport;
};

/// Notices that the lock of a project that is open for writing was taken over or removed, or that its volume
/// does not tell: a worker reads it again (`LockProtocol::Check`). What two looks find one after the other
/// counts. While nobody tells, the document says so (`ProjectDocument::SetTrouble`); its lock may come back,
/// and stays. Never waits for the volume. UI thread.
class LockWatch {
public:
    /// Told of a loss, at each look until it answers that it has taken note.
    using Receiver = std::function<bool(const ProjectDocumentRef&, const LockFinding&)>;
    explicit LockWatch(Receiver receiver);

private:
    /// A lock, and what the last look has found of it.
    using Suspicion = std::pair<std::string, LockStanding>;

    void Note(const ProjectDocumentRef& document, const LockFinding& finding);

    const Receiver mReceiver;
    std::map<const ProjectDocument*, Suspicion> mSuspected;
    ProjectLooks mLooks;
};

}  // namespace desk
