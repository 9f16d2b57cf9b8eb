#pragma once

#include <QJsonObject>
#include <string>

#include "desk/core/names/LockRecord.h"
#include "host/core/Export.h"

namespace desk {

/// Who keeps a record in the profile, which several programs may use at the same time, and may be on several
/// machines: the process, as a lock file names its holder.
enum class OwnerStanding {
    /// This process.
    Own,
    /// Another one that is running.
    Living,
    /// One that has ended, or whose machine has been started anew since.
    Gone,
    /// Of another machine, or of a container: nobody here can tell.
    Unknown,
};

/// This process, as it is written into its records. Any thread; reads /proc only.
ZUHOST_API LockRecord MakeRecordOwner();

/// `owner` as a member of a record: an object of the form that a lock file has (`docs/locking.md`). Any thread.
ZUHOST_API QJsonObject WriteRecordOwner(const LockRecord& owner);
/// What `WriteRecordOwner` has made; unreadable for what is no such object. Any thread.
ZUHOST_API LockRecord ReadRecordOwner(const QJsonObject& object);

/// What has become of the owner of a record that stands in `folder` (bytes). On a volume of this machine only
/// processes since its last start can be alive. May wait for the disk of the profile. Any thread.
ZUHOST_API OwnerStanding FindOwnerStanding(const LockRecord& owner, const std::string& folder);

}  // namespace desk
