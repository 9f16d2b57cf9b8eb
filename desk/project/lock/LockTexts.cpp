#include "desk/project/lock/LockTexts.h"

#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <chrono>
#include <cstdint>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/QtStrings.h"
#include "desk/project/lock/LockHolder.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectLockFile.h"

namespace desk {

namespace {

using host::UTF16String;

UTF16String Shown(const UTF16String& name) {
    return ToUTF16(ToDisplayText(name));
}

UTF16String AgeText(std::int64_t seconds) {
    const std::int64_t minutes = std::max<std::int64_t>(seconds, 0) / 60;
    const auto number = [](std::int64_t n) { return host::NumberToString(static_cast<long long>(n)); };
    if (minutes < 2) return host::ZString("$$$/Desk/BreakLock/JustNow=just now");
    if (minutes < 120) return host::ZString("$$$/Desk/BreakLock/Minutes=@0 minutes ago", {number(minutes)});
    if (minutes < 48 * 60)
        return host::ZString("$$$/Desk/BreakLock/Hours=@0 hours ago", {number(minutes / 60)});
    return host::ZString("$$$/Desk/BreakLock/Days=@0 days ago", {number(minutes / (24 * 60))});
}

/// The time alone says enough on the same day.
UTF16String TimeText(std::int64_t secondsSinceEpoch, std::int64_t now) {
    const QDateTime time = QDateTime::fromSecsSinceEpoch(secondsSinceEpoch);
    const QLocale locale;
    if (time.date() == QDateTime::fromSecsSinceEpoch(now).date())
        return ToUTF16(locale.toString(time.time(), QLocale::ShortFormat));
    return ToUTF16(locale.toString(time, QLocale::ShortFormat));
}

}  // namespace

UTF16String DescribeHolder(const LockRecord& record) {
    if (!record.mIsReadable)
        return host::ZString("$$$/Desk/BreakLock/Unknown=somebody unknown (the lock cannot be read)");
    const std::int64_t now =
        std::chrono::duration_cast<std::chrono::seconds>(GetServices().mDesktop->Now().time_since_epoch())
            .count();
    return host::ZString("$$$/Desk/BreakLock/Holder=@0 on @1, since @2 (@3)",
                         {Shown(record.mUser), Shown(record.mMachine), TimeText(record.mTakenAt, now),
                          AgeText(now - record.mTakenAt)});
}

}  // namespace desk

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
