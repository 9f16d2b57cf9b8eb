#include "host/project/ProjectLockFile.h"

#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <optional>

#include "desk/core/Desktop.h"
#include "desk/core/Log.h"
#include "desk/core/Services.h"
#include "desk/core/UserNotice.h"
#include "desk/files/FolderStore.h"
#include "desk/files/KnownFacts.h"
#include "desk/project/LockKeeper.h"
#include "desk/project/LockRecord.h"
#include "desk/project/ProjectQuestions.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

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

/// A share in a lock that this process holds.
class CreatedLockFile : public IProjectLockFile {
public:
    explicit CreatedLockFile(desk::HeldLockPtr lock) : mLock(std::move(lock)) {}
    bool IsLocked() const override { return !mLock->IsLost(); }
    UTF16String GetLockOwner() const override { return mLock->GetRecord().mUser; }
    bool IsHeldByReader() const override { return !mLock->IsLost(); }
    bool IsLost() override {
        const desk::LockStanding standing = mLock->Check();
        if (standing == desk::LockStanding::Unknown)
            throw FileException("read lock", UTF8to16(mLock->GetPath()), EIO);
        return standing == desk::LockStanding::Lost;
    }

private:
    desk::HeldLockPtr mLock;
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

/// In bytes.
std::string LockFilePath(const UTF16String& projectPath) {
    const UTF16String path = PathUtils::ToNormalizedPath(projectPath);
    return UTF16to8(PathUtils::GetFullDirectoryPart(path) +
                    desk::GetLockFileName(PathUtils::GetFullFilePart(path)));
}

/// Why a lock must not even be tried to take: an errno value, or 0.
int ReasonToRefuse(const UTF16String& projectPath, const UTF16String& userName,
                   const UTF16String& machineName) {
    constexpr std::size_t kLongestName = 255;
    const UTF16String name = PathUtils::GetFullFilePart(PathUtils::ToNormalizedPath(projectPath));
    if (!IsVantorProjectFile(name) || userName.empty() || machineName.empty()) return EINVAL;
    return UTF16to8(desk::GetLockFileName(name)).size() > kLongestName ? ENAMETOOLONG : 0;
}

std::string ToText(std::int64_t secondsSinceEpoch) {
    const std::time_t time = secondsSinceEpoch;
    std::tm parts{};
    char text[32] = "";
    if (gmtime_r(&time, &parts)) std::strftime(text, sizeof text, "%FT%TZ", &parts);
    return text;
}

void LogRefusal(const UTF16String& projectPath, const desk::LockTaking& taking) {
    const desk::LockRecord& holder = taking.mRecord;
    if (taking.mOutcome == desk::LockTaking::Outcome::Failed)
        return desk::Log(desk::LogLevel::Warning,
                         FileException("take lock of", projectPath, taking.mSystemError).what());
    const std::string text = "take lock of " + UTF16to8(projectPath) + ": held by ";
    if (!holder.mIsReadable)
        return desk::Log(desk::LogLevel::Info, text + "an unknown user (it cannot be read)");
    desk::Log(desk::LogLevel::Info, text + UTF16to8(holder.mUser) + " on " + UTF16to8(holder.mMachine) +
                                        " since " + ToText(holder.mTakenAt));
}

void TellRefusal(const UTF16String& projectPath, const desk::LockTaking& taking) {
    LogRefusal(projectPath, taking);
    desk::ProjectLocking locking;
    locking.mObstacle = taking.mOutcome == desk::LockTaking::Outcome::Failed
                            ? desk::ProjectLocking::Obstacle::Refused
                            : desk::ProjectLocking::Obstacle::Held;
    locking.mHolder = taking.mRecord;
    locking.mSystemError = taking.mSystemError != 0 ? taking.mSystemError : EAGAIN;
    desk::TellUser(desk::ProjectQuestions::DescribeObstacle(projectPath, locking));
}

/// True for a lock that this process has given up since it was read.
bool IsOutdated(const desk::LockRecord& record) {
    return record.mIsReadable && record.mPid == ::getpid() &&
           desk::AreOfOneProcess(record, desk::MakeLockRecord(*desk::GetServices().mDesktop, {}, {}));
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
    if (const int error = ReasonToRefuse(projectPath, userName, machineName)) {
        TellRefusal(projectPath, {desk::LockTaking::Outcome::Failed, {}, error});
        return {};
    }
    auto [lock, result] = desk::LockKeeper::Instance().Take(LockFilePath(projectPath), userName, machineName);
    if (lock) return new CreatedLockFile(std::move(lock));
    TellRefusal(projectPath, result);
    return {};
}

ProjectLockFileRef ReadProjectLockFile(const UTF16String& projectPath, const UTF16String& userName,
                                       const UTF16String& machineName) {
    // What this process holds it knows best.
    if (const desk::LockKeeper& keeper = desk::LockKeeper::Instance(); keeper.HoldsAny())
        if (const auto held = keeper.Find(LockFilePath(projectPath)); held && !held->IsLost())
            return new ReadLockFile(held->GetRecord(), userName, machineName);
    const desk::KnownItem known = desk::FindKnownItemAndRequest(projectPath);
    if (known.mIsAbsent || known.mIsAwaited) return {};
    if (known.mFacts) {
        if (!known.mFacts->mHasLockFile) return {};
        if (!known.mFacts->mLock) return new UnreadLockFile;
        if (!IsOutdated(*known.mFacts->mLock))
            return new ReadLockFile(*known.mFacts->mLock, userName, machineName);
    }
    auto record = desk::ReadLockRecord(*desk::GetServices().mFileSystem, LockFilePath(projectPath));
    if (!record) return {};
    return new ReadLockFile(*record, userName, machineName);
}

}  // namespace host
