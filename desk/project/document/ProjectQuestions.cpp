#include "desk/project/document/ProjectQuestions.h"

#include <QDateTime>
#include <QLocale>
#include <cerrno>
#include <utility>

#include "desk/core/durable/VolumeMove.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/QtStrings.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/project/lock/LockTexts.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace desk::ProjectQuestions {

namespace {

using host::UTF16String;
using host::ZString;

UTF16String Shown(const UTF16String& text) {
    return ToUTF16(ToDisplayText(text));
}

UTF16String ShownLocalTime(std::int64_t secondsSinceEpoch) {
    return ToUTF16(QLocale().toString(QDateTime::fromSecsSinceEpoch(secondsSinceEpoch), QLocale::ShortFormat));
}

UTF16String SaveButton() {
    return ZString("$$$/Desk/Project/Save=Save");
}
UTF16String CopyButton() {
    return ZString("$$$/Desk/Project/SaveAsCopy=Save as Copy");
}
UTF16String CancelButton() {
    return ZString("$$$/Desk/Dialogs/Cancel=Cancel");
}

void Tell(const UTF16String& title, const UTF16String& text) {
    Log(LogLevel::Info, host::UTF16to8(text));
    GetServices().mDialogs->ShowMessage(title, text, MessageKind::Failure);
}

/// The last button cancels.
Question MakeQuestion(UTF16String title, UTF16String text, host::UTF16StringVec buttons) {
    Question question;
    question.mTitle = std::move(title);
    question.mText = std::move(text);
    question.mButtons = std::move(buttons);
    question.mCancel = question.mButtons.size() - 1;
    return question;
}

Answer Ask(const Question& question) {
    const Answer answer = GetServices().mDialogs->Ask(question);
    Log(LogLevel::Info, host::UTF16to8(question.mText + u" - " + question.mButtons.at(answer.mButton)));
    return answer;
}

UTF16String DescribeError(int systemError) {
    return host::DescribeSystemError(systemError);
}

UTF16String DescribeLoss(const UTF16String& path, const LockRecord& holder) {
    if (!holder.mIsReadable)
        return ZString("$$$/Desk/Project/LockRemoved=Somebody has removed your lock on “@0”.", {NameOf(path)});
    return ZString("$$$/Desk/Project/LostTo=Your lock on “@0” was taken over: it is held by @1.",
                   {NameOf(path), DescribeHolder(holder)});
}

bool AskToCopy(UTF16String title, UTF16String text) {
    Question question = MakeQuestion(std::move(title), std::move(text), {CopyButton(), CancelButton()});
    question.mIsWarning = true;
    return Ask(question).mButton == 0;
}

}  // namespace

UTF16String NameOf(const UTF16String& path) {
    return Shown(host::PathUtils::GetFilePart(path));
}

UTF16String DescribeObstacle(const UTF16String& path, const ProjectLocking& locking) {
    const UTF16String name = NameOf(path);
    switch (locking.mObstacle) {
        case ProjectLocking::Obstacle::None:
            return {};
        case ProjectLocking::Obstacle::Held:
            return ZString("$$$/Desk/Project/HeldBy=“@0” is locked by @1.",
                           {name, DescribeHolder(locking.mHolder)});
        case ProjectLocking::Obstacle::TargetIsNoProject:
            return ZString(
                "$$$/Desk/Project/LinkToNoProject=“@0” is a link to a file that is no project, and "
                "cannot be locked.",
                {name});
        case ProjectLocking::Obstacle::Refused:
            break;
    }
    if (locking.mSystemError == ENAMETOOLONG)
        return ZString("$$$/Desk/Project/LockNameTooLong=“@0” cannot be locked. @1",
                       {name, DescribeReason({"take lock of", path, ENAMETOOLONG})});
    return ZString("$$$/Desk/Project/LockRefused=“@0” cannot be locked: @1.",
                   {name, DescribeError(locking.mSystemError)});
}

UTF16String DescribeTrouble(const UTF16String& path, const LockReport& report) {
    const UTF16String name = NameOf(path);
    const UTF16String folder = Shown(host::PathUtils::GetFullDirectoryPart(path));
    switch (report.mTrouble) {
        case LockReport::Trouble::FolderAway:
            return ZString(
                "$$$/Desk/Project/FolderGone=The folder of “@0” is not there: it was moved or removed, or its volume "
                "is not mounted.\n@1",
                {name, folder});
        case LockReport::Trouble::ProjectAway:
            return ZString(
                "$$$/Desk/Project/FileAndLockGone=Neither the file of “@0” nor your lock is in its folder any more: "
                "they were moved or removed, or the volume is not mounted.\n@1",
                {name, folder});
        case LockReport::Trouble::Unreadable:
            return ZString(
                "$$$/Desk/Project/LockUnreadable=What stands in the place of your lock on “@0” is no lock.",
                {name});
        case LockReport::Trouble::Refused:
        case LockReport::Trouble::None:
            break;
    }
    return ZString(
        "$$$/Desk/Project/LockNotTold=The volume does not show whether your lock on “@0” is still there: "
        "@1.",
        {name, DescribeError(report.mSystemError)});
}

void TellNotOpened(const UTF16String& path, const UTF16String& reason) {
    Tell(ZString("$$$/Desk/Project/NotOpened=The Project Was Not Opened"),
         ZString("$$$/Desk/Project/NotOpenedText=“@0” was not opened.\n@1", {NameOf(path), reason}));
}

void TellNotSaved(const UTF16String& path, const UTF16String& reason) {
    Tell(ZString("$$$/Desk/Project/NotSaved=The Project Was Not Saved"),
         ZString("$$$/Desk/Project/NotSavedText=“@0” was not saved; it still has its unsaved changes.\n@1",
                 {NameOf(path), reason}));
}

void TellMayBeSaved(const UTF16String& path, const UTF16String& reason, const UTF16String& kept) {
    UTF16String text = ZString(
        "$$$/Desk/Project/MayBeSavedText=“@0” may have been saved, or may not: the volume does not tell. It "
        "counts as unsaved until it is saved again.\n@1",
        {NameOf(path), reason});
    if (!kept.empty())
        text += u"\n" + ZString("$$$/Desk/Project/TextKept=Its text is in its file or in “@0”.", {Shown(kept)});
    Tell(ZString("$$$/Desk/Project/MayBeSaved=The Project May Not Have Been Saved"), text);
}

void TellNotCopied(const UTF16String& path, const UTF16String& reason) {
    Tell(ZString("$$$/Desk/Project/NotCopied=The Copy Was Not Made"),
         ZString("$$$/Desk/Project/NotCopiedText=The copy “@0” was not made.\n@1", {NameOf(path), reason}));
}

void TellNotReloaded(const UTF16String& path, const UTF16String& reason) {
    Tell(ZString("$$$/Desk/Project/NotReloaded=The Project Was Not Reloaded"),
         ZString("$$$/Desk/Project/NotReloadedText=“@0” was not reloaded, and stays as it was.\n@1",
                 {NameOf(path), reason}));
}

void TellNotMade(const UTF16String& path, const UTF16String& reason) {
    Tell(ZString("$$$/Desk/Project/NotMade=The Project Was Not Made"),
         ZString("$$$/Desk/Project/NotMadeText=“@0” was not made.\n@1", {NameOf(path), reason}));
}

void TellFailure(const UTF16String& path, const host::FileException& exception,
                 void (*tell)(const UTF16String& path, const UTF16String& reason)) {
    Log(LogLevel::Info, exception.what());
    if (exception.SystemError() == ECANCELED) return;
    const UTF16String reason = ToUTF16(ToDisplayText(DescribeReason(exception)));
    if (!dynamic_cast<const MoveInDoubt*>(&exception)) return tell(path, reason);
    Tell(
        ZString("$$$/Desk/Project/MayBeMade=The Project May Have Been Made"),
        ZString("$$$/Desk/Project/MayBeMadeText=“@0” may have been made, or may not: the volume does not tell. "
                "Look at it before it is used.\n@1",
                {NameOf(path), reason}));
}

void TellNotWritable(const UTF16String& path, const UTF16String& reason) {
    Tell(ZString("$$$/Desk/Project/NotWritable=The Project Stays Read-Only"),
         ZString("$$$/Desk/Project/NotWritableText=“@0” cannot be edited now.\n@1", {NameOf(path), reason}));
}

LockedAnswer AskAboutLock(const UTF16String& path, const ProjectLocking& locking) {
    const bool isHeld = locking.mObstacle == ProjectLocking::Obstacle::Held;
    const UTF16String readOnly = ZString("$$$/Desk/Project/OpenReadOnly=Open Read-Only");
    const UTF16String copy = ZString("$$$/Desk/Project/MakeACopy=Make a Copy");
    const UTF16String title = isHeld ? ZString("$$$/Desk/Project/Locked=Project Locked")
                                     : ZString("$$$/Desk/Project/CannotBeLocked=Project Cannot Be Locked");
    const UTF16String advice =
        isHeld ? ZString("$$$/Desk/Project/LockedAdvice=You can open it read-only, or edit a copy.")
               : ZString("$$$/Desk/Project/ReadOnlyAdvice=You can open it read-only.");
    const UTF16String text = DescribeObstacle(path, locking) + u"\n" + advice;
    const Answer answer = Ask(MakeQuestion(title, text,
                                           isHeld ? host::UTF16StringVec{readOnly, copy, CancelButton()}
                                                  : host::UTF16StringVec{readOnly, CancelButton()}));
    if (answer.mButton == 0) return LockedAnswer::OpenReadOnly;
    return isHeld && answer.mButton == 1 ? LockedAnswer::MakeCopy : LockedAnswer::Cancel;
}

SaveChoice AskToSave(const UTF16String& path, bool isReadOnly, bool offersApplyToAll) {
    UTF16String text =
        ZString("$$$/Desk/Project/SaveChangesText=“@0” has unsaved changes. Discarded changes are lost.",
                {NameOf(path)});
    if (isReadOnly)
        text += u"\n" +
                ZString("$$$/Desk/Project/SaveReadOnly=It is read-only now, and can be saved as a copy only.");
    Question question = MakeQuestion(ZString("$$$/Desk/Project/SaveChanges=Save Changes"), std::move(text),
                                     {isReadOnly ? CopyButton() : SaveButton(),
                                      ZString("$$$/Desk/Project/Discard=Discard"), CancelButton()});
    question.mOffersApplyToAll = offersApplyToAll && !isReadOnly;
    question.mIsWarning = true;
    const Answer answer = Ask(question);
    if (answer.mButton == question.mCancel) return {};
    return {answer.mButton == 0 ? SaveAnswer::Save : SaveAnswer::Discard, answer.mAppliesToAll};
}

ChangedAnswer AskAboutChange(const UTF16String& path, const FileComparison& found) {
    const bool isMissing = found.mOutcome == FileComparison::Outcome::Missing;
    const UTF16String text =
        isMissing
            ? ZString(
                  "$$$/Desk/Project/GoneText=The file of “@0” is no longer there: somebody has moved or "
                  "removed it.",
                  {NameOf(path)})
            : ZString(
                  "$$$/Desk/Project/ChangedText=The file of “@0” was changed at @1 by somebody who does not "
                  "hold its lock. To overwrite it loses what they have written.",
                  {NameOf(path), ShownLocalTime(found.mStatus.mModified / 1'000'000'000)});
    Question question = MakeQuestion(isMissing ? ZString("$$$/Desk/Project/Gone=Project File Is Gone")
                                               : ZString("$$$/Desk/Project/Changed=Project File Has Changed"),
                                     text,
                                     {CopyButton(),
                                      isMissing ? ZString("$$$/Desk/Project/SaveAgain=Save It Again")
                                                : ZString("$$$/Desk/Project/Overwrite=Overwrite"),
                                      CancelButton()});
    question.mIsWarning = true;
    const std::size_t button = Ask(question).mButton;
    if (button == question.mCancel) return ChangedAnswer::Cancel;
    return button == 0 ? ChangedAnswer::SaveAsCopy : ChangedAnswer::Overwrite;
}

ChangedAnswer AskAboutRecovered(const UTF16String& path, const ItemStatus& status) {
    Question question = MakeQuestion(
        ZString("$$$/Desk/Project/Changed=Project File Has Changed"),
        ZString(
            "$$$/Desk/Project/RecoveredText=The text that was recovered for “@0” is based on an older state of its "
            "file, which was changed at @1. To overwrite it loses what was written then.",
            {NameOf(path), ShownLocalTime(status.mModified / 1'000'000'000)}),
        {CopyButton(), ZString("$$$/Desk/Project/Overwrite=Overwrite"), CancelButton()});
    question.mIsWarning = true;
    const std::size_t button = Ask(question).mButton;
    if (button == question.mCancel) return ChangedAnswer::Cancel;
    return button == 0 ? ChangedAnswer::SaveAsCopy : ChangedAnswer::Overwrite;
}

bool AskToCopyWhileAway(const UTF16String& path, const LockReport& report) {
    return AskToCopy(
        ZString("$$$/Desk/Project/NotSaved=The Project Was Not Saved"),
        DescribeTrouble(path, report) + u"\n" +
            ZString("$$$/Desk/Project/AwayAdvice=Nothing was written. The project stays open as it is, "
                    "and can be saved once that is back; your changes can also be saved as a copy."));
}

bool AskToCopyAfterLoss(const UTF16String& path, const LockRecord& holder) {
    return AskToCopy(ZString("$$$/Desk/Project/LockLost=Lock Lost"),
                     DescribeLoss(path, holder) + u"\n" +
                         ZString("$$$/Desk/Project/LockLostAdvice=Nothing was overwritten. The project is "
                                 "read-only now; your changes "
                                 "can be saved as a copy."));
}

void TellLockLost(const UTF16String& path, const LockRecord& holder) {
    TellUser(DescribeLoss(path, holder) + u" " +
             ZString("$$$/Desk/Project/LockLostNotice=The project is read-only now; changes can be saved as a "
                     "copy."));
}

bool AskToCopyReadOnly(const UTF16String& path) {
    return AskToCopy(
        ZString("$$$/Desk/Project/ReadOnly=Project Is Read-Only"),
        ZString("$$$/Desk/Project/ReadOnlyText=“@0” is open read-only. Your changes can be saved as a copy.",
                {NameOf(path)}));
}

bool AskToReload(const UTF16String& path) {
    Question question =
        MakeQuestion(ZString("$$$/Desk/Project/Reload=Reload Project"),
                     ZString("$$$/Desk/Project/ReloadText=“@0” has unsaved changes, which are lost when it "
                             "is read from the disk again.",
                             {NameOf(path)}),
                     {CancelButton(), ZString("$$$/Desk/Project/DiscardAndReload=Discard and Reload")});
    question.mCancel = 0;
    question.mIsWarning = true;
    return Ask(question).mButton == 1;
}

}  // namespace desk::ProjectQuestions
