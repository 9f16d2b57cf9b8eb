#pragma once

#include <string>

#include "desk/core/edges/Dialogs.h"
#include "desk/project/document/ProjectFile.h"
#include "desk/project/document/ProjectLocking.h"
#include "host/core/Strings.h"

/// What the document manager says and asks, through the process's `Dialogs`. All name the project. UI thread.
namespace desk::ProjectQuestions {

/// A project's name as it is shown: without folder and extension, escaped.
host::UTF16String NameOf(const host::UTF16String& path);
/// Why locks could not be had, as a sentence.
host::UTF16String DescribeObstacle(const host::UTF16String& path, const ProjectLocking& locking);

/// Something was not done; `reason` is a sentence.
void TellNotOpened(const host::UTF16String& path, const host::UTF16String& reason);
void TellNotSaved(const host::UTF16String& path, const host::UTF16String& reason);
void TellNotCopied(const host::UTF16String& path, const host::UTF16String& reason);
void TellNotReloaded(const host::UTF16String& path, const host::UTF16String& reason);
void TellNotMade(const host::UTF16String& path, const host::UTF16String& reason);
void TellNotWritable(const host::UTF16String& path, const host::UTF16String& reason);
/// `exception` has ended what was to make the project at `path`. Tells by `tell`, one of those above, that it
/// was not made, or that it may have been (`MoveInDoubt`); nothing when the user has cancelled. The operation
/// goes to the log.
void TellFailure(const host::UTF16String& path, const host::FileException& exception,
                 void (*tell)(const host::UTF16String& path, const host::UTF16String& reason));
/// It is not known whether something was done. `kept`: where the text may lie in place of its file; or empty.
void TellMayBeSaved(const host::UTF16String& path, const host::UTF16String& reason,
                    const host::UTF16String& kept);

enum class LockedAnswer { OpenReadOnly, MakeCopy, Cancel };
/// The project to be opened is held by somebody, or (then without the offer of a copy) cannot be locked.
LockedAnswer AskAboutLock(const host::UTF16String& path, const ProjectLocking& locking);

enum class SaveAnswer { Save, Discard, Cancel };
struct SaveChoice {
    SaveAnswer mAnswer = SaveAnswer::Cancel;
    /// Never with `Cancel`.
    bool mAppliesToAll = false;
};
/// The project has unsaved changes and is to be closed, or to become read-only. One that is read-only already
/// (`Save` means a copy then) gets an answer of its own.
SaveChoice AskToSave(const host::UTF16String& path, bool isReadOnly, bool offersApplyToAll);

enum class ChangedAnswer { SaveAsCopy, Overwrite, Cancel };
/// The file to be saved to is not what was read from it.
ChangedAnswer AskAboutChange(const host::UTF16String& path, const FileComparison& found);
/// The file to be saved to, now in the state `status`, is not what recovered text was based on.
ChangedAnswer AskAboutRecovered(const host::UTF16String& path, const ItemStatus& status);

/// Why nothing is known of the project's lock, as a sentence.
host::UTF16String DescribeTrouble(const host::UTF16String& path, const LockReport& report);
/// The project cannot be saved to its file now: that, or its folder, is away.
bool AskToCopyWhileAway(const host::UTF16String& path, const LockReport& report);
/// The project cannot be saved to its file: the lock was lost to `holder` (unreadable: to nobody).
bool AskToCopyAfterLoss(const host::UTF16String& path, const LockRecord& holder);
/// The project's lock was found lost while nothing was under way: told without a question.
void TellLockLost(const host::UTF16String& path, const LockRecord& holder);
/// The project cannot be saved to its file: it is read-only.
bool AskToCopyReadOnly(const host::UTF16String& path);

/// Unsaved changes would be lost.
bool AskToReload(const host::UTF16String& path);

}  // namespace desk::ProjectQuestions
