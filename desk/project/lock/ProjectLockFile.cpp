#include "host/project/ProjectLockFile.h"

#include <optional>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/LockRecord.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/files/live/FolderStore.h"
#include "desk/files/live/KnownFacts.h"
#include "desk/project/document/ProjectQuestions.h"
#include "desk/project/lock/LockKeeper.h"
#include "desk/project/lock/ProjectLocking.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/OpenProjects.h"

namespace host {

IProjectLockFile::~IProjectLockFile() = default;

namespace {

/// A lock file whose content is not known yet.
class UnreadLockFile : public IProjectLockFile {
public:
    bool IsLocked() const override { return true; }
    UTF16String GetLockOwner() const override { return {}; }
    bool IsHeldByReader() const override { return false; }
    bool IsLost() override { return false; }
};

/// What a lock file said when it was read.
class ReadLockFile : public IProjectLockFile {
public:
    ReadLockFile(const desk::LockRecord& record, const UTF16String& userName, const UTF16String& machineName)
        : mIsLocked(!desk::IsLockStale(record, *desk::GetServices().mDesktop)) {
        if (record.mIsReadable) {
            mOwner = record.mUser;
            mIsHeldByReader = mIsLocked && record.mUser == userName && record.mMachine == machineName;
        } else {
            mOwner = ZString("$$$/Vantor/Desk/Project/UnknownLockOwner=Unknown user");
        }
    }
    bool IsLocked() const override { return mIsLocked; }
    UTF16String GetLockOwner() const override { return mOwner; }
    bool IsHeldByReader() const override { return mIsHeldByReader; }
    bool IsLost() override { return false; }

private:
    bool mIsLocked;
    bool mIsHeldByReader = false;
    UTF16String mOwner;
};

std::string LockPathOf(const UTF16String& projectPath) {
    return desk::GetLockPath(PathUtils::ToNormalizedPath(projectPath));
}

/// A project that was opened through a link is held under that name.
desk::HeldLockPtr FindHeldLock(const UTF16String& projectPath) {
    const desk::LockKeeper& keeper = desk::LockKeeper::Instance();
    if (!keeper.HoldsAny()) return {};
    if (auto held = keeper.Find(LockPathOf(projectPath))) return held;
    ProjectRef project;
    return IsProjectOpen(projectPath, project) ? keeper.Find(LockPathOf(project->GetProjectPath())) : nullptr;
}

void LogRefusal(const UTF16String& projectPath, const desk::ProjectLocking& locking) {
    const desk::LockRecord& holder = locking.mHolder;
    if (locking.mObstacle == desk::ProjectLocking::Obstacle::Refused)
        return desk::Log(desk::LogLevel::Warning,
                         FileException("take lock of", projectPath, locking.mSystemError).what());
    const std::string text = "take lock of " + UTF16to8(projectPath) + ": held by ";
    if (!holder.mIsReadable)
        return desk::Log(desk::LogLevel::Info, text + "an unknown user (it cannot be read)");
    desk::Log(desk::LogLevel::Info, text + UTF16to8(holder.mUser) + " on " + UTF16to8(holder.mMachine) +
                                        " since " + desk::ToTimeText(holder.mTakenAt).toStdString());
}

}  // namespace

bool GetProjectLockingPrefs(UTF16String& userName, UTF16String& machineName) {
    const desk::Desktop& desktop = *desk::GetServices().mDesktop;
    userName = desktop.UserName();
    machineName = desktop.MachineName();
    if (!userName.empty() && !machineName.empty()) return true;
    userName.clear();
    machineName.clear();
    return false;
}

ProjectLockFileRef CreateProjectLockFile(const UTF16String& projectPath, const UTF16String& userName,
                                         const UTF16String& machineName) {
    const desk::ProjectLocking locking =
        desk::TakeProjectLock(PathUtils::ToNormalizedPath(projectPath), userName, machineName);
    if (!locking.mLock) {
        LogRefusal(projectPath, locking);
        desk::TellUser(desk::ProjectQuestions::DescribeObstacle(projectPath, locking));
    }
    return locking.mLock;
}

ProjectLockFileRef ReadProjectLockFile(const UTF16String& projectPath, const UTF16String& userName,
                                       const UTF16String& machineName) {
    // What this process holds it knows best.
    const desk::LockKeeper& keeper = desk::LockKeeper::Instance();
    if (const auto held = FindHeldLock(projectPath); held && !held->IsLost())
        return new ReadLockFile(held->GetRecord(), userName, machineName);
    const desk::KnownItem known = desk::FindKnownItemAndRequest(projectPath);
    if (known.mIsAbsent || known.mIsAwaited) return {};
    if (known.mFacts) {
        if (!known.mFacts->mHasLockFile) return {};
        if (!known.mFacts->mLock) return new UnreadLockFile;
        if (keeper.HasGivenUp(*known.mFacts->mLock)) return {};
        return new ReadLockFile(*known.mFacts->mLock, userName, machineName);
    }
    const auto record = desk::ReadLockRecord(*desk::GetServices().mFileSystem, LockPathOf(projectPath));
    if (!record) return {};
    return new ReadLockFile(*record, userName, machineName);
}

}  // namespace host
