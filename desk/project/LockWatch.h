#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "desk/project/ProjectDocument.h"
#include "desk/project/ProjectLocking.h"
#include "desk/project/ProjectLooks.h"

namespace desk {

/// A lock of an open project that is not this process's any more.
struct LockLoss {
    /// The lock file's path, in bytes, and the nonce that it bore.
    std::string mLockPath;
    std::string mNonce;
    /// Who has the lock now; without an obstacle when nobody has.
    ProjectLocking mHolder;
};

/// Notices that the lock of a project that is open for writing was broken or removed: a worker reads it again.
/// A loss is a readable lock of somebody else, or none although the project is in its place, and that at two
/// looks one after the other. A volume that fails, a lock that cannot be read, and a folder or project that is
/// away are none: they may come back. Never waits for the volume. UI thread.
class LockWatch {
public:
    /// Told of a loss, at each look until it answers that it has taken note.
    using Receiver = std::function<bool(const ProjectDocumentRef&, const LockLoss&)>;
    explicit LockWatch(Receiver receiver);

private:
    bool Note(const ProjectDocumentRef& document, const std::optional<LockLoss>& loss);

    const Receiver mReceiver;
    /// By document: the nonce of the lock that the last look found lost.
    std::map<const ProjectDocument*, std::string> mSuspected;
    ProjectLooks mLooks;
};

}  // namespace desk
