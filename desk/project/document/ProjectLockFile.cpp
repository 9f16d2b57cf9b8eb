#include "host/project/ProjectLockFile.h"

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/files/live/FolderStore.h"
#include "desk/project/document/ProjectLocking.h"
#include "desk/project/document/ProjectQuestions.h"
#include "desk/project/lock/LockHolder.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/KnownProjects.h"

namespace host {

IProjectLockFile::~IProjectLockFile() = default;

namespace {

/// What a lock file said when it was read.
class ReadLockFile : public IProjectLockFile {
public:
    ReadLockFile(const desk::ProjectHolder& holder, const UTF16String& userName, const UTF16String& machineName)
        : mIsLocked(holder.mWho != desk::LockHolder::Nobody), mOwner(DescribeOwner(holder, userName)) {
        const desk::LockRecord& record = holder.mRecord;
        mIsHeldByReader = holder.mWho == desk::LockHolder::ThisProcess && record.mUser == userName &&
                          record.mMachine == machineName;
    }
    bool IsLocked() const override { return mIsLocked; }
    UTF16String GetLockOwner() const override { return mOwner; }
    bool IsHeldByReader() const override { return mIsHeldByReader; }
    bool IsLost() override { return false; }

private:
    static UTF16String DescribeOwner(const desk::ProjectHolder& holder, const UTF16String& userName) {
        const desk::LockRecord& record = holder.mRecord;
        if (holder.mWho == desk::LockHolder::NotTold) return {};
        if (!record.mIsReadable) return ZString("$$$/Vantor/Desk/Project/UnknownLockOwner=Unknown user");
        if (holder.mWho == desk::LockHolder::AnotherProcess && record.mUser == userName)
            return ZString("$$$/Vantor/Desk/Project/OwnLockElsewhere=@0 on @1",
                           {record.mUser, record.mMachine});
        return record.mUser;
    }

    bool mIsLocked;
    UTF16String mOwner;
    bool mIsHeldByReader = false;
};

ProjectLockFileRef MakeReadLock(const desk::ProjectHolder& holder, const UTF16String& userName,
                                const UTF16String& machineName) {
    if (holder.mWho == desk::LockHolder::Nobody && !holder.mRecord.mIsReadable) return {};
    return new ReadLockFile(holder, userName, machineName);
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
    const desk::ProjectHolder holder = desk::FindProjectHolder(PathUtils::ToNormalizedPath(projectPath));
    return MakeReadLock(holder, userName, machineName);
}

std::vector<KnownProject> GetKnownProjects(const UTF16String& folder, const UTF16StringVec& names,
                                           MissingFacts missing, KnownLocks locks) {
    std::vector<KnownProject> projects(names.size());
    desk::FolderStore* store = desk::GetServices().mFolderStore;
    if (!store) return projects;
    UTF16String userName;
    UTF16String machineName;
    GetProjectLockingPrefs(userName, machineName);
    UTF16String path = PathUtils::AddTrailingSlash(folder);
    const std::size_t folderSize = path.size();
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].empty()) continue;
        path.replace(folderSize, UTF16String::npos, names[i]);
        const desk::ItemFacts* facts =
            missing == MissingFacts::Request ? store->FindAndRequest(path) : store->Find(path);
        if (locks == KnownLocks::Find) {
            const desk::ProjectHolder holder =
                desk::FindProjectHolder(path, facts ? *facts : desk::ItemFacts());
            projects[i].mLock = MakeReadLock(holder, userName, machineName);
        }
        if (!facts) continue;
        projects[i].mIsListed = facts->mKind != desk::ItemKind::Folder;
        if (!facts->mStatus) continue;
        projects[i].mModified = desk::ToSeconds(facts->mStatus->mModified);
        if (facts->mStatus->mCreated) projects[i].mCreated = desk::ToSeconds(*facts->mStatus->mCreated);
        projects[i].mSize = facts->mStatus->mSize;
    }
    return projects;
}

std::optional<UTF16StringVec> GetKnownLockedNames(const UTF16String& folder) {
    const desk::FolderStore* store = desk::GetServices().mFolderStore;
    if (!store || !store->IsListed(folder)) return std::nullopt;
    UTF16StringVec names;
    store->VisitLocks(folder, false, [&names](const UTF16String& path, const desk::ItemFacts&) {
        names.push_back(PathUtils::GetFullFilePart(path));
        return true;
    });
    return names;
}

}  // namespace host
