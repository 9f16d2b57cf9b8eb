#include "desk/project/production/BreakLock.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/project/lock/Leftovers.h"
#include "desk/project/lock/LockHolder.h"
#include "desk/project/lock/LockTexts.h"
#include "desk/project/production/BrokenLocksLog.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace desk {
namespace {

using host::UTF16String;
using Outcome = LockBreaking::Outcome;
using namespace std::chrono_literals;

constexpr auto kStep = 50ms;
constexpr int kRemovalTries = 5;

UTF16String Title() {
    return host::ZString("$$$/Desk/BreakLock/Title=Break Lock");
}

UTF16String NameOfProject(const UTF16String& path) {
    return ToUTF16(ToDisplayText(host::PathUtils::GetFilePart(path)));
}

void Tell(const UTF16String& text, MessageKind kind) {
    GetServices().mDialogs->ShowMessage(Title(), text, kind);
}

/// Empty when it is not known.
UTF16String DescribeLivingHolder(const LockRecord& record) {
    const Desktop& desktop = *GetServices().mDesktop;
    const bool isAlive =
        IsOfThisMachine(record, desktop) && FindProcessState(record, desktop) == ProcessState::Alive;
    if (!isAlive) return {};
    return u"\n\n" + host::ZString(
                         "$$$/Desk/BreakLock/Alive=The program that holds the lock is still running on this "
                         "machine, as process @0. Close the project there, if you can.",
                         {host::NumberToString(static_cast<long long>(record.mPid))});
}

bool Confirm(const UTF16String& path, const StandingLock& lock) {
    const UTF16String text = host::ZString(
        "$$$/Desk/BreakLock/Question=“@0” is locked by @1.\n\nIf it is still open there, changes "
        "that are "
        "not saved yet can then be saved as a copy only. Break the lock only if you know that nobody works on "
        "the "
        "project.",
        {NameOfProject(path), DescribeHolder(lock.mRecord)});
    const Answer answer =
        GetServices().mDialogs->Ask({.mTitle = Title(),
                                     .mText = text + DescribeLivingHolder(lock.mRecord),
                                     .mButtons = {host::ZString("$$$/Desk/Dialogs/Cancel=Cancel"),
                                                  host::ZString("$$$/Desk/BreakLock/Break=Break Lock")},
                                     .mCancel = 0,
                                     .mIsWarning = true});
    return answer.mButton == 1;
}

/// False when the user has cancelled.
bool Wait(std::chrono::milliseconds time, const WorkProgress& progress) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (std::chrono::steady_clock::now() < end) {
        if (progress.IsCancelled()) return false;
        std::this_thread::sleep_for(kStep);
    }
    return !progress.IsCancelled();
}

void RemoveRemains(LockProtocol& protocol) {
    for (const LockRemains& remains : protocol.TakeRemains()) {
        LockRelease release = protocol.RemoveRemains(remains);
        for (int tries = 1; release == LockRelease::Retry && tries < kRemovalTries; ++tries) {
            std::this_thread::sleep_for(kStep * 4);
            release = protocol.RemoveRemains(remains);
        }
        if (release == LockRelease::Retry) Log(LogLevel::Warning, "could not remove " + remains.mPath);
        if (!remains.mTemporary.empty()) SweepAttempt(remains);
    }
}

/// Waits for the volume: on a worker.
LockBreaking Break(const StandingLock& lock, const LockRecord& mine, BreakWait wait,
                   const WorkProgress& progress) {
    LockProtocol protocol(*GetServices().mFileSystem, *GetServices().mDesktop);
    const std::chrono::milliseconds time = wait.value_or(FindTimeToBreak(lock.mPath));
    LockBreaking breaking = protocol.Break(lock.mPath, lock.mSeen, mine, [&] { return Wait(time, progress); });
    RemoveRemains(protocol);
    return breaking;
}

LockBreaking BreakWhileWindowLives(const UTF16String& path, const StandingLock& lock, BreakWait wait) {
    const Desktop& desktop = *GetServices().mDesktop;
    const LockRecord mine = MakeLockRecord(desktop, desktop.UserName(), desktop.MachineName());
    LockBreaking breaking;
    RunLongWork(host::ZString("$$$/Desk/BreakLock/Working=Breaking the Lock"), [&](WorkProgress& progress) {
        progress.SetItem(NameOfProject(path));
        breaking = Break(lock, mine, wait, progress);
    });
    return breaking;
}

UTF16String DescribeOutcome(const UTF16String& path, const LockBreaking& breaking) {
    const UTF16String name = NameOfProject(path);
    if (breaking.mOutcome == Outcome::Guarded)
        return host::ZString(
            "$$$/Desk/BreakLock/Guarded=The lock of “@0” was not broken: it is just being broken by "
            "@1.",
            {name, DescribeHolder(breaking.mGuard)});
    if (breaking.mOutcome == Outcome::Changed)
        return host::ZString(
            "$$$/Desk/BreakLock/Changed=The lock of “@0” was not broken: it has changed meanwhile. "
            "Look "
            "again who holds it.",
            {name});
    return host::ZString("$$$/Desk/BreakLock/Failed=The lock of “@0” was not broken: @1.",
                         {name, host::DescribeSystemError(breaking.mSystemError)});
}

/// Somebody began to break the lock, and may have died over it on a machine that does not come back.
LockBreaking BreakGuard(const UTF16String& path, const StandingLock& lock, const LockRecord& guard,
                        BreakWait wait) {
    const Answer answer = GetServices().mDialogs->Ask(
        {.mTitle = Title(),
         .mText = host::ZString("$$$/Desk/BreakLock/GuardQuestion=The lock of “@0” is being broken "
                                "already, by @1. If that "
                                "goes on for minutes, it was interrupted, and you can take it over.",
                                {NameOfProject(path), DescribeHolder(guard)}),
         .mButtons = {host::ZString("$$$/Desk/Dialogs/Cancel=Cancel"),
                      host::ZString("$$$/Desk/BreakLock/TakeOver=Take Over")},
         .mCancel = 0,
         .mIsWarning = true});
    if (answer.mButton != 1) return {Outcome::Cancelled, {}, 0};
    StandingLock standing;
    standing.mPath = LockProtocol::FindGuardPath(lock.mPath, lock.mSeen);
    bool isThere = false;
    RunLongWork(Title(), [&](WorkProgress&) {
        LockProtocol protocol(*GetServices().mFileSystem, *GetServices().mDesktop);
        const auto seen = protocol.Look(standing.mPath);
        isThere = seen.has_value();
        if (isThere) standing.mSeen = *seen;
    });
    return isThere ? BreakWhileWindowLives(path, standing, wait) : LockBreaking{Outcome::Broken, {}, 0};
}

bool IsUnknown(const StandingLock& lock) {
    return lock.mSeen.mSystemError != 0;
}

/// The first lock that is not this process's; that there is none, or that nobody can tell, is told.
std::optional<StandingLock> FindLockToBreak(const UTF16String& path, const std::string& filePath) {
    std::vector<StandingLock> locks;
    RunLongWork(Title(), [&](WorkProgress&) { locks = FindStandingLocks(path, filePath); });
    if (const auto unknown = std::ranges::find_if(locks, IsUnknown); unknown != locks.end()) {
        Tell(DescribeOutcome(path, {Outcome::Failed, {}, unknown->mSeen.mSystemError}), MessageKind::Failure);
        return {};
    }
    const auto lock = std::ranges::find_if_not(locks, [](const StandingLock& each) {
        return FindLockHolder(each.mRecord) == LockHolder::ThisProcess;
    });
    if (locks.empty()) {
        Tell(host::ZString("$$$/Desk/BreakLock/None=Nobody holds a lock on “@0” any more.",
                           {NameOfProject(path)}),
             MessageKind::Information);
        return {};
    }
    if (lock == locks.end()) {
        Tell(host::ZString("$$$/Desk/BreakLock/Own=You hold the lock on “@0” yourself, in this "
                           "window. It goes when the "
                           "project is closed or switched to read-only.",
                           {NameOfProject(path)}),
             MessageKind::Failure);
        return {};
    }
    return *lock;
}

void NoteBroken(const UTF16String& path, const StandingLock& lock) {
    const LockRecord& record = lock.mRecord;
    const std::string holder = record.mIsReadable
                                   ? host::UTF16to8(record.mUser) + " on " + host::UTF16to8(record.mMachine)
                                   : "an unknown user";
    Log(LogLevel::Info, "broke the lock " + lock.mPath + " of " + holder);
    LogBrokenLock(path, record);
}

}  // namespace

std::vector<StandingLock> FindStandingLocks(const UTF16String& path, const std::string& filePath) {
    LockProtocol protocol(*GetServices().mFileSystem, *GetServices().mDesktop);
    std::vector<StandingLock> locks;
    for (const std::string& lockPath : {GetLockPath(path), GetLockPath(host::UTF8to16(filePath))}) {
        if (!locks.empty() && locks.front().mPath == lockPath) continue;
        const auto seen = protocol.Look(lockPath);
        if (seen) locks.push_back({lockPath, *seen, ParseLockRecord(seen->mBytes.value_or(""))});
    }
    return locks;
}

bool BreakProjectLock(const UTF16String& path, const std::string& filePath, BreakWait wait) {
    const std::optional<StandingLock> lock = FindLockToBreak(path, filePath);
    if (!lock || !Confirm(path, *lock)) return false;
    LockBreaking breaking = BreakWhileWindowLives(path, *lock, wait);
    if (breaking.mOutcome == Outcome::Guarded) {
        breaking = BreakGuard(path, *lock, breaking.mGuard, wait);
        if (breaking.mOutcome == Outcome::Broken) breaking = BreakWhileWindowLives(path, *lock, wait);
    }
    if (breaking.mOutcome == Outcome::Broken)
        NoteBroken(path, *lock);
    else if (breaking.mOutcome != Outcome::Cancelled)
        Tell(DescribeOutcome(path, breaking), MessageKind::Failure);
    return breaking.mOutcome == Outcome::Broken;
}

}  // namespace desk
