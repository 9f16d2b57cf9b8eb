#include "host/project/ProjectLockFile.h"

#include "desk/core/Desktop.h"
#include "desk/core/Services.h"
#include "desk/files/FolderStore.h"
#include "desk/files/KnownFacts.h"
#include "desk/project/LockRecord.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace host {

IProjectLockFile::~IProjectLockFile() = default;

namespace {

/// A lock file whose content is not known yet.
class UnreadLockFile : public IProjectLockFile {
public:
    bool IsLocked() const override { return true; }
    UTF16String GetLockOwner() const override { return {}; }
    bool IsHeldByReader() const override { return false; }
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

private:
    bool mIsLocked;
    bool mIsHeldByReader = false;
    UTF16String mOwner;
};

UTF16String LockFilePath(const UTF16String& projectPath) {
    const UTF16String path = PathUtils::ToNormalizedPath(projectPath);
    return PathUtils::GetFullDirectoryPart(path) + desk::GetLockFileName(PathUtils::GetFullFilePart(path));
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

ProjectLockFileRef ReadProjectLockFile(const UTF16String& projectPath, const UTF16String& userName,
                                       const UTF16String& machineName) {
    const desk::KnownItem known = desk::FindKnownItemAndRequest(projectPath);
    if (known.mIsAbsent) return {};
    if (known.mFacts) {
        if (!known.mFacts->mHasLockFile) return {};
        if (!known.mFacts->mLock) return new UnreadLockFile;
        return new ReadLockFile(*known.mFacts->mLock, userName, machineName);
    }
    auto record = desk::ReadLockRecord(*desk::GetServices().mFileSystem, UTF16to8(LockFilePath(projectPath)));
    if (!record) return {};
    return new ReadLockFile(*record, userName, machineName);
}

}  // namespace host
