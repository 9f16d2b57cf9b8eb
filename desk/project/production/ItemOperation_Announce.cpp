// What the user is told of the items that were not moved or copied, and of those of which that is not known.
#include <algorithm>
#include <cerrno>
#include <ranges>

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/project/document/ProjectQuestions.h"
#include "desk/project/production/ItemOperation.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

using host::UTF16String;
using host::ZString;
using Result = host::ItemOutcome::Result;

constexpr std::size_t kMostLines = 10;

struct Kept {
    host::UTF16StringVec mTexts;
    bool mIsSomethingDone = false;
};

/// While `TellTogether` runs.
Kept* sKept = nullptr;

/// A volume that cannot be written to is to blame for that, not the lock.
UTF16String DescribeObstacle(const UTF16String& place, const ProjectLocking& obstacle) {
    if (obstacle.mObstacle == ProjectLocking::Obstacle::Held)
        return ProjectQuestions::DescribeObstacle(place, obstacle);
    const bool isNameToBlame = obstacle.mSystemError == ENAMETOOLONG;
    return DescribeReason({"take lock of", isNameToBlame ? place : host::PathUtils::GetFullDirectoryPart(place),
                           obstacle.mSystemError});
}

UTF16String DescribeObstacle(const UTF16String& name, const UTF16String& place,
                             const ProjectLocking& obstacle) {
    return ZString("$$$/Vantor/Desk/Files/NotMoved=“@0” was not moved. @1",
                   {name, DescribeObstacle(place, obstacle)});
}

UTF16String DescribeLeftBehind(const UTF16String& name, const UTF16String& destination,
                               const LeftBehind& left) {
    const UTF16String path = host::UTF8to16(left.mPath);
    const char* const text =
        left.mIsInDoubt
            ? "$$$/Vantor/Desk/Files/LeftBehindPerhaps=“@0” was moved to “@1”, but “@2” may also still be there. @3"
            : "$$$/Vantor/Desk/Files/LeftBehind=“@0” was moved to “@1”, but “@2” is also still there. @3";
    return ZString(text, {name, destination, path, DescribeReason({"remove", path, left.mSystemError})});
}

UTF16String DescribeWhoHasItOpen(const LockRecord& holder) {
    if (!holder.mIsReadable) return ZString("$$$/Vantor/Desk/Files/OpenBySomebody=Somebody has it open.");
    return ZString("$$$/Vantor/Desk/Files/OpenBy=@0 has it open on @1.", {holder.mUser, holder.mMachine});
}

UTF16String ToLines(const host::UTF16StringVec& texts) {
    UTF16String lines;
    for (const UTF16String& text : texts | std::views::take(kMostLines))
        lines += (lines.empty() ? u"" : u"\n") + text;
    if (texts.size() > kMostLines)
        lines += u"\n" + ZString("$$$/Vantor/Desk/Files/AndMore=… and @0 more",
                                 {host::NumberToString(static_cast<long long>(texts.size() - kMostLines))});
    return lines;
}

}  // namespace

UTF16String DescribeHolder(const UTF16String& name, const LockRecord& holder) {
    if (!holder.mIsReadable)
        return ZString("$$$/Vantor/Desk/Files/LockedUnknown=“@0” was not moved. Somebody has it open.", {name});
    return ZString("$$$/Vantor/Desk/Files/Locked=“@0” was not moved. @1 has it open on @2.",
                   {name, holder.mUser, holder.mMachine});
}

UTF16String ItemOperation::DescribeFailure(const Item& item) const {
    const host::FileException& failure = *item.mOutcome.mFailure;
    if (item.mOutcome.mResult == Result::InDoubt)
        return ZString(
            "$$$/Vantor/Desk/Copies/InDoubt=“@0” may or may not have been copied to “@1”. @2",
            {host::PathUtils::GetFullFilePart(item.mSource), item.mDestination, DescribeReason(failure)});
    const bool isNoFile = failure.SystemError() == EISDIR || failure.SystemError() == EINVAL;
    if (isNoFile && (mVerb == Verb::Add || mVerb == Verb::AddUnderFreeName))
        return ZString("$$$/Vantor/Desk/Copies/NoProject=This is not a project file.");
    return DescribeReason(failure);
}

UTF16String ItemOperation::DescribeFailure(std::size_t index) const {
    return DescribeFailure(mItems[index]);
}

UTF16String ItemOperation::DescribeNotCopied(const Item& item) const {
    const bool isInDoubt = item.mOutcome.mResult == Result::InDoubt;
    Log(isInDoubt ? LogLevel::Warning : LogLevel::Info, item.mOutcome.mFailure->what());
    if (item.mOutcome.mFailure->SystemError() == ECANCELED) return {};
    if (isInDoubt) return DescribeFailure(item);
    return ZString("$$$/Vantor/Desk/Copies/NotCopied=“@0” was not copied. @1",
                   {host::PathUtils::GetFullFilePart(item.mSource), DescribeFailure(item)});
}

bool ItemOperation::IsRename() const {
    if (mItems.size() != 1 || IsCopy()) return false;
    using host::PathUtils::GetFullDirectoryPart;
    return GetFullDirectoryPart(mItems[0].mSource) == GetFullDirectoryPart(mItems[0].mDestination);
}

UTF16String ItemOperation::DescribeNotRenamed(const Item& item) const {
    UTF16String reason;
    switch (item.mOutcome.mResult) {
        case Result::NoSourceLock:
        case Result::NoDestinationLock: {
            const bool isSource = item.mOutcome.mResult == Result::NoSourceLock;
            reason = DescribeObstacle(isSource ? item.mSource : item.mDestination, item.mLocks->GetObstacle());
            break;
        }
        case Result::Refused:
            reason = item.mIsThere ? DescribeWhoHasItOpen(item.mLocks->GetObstacle().mHolder)
                                   : ZString("$$$/Vantor/Desk/Files/NotThere=It is not there any more.");
            break;
        case Result::Failed:
            if (item.mOutcome.mFailure->SystemError() == ECANCELED) return {};
            Log(LogLevel::Info, item.mOutcome.mFailure->what());
            reason = item.mOutcome.mFailure->SystemError() == EEXIST
                         ? ZString("$$$/Vantor/Desk/Files/NameTaken=“@0” exists already.",
                                   {host::PathUtils::GetFullFilePart(item.mDestination)})
                         : DescribeFailure(item);
            break;
        default:
            return {};
    }
    return ZString("$$$/Vantor/Desk/Files/NotRenamed=“@0” could not be renamed. @1",
                   {host::PathUtils::GetFullFilePart(item.mSource), reason});
}

/// Empty for what there is nothing to say of.
UTF16String ItemOperation::DescribeOutcome(const Item& item) const {
    const UTF16String name = host::PathUtils::GetFullFilePart(item.mSource);
    switch (item.mOutcome.mResult) {
        case Result::Done:
            if (item.mLeftBehind.mPath.empty()) return {};
            return DescribeLeftBehind(name, item.mDestination, item.mLeftBehind);
        case Result::NoSourceLock:
            return DescribeObstacle(name, item.mSource, item.mLocks->GetObstacle());
        case Result::NoDestinationLock:
            return DescribeObstacle(name, item.mDestination, item.mLocks->GetObstacle());
        case Result::Refused:
            if (item.mIsThere) return DescribeHolder(name, item.mLocks->GetObstacle().mHolder);
            return ZString("$$$/Vantor/Desk/Files/Gone=“@0” was not moved. It is not there any more.", {name});
        case Result::Failed:
        case Result::InDoubt:
            return IsCopy() ? DescribeNotCopied(item) : DescribeNotMoved(item.mSource, *item.mOutcome.mFailure);
        case Result::NotReached:
            break;
    }
    return {};
}

void ItemOperation::Announce() const {
    if (mTelling == Telling::Message && IsRename()) {
        const UTF16String text = DescribeNotRenamed(mItems[0]);
        if (!text.empty())
            return TellWhatWasNotDone("$$$/Vantor/Desk/Files/NotRenamedTitle=Not Renamed", {text});
    }
    host::UTF16StringVec texts;
    for (const Item& item : mItems)
        if (UTF16String text = DescribeOutcome(item); !text.empty()) texts.push_back(std::move(text));
    const auto notReached =
        std::ranges::count(mItems, Result::NotReached, [](const Item& item) { return item.mOutcome.mResult; });
    const bool isCancelled = std::ranges::any_of(mItems, [](const Item& item) {
        return item.mOutcome.mFailure && item.mOutcome.mFailure->SystemError() == ECANCELED;
    });
    if (notReached > 0 && !isCancelled)
        texts.push_back(
            ZString("$$$/Vantor/Desk/Files/NotReached=@0 more stayed as they were, for that reason.",
                    {host::NumberToString(static_cast<long long>(notReached))}));
    const bool mayBeDone = std::ranges::any_of(
        mItems, [](const Item& item) { return item.IsDone() || item.mOutcome.mResult == Result::InDoubt; });
    if (mTelling == Telling::Message) return TellWhatWasNotDone(mVerb, texts, mayBeDone);
    std::ranges::for_each(texts, TellUser);
}

namespace {

const char* FindTitleKey(ItemOperation::Verb verb, bool isSomethingDone) {
    if (verb == ItemOperation::Verb::Copy)
        return isSomethingDone ? "$$$/Vantor/Desk/Files/NotAllCopied=Not Everything Was Copied"
                               : "$$$/Vantor/Desk/Files/NothingCopied=Nothing Was Copied";
    return isSomethingDone ? "$$$/Vantor/Desk/Files/NotAllMoved=Not Everything Was Moved"
                           : "$$$/Vantor/Desk/Files/NothingMoved=Nothing Was Moved";
}

}  // namespace

void TellWhatWasNotDone(ItemOperation::Verb verb, const host::UTF16StringVec& texts, bool isSomethingDone) {
    if (sKept) sKept->mIsSomethingDone = sKept->mIsSomethingDone || isSomethingDone;
    TellWhatWasNotDone(FindTitleKey(verb, isSomethingDone), texts);
}

void TellWhatWasNotDone(const char* titleKey, const host::UTF16StringVec& texts) {
    if (sKept) return static_cast<void>(sKept->mTexts.insert(sKept->mTexts.end(), texts.begin(), texts.end()));
    if (texts.empty()) return;
    for (const UTF16String& text : texts) Log(LogLevel::Info, host::UTF16to8(text));
    GetServices().mDialogs->ShowMessage(ZString(titleKey), ToLines(texts), MessageKind::Failure);
}

}  // namespace desk

namespace host {

void TellNotMoved(const UTF16StringVec& sentences) {
    desk::TellWhatWasNotDone(desk::ItemOperation::Verb::Move, sentences, false);
}

void TellTogether(const std::function<void()>& work) {
    if (desk::sKept) return work();
    desk::Kept kept;
    const auto tell = [&kept] {
        desk::sKept = nullptr;
        desk::TellWhatWasNotDone(desk::ItemOperation::Verb::Move, kept.mTexts, kept.mIsSomethingDone);
    };
    desk::sKept = &kept;
    try {
        work();
    } catch (...) {
        tell();
        throw;
    }
    tell();
}

}  // namespace host
