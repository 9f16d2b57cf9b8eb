#pragma once

#include "desk/core/edges/Desktop.h"
#include "desk/core/names/LockRecord.h"
#include "desk/project/lock/LockProtocol.h"

/// The record of a lock that somebody at another machine has just taken.
inline desk::LockRecord MakeForeignRecord(const desk::Desktop& desktop,
                                          const host::UTF16String& user = u"tomas",
                                          const host::UTF16String& machine = u"edit-bay-2") {
    desk::LockRecord record = desk::MakeLockRecord(desktop, user, machine);
    record.mMachineID = "3f1c9a5e7d2b4860a1e5c3f7092b6d82";
    return record;
}

/// One of this machine's, from before it was last started.
inline desk::LockRecord MakeDeadRecord(const desk::Desktop& desktop) {
    desk::LockRecord record = desk::MakeLockRecord(desktop, u"tomas", desktop.MachineName());
    record.mBootID = "99999999-2222-3333-4444-555555555555";
    record.mPid = 4'194'304;  // more than any system gives
    return record;
}
