#include "desk/core/names/RecordOwner.h"

#include <QJsonDocument>

#include "desk/core/durable/VolumeProperties.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/settings/JsonFile.h"
#include "host/files/FileException.h"

namespace desk {

namespace {

bool IsOnOwnVolume(const std::string& folder) {
    try {
        return DoesVolumeReportChanges(GetServices().mFileSystem->VolumeType(folder));
    } catch (const host::FileException&) {
        return false;
    }
}

bool AreOfOneBoot(const LockRecord& a, const LockRecord& b) {
    return a.mMachineID == b.mMachineID && a.mBootID == b.mBootID && !a.mMachineID.empty() &&
           !a.mBootID.empty();
}

}  // namespace

LockRecord MakeRecordOwner() {
    const Desktop& desktop = *GetServices().mDesktop;
    return MakeLockRecord(desktop, desktop.UserName(), desktop.MachineName());
}

QJsonObject WriteRecordOwner(const LockRecord& owner) {
    return ParseJsonObject(WriteLockRecord(owner)).mObject;
}

LockRecord ReadRecordOwner(const QJsonObject& object) {
    return ParseLockRecord(QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString());
}

OwnerStanding FindOwnerStanding(const LockRecord& owner, const std::string& folder) {
    if (!owner.mIsReadable) return OwnerStanding::Unknown;
    const LockRecord own = MakeRecordOwner();
    if (AreOfOneProcess(owner, own)) return OwnerStanding::Own;
    const Desktop& desktop = *GetServices().mDesktop;
    if (IsLockStale(owner, desktop)) return OwnerStanding::Gone;
    const bool areBootsKnown = !owner.mBootID.empty() && !own.mBootID.empty();
    if (areBootsKnown && owner.mBootID != own.mBootID && IsOnOwnVolume(folder)) return OwnerStanding::Gone;
    const bool isComparable =
        AreOfOneBoot(owner, own) && owner.mPidNamespace != 0 && owner.mPidNamespace == own.mPidNamespace;
    if (!isComparable) return OwnerStanding::Unknown;
    // Of this boot, whatever the machine was called when it was written.
    return FindProcessState(owner, desktop) == ProcessState::Gone ? OwnerStanding::Gone : OwnerStanding::Living;
}

}  // namespace desk
