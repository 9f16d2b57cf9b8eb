#include "desk/project/document/LockWatch.h"

#include <utility>
#include <vector>

#include "desk/core/edges/Services.h"
#include "desk/core/names/LockRecord.h"
#include "desk/project/document/ProjectQuestions.h"
#include "desk/project/lock/LockKeeper.h"

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

LockFinding LookAtLocks(const std::vector<WatchedLock>& locks) {
    LockProtocol protocol(*GetServices().mFileSystem, *GetServices().mDesktop);
    LockFinding finding;
    for (const WatchedLock& lock : locks) {
        const std::string path = GetLockPath(lock.mProject);
        finding = {path, lock.mNonce, protocol.Check(path, lock.mNonce)};
        if (finding.mReport.mStanding != LockStanding::Ours) break;
    }
    return finding;
}

}  // namespace

LockWatch::LockWatch(Receiver receiver)
    : mReceiver(std::move(receiver)), mLooks([this](const ProjectDocumentRef& document, bool) {
          ProjectLooks::Look look;
          if (auto locks = FindLocks(*document); !locks.empty())
              look = [this, locks = std::move(locks)] {
                  return [this, finding = LookAtLocks(locks)](const ProjectDocumentRef& looked) {
                      Note(looked, finding);
                      return false;  // The next look is soon enough.
                  };
              };
          return look;
      }) {}

void LockWatch::Note(const ProjectDocumentRef& document, const LockFinding& finding) {
    std::erase_if(mSuspected, [](const auto& entry) { return !FindOpenDocument(entry.first); });
    const LockStanding standing = finding.mReport.mStanding;
    const Suspicion suspicion{finding.mNonce, standing};
    const bool isSeenAgain = std::exchange(mSuspected[document.get()], suspicion) == suspicion;
    if (standing == LockStanding::Ours) document->SetTrouble({});
    if (!isSeenAgain) return;
    if (standing == LockStanding::Unknown)
        document->SetTrouble(ProjectQuestions::DescribeTrouble(document->GetProjectPath(), finding.mReport));
    if (standing == LockStanding::Lost && mReceiver(document, finding)) mSuspected.erase(document.get());
}

}  // namespace desk
