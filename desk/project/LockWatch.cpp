#include "desk/project/LockWatch.h"

#include <utility>
#include <vector>

#include "desk/core/Services.h"
#include "desk/project/LockKeeper.h"
#include "desk/project/LockProtocol.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

/// A lock that this process holds.
struct WatchedLock {
    host::UTF16String mProject;
    std::string mNonce;
};

void AddLockOf(const host::UTF16String& project, std::vector<WatchedLock>& locks) {
    const HeldLockPtr held = LockKeeper::Instance().Find(GetLockPath(project));
    if (held && !held->IsLost()) locks.push_back({project, held->GetRecord().mNonce});
}

std::vector<WatchedLock> FindLocks(const ProjectDocument& document) {
    std::vector<WatchedLock> locks;
    if (document.IsReadOnly()) return locks;
    AddLockOf(document.GetProjectPath(), locks);
    if (document.GetFile().mIsLink) AddLockOf(host::UTF8to16(document.GetFile().mPath), locks);
    return locks;
}

bool IsLoss(const WatchedLock& lock, const ProjectLocking& found) {
    if (found.mObstacle == ProjectLocking::Obstacle::None)
        return FindRemains(lock.mProject) == ProjectRemains::Project;
    return found.mHolder.mIsReadable && found.mHolder.mNonce != lock.mNonce;
}

/// Absent as well when the volume does not tell.
std::optional<LockLoss> LookAtLock(const WatchedLock& lock) {
    const std::string path = GetLockPath(lock.mProject);
    try {
        LockProtocol protocol(*GetServices().mFileSystem, *GetServices().mDesktop);
        if (protocol.Check(path, lock.mNonce) != LockStanding::Lost) return {};
        LockLoss loss{path, lock.mNonce, FindLockHolder(lock.mProject)};
        return IsLoss(lock, loss.mHolder) ? std::optional(std::move(loss)) : std::nullopt;
    } catch (const host::FileException&) {
        return {};  // The next look follows.
    }
}

std::optional<LockLoss> LookAtLocks(const std::vector<WatchedLock>& locks) {
    for (const WatchedLock& lock : locks)
        if (auto loss = LookAtLock(lock)) return loss;
    return {};
}

}  // namespace

LockWatch::LockWatch(Receiver receiver)
    : mReceiver(std::move(receiver)), mLooks([this](const ProjectDocumentRef& document, bool) {
          ProjectLooks::Look look;
          if (auto locks = FindLocks(*document); !locks.empty())
              look = [this, locks = std::move(locks)] {
                  return [this, loss = LookAtLocks(locks)](const ProjectDocumentRef& looked) {
                      return Note(looked, loss);
                  };
              };
          return look;
      }) {}

/// False: the next look is soon enough.
bool LockWatch::Note(const ProjectDocumentRef& document, const std::optional<LockLoss>& loss) {
    std::erase_if(mSuspected, [](const auto& entry) { return !FindOpenDocument(entry.first); });
    const std::string nonce = loss ? loss->mNonce : std::string();
    const bool isSeenAgain = std::exchange(mSuspected[document.get()], nonce) == nonce;
    if (!loss || (isSeenAgain && mReceiver(document, *loss))) mSuspected.erase(document.get());
    return false;
}

}  // namespace desk
