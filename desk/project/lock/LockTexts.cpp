#include <QDateTime>
#include <QLocale>

#include "desk/core/names/QtStrings.h"
#include "desk/project/lock/LockHolder.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectLockFile.h"

namespace host {

UTF16String DescribeProjectLock(const UTF16String& projectPath) {
    const auto holder = desk::FindKnownProjectHolder(PathUtils::ToNormalizedPath(projectPath));
    if (!holder || holder->mWho == desk::LockHolder::Nobody || holder->mWho == desk::LockHolder::NotTold)
        return {};
    const desk::LockRecord& record = holder->mRecord;
    if (!record.mIsReadable)
        return ZString("$$$/Desk/LockTip/Unknown=Locked by an unknown user: the lock file cannot be read");
    const QDateTime taken = QDateTime::fromSecsSinceEpoch(record.mTakenAt);
    const UTF16String since = desk::ToUTF16(QLocale().toString(taken, QLocale::ShortFormat));
    if (holder->mWho == desk::LockHolder::ThisProcess)
        return ZString("$$$/Desk/LockTip/Own=Open for editing here since @0", {since});
    return ZString("$$$/Desk/LockTip/Other=Locked by @0 on @1 since @2",
                   {record.mUser, record.mMachine, since});
}

}  // namespace host
