#include "desk/app/ProgressTexts.h"

#include <QLocale>

#include "desk/core/language/Localized.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/File.h"
#include "host/files/PathUtils.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {
namespace {

using std::chrono::seconds;

host::UTF16String ToText(std::int64_t number) {
    return ToUTF16(QLocale().toString(static_cast<qlonglong>(number)));
}

/// Rounded up to a multiple of `step`.
std::int64_t RoundUp(std::int64_t number, std::int64_t step) {
    return (number + step - 1) / step * step;
}

QString DescribeUnderWay(const CopyJob& job) {
    if (job.mIsCancelling) return Localized("$$$/Desk/Progress/Cancelling=Being cancelled");
    if (job.mBytesTotal == 0) return Localized("$$$/Desk/Progress/Preparing=Preparing");
    const host::UTF16String done = host::GetDisplayStringOfFileSize(job.mBytesDone);
    const host::UTF16String total = host::GetDisplayStringOfFileSize(job.mBytesTotal);
    if (!job.mTimeLeft) return Localized("$$$/Desk/Progress/Copied=@0 of @1", {done, total});
    return Localized("$$$/Desk/Progress/CopiedTimeLeft=@0 of @1, @2",
                     {done, total, ToUTF16(DescribeTimeLeft(*job.mTimeLeft))});
}

}  // namespace

QString DescribeName(const CopyJob& job) {
    return ToDisplayText(host::PathUtils::GetFullFilePart(job.mDestination));
}

QString DescribeFolder(const CopyJob& job) {
    const host::UTF16String folder =
        host::PathUtils::RemoveTrailingSlash(host::PathUtils::GetFullDirectoryPart(job.mDestination));
    const host::UTF16String production = host::GetSharedProjectsManagerFolderPath();
    if (production.empty() || !IsSameOrBelow(folder, production)) return ToDisplayText(folder);
    const std::size_t rootName = host::PathUtils::GetFullDirectoryPart(production).size();
    return ToDisplayText(std::u16string_view(folder).substr(rootName));
}

QString DescribeState(const CopyJob& job) {
    switch (job.mState) {
        case CopyJob::State::Waiting:
            return Localized("$$$/Desk/Progress/Waiting=Waiting");
        case CopyJob::State::UnderWay:
            return DescribeUnderWay(job);
        case CopyJob::State::Done:
            return Localized("$$$/Desk/Progress/Done=Copied, @0",
                             {host::GetDisplayStringOfFileSize(job.mBytesDone)});
        case CopyJob::State::Failed:
            return ToDisplayText(host::ZString("$$$/Desk/Progress/Failed=Not copied: @0", {job.mReason}));
        case CopyJob::State::InDoubt:
            return ToDisplayText(job.mReason);
        case CopyJob::State::Cancelled:
            return Localized("$$$/Desk/Progress/Cancelled=Cancelled");
    }
    return {};
}

QString DescribeTimeLeft(seconds timeLeft) {
    const std::int64_t count = std::max<std::int64_t>(timeLeft.count(), 1);
    if (count < 60)
        return Localized("$$$/Desk/Progress/SecondsLeft=about @0 s left",
                         {ToText(count <= 10 ? count : RoundUp(count, 5))});
    const std::int64_t minutes = RoundUp(count, 60) / 60;
    if (minutes < 60) return Localized("$$$/Desk/Progress/MinutesLeft=about @0 min left", {ToText(minutes)});
    return Localized("$$$/Desk/Progress/HoursLeft=about @0 h @1 min left",
                     {ToText(minutes / 60), ToText(minutes % 60)});
}

}  // namespace desk
