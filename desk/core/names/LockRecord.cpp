#include "desk/core/names/LockRecord.h"

#include <unistd.h>

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <limits>
#include <tuple>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/ProcessFacts.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/core/settings/JsonFile.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

constexpr std::int64_t kVersion = 1;
constexpr qsizetype kLongestName = 255;
constexpr qsizetype kLongestID = 128;
constexpr std::size_t kNonceDigits = 32;

constexpr std::u16string_view kPrefix = u".";
constexpr std::u16string_view kSuffix = u".lock";

constexpr QLatin1String kVersionKey("version");
constexpr QLatin1String kNonceKey("nonce");
constexpr QLatin1String kUserKey("user");
constexpr QLatin1String kMachineKey("machine");
constexpr QLatin1String kMachineIDKey("machineId");
constexpr QLatin1String kBootIDKey("bootId");
constexpr QLatin1String kPidNamespaceKey("pidNamespace");
constexpr QLatin1String kPidKey("pid");
constexpr QLatin1String kProcessStartKey("processStart");
constexpr QLatin1String kTakenAtKey("takenAt");

/// Takes typed values out of a JSON object and notes whether all were as they must be.
class Fields {
public:
    explicit Fields(const QJsonObject& object) : mObject(object) {}

    bool AreGood() const { return mAreGood; }
    void Require(bool condition) { mAreGood = mAreGood && condition; }

    std::int64_t Integer(QLatin1String key, std::int64_t least, std::int64_t most) {
        const QJsonValue value = mObject.value(key);
        const std::int64_t number = value.toInteger(0);
        // What is no number, a fraction, or beyond 64 bits gives the default, whatever it is.
        Require(number == value.toInteger(1) && number >= least && number <= most);
        return number;
    }
    QString Text(QLatin1String key, qsizetype longest) {
        const QJsonValue value = mObject.value(key);
        const QString text = value.toString();
        Require(value.isString() && text.size() <= longest && !text.contains(QChar(u'\0')));
        return text;
    }
    QString Name(QLatin1String key) {
        const QString name = Text(key, kLongestName);
        Require(!name.isEmpty());
        return name;
    }
    std::int64_t Time(QLatin1String key) {
        const QString text = Text(key, kLongestID);
        const QDateTime time = QDateTime::fromString(text, Qt::ISODate);
        // "9999-12-31T24:00:00Z" is a time of a year that has no such text.
        const int year = time.toUTC().date().year();
        Require(time.isValid() && text.endsWith(u'Z') && year >= 1 && year <= 9999);
        return time.toSecsSinceEpoch();
    }

private:
    const QJsonObject& mObject;
    bool mAreGood = true;
};

bool IsNonce(const std::string& text) {
    return text.size() == kNonceDigits && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

}  // namespace

host::UTF16String GetLockFileName(const host::UTF16String& projectName) {
    return host::UTF16String(kPrefix) + projectName + host::UTF16String(kSuffix);
}

host::UTF16String GetProjectNameOfLockFile(std::u16string_view lockName) {
    if (!lockName.starts_with(kPrefix) || !lockName.ends_with(kSuffix)) return {};
    lockName.remove_prefix(kPrefix.size());
    if (lockName.size() <= kSuffix.size()) return {};
    lockName.remove_suffix(kSuffix.size());
    host::UTF16String projectName(lockName);
    return host::IsVantorProjectFile(projectName) ? projectName : host::UTF16String();
}

std::string GetLockPath(const host::UTF16String& projectPath) {
    return host::UTF16to8(host::PathUtils::GetFullDirectoryPart(projectPath) +
                          GetLockFileName(host::PathUtils::GetFullFilePart(projectPath)));
}

std::string WriteLockRecord(const LockRecord& record) {
    const QJsonObject object{
        {kVersionKey, static_cast<qint64>(kVersion)},
        {kNonceKey, ToQStringFromUTF8(record.mNonce)},
        {kUserKey, ToQString(record.mUser)},
        {kMachineKey, ToQString(record.mMachine)},
        {kMachineIDKey, ToQStringFromUTF8(record.mMachineID)},
        {kBootIDKey, ToQStringFromUTF8(record.mBootID)},
        {kPidNamespaceKey, static_cast<qint64>(record.mPidNamespace)},
        {kPidKey, static_cast<qint64>(record.mPid)},
        {kProcessStartKey, static_cast<qint64>(record.mProcessStart)},
        {kTakenAtKey, ToTimeText(record.mTakenAt)},
    };
    return QJsonDocument(object).toJson(QJsonDocument::Compact).toStdString() + '\n';
}

LockRecord ParseLockRecord(const std::string& bytes) {
    if (bytes.size() > kLockFileLimit) return {};
    const JsonFile file = ParseJsonObject(bytes);
    if (file.mState != JsonFile::State::Read) return {};
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    Fields fields(file.mObject);
    fields.Integer(kVersionKey, kVersion, kVersion);
    LockRecord record;
    record.mNonce = ToUTF8(fields.Text(kNonceKey, kNonceDigits));
    fields.Require(IsNonce(record.mNonce));
    record.mUser = ToUTF16(fields.Name(kUserKey));
    record.mMachine = ToUTF16(fields.Name(kMachineKey));
    record.mMachineID = ToUTF8(fields.Text(kMachineIDKey, kLongestID));
    record.mBootID = ToUTF8(fields.Text(kBootIDKey, kLongestID));
    record.mPidNamespace = static_cast<std::uint64_t>(fields.Integer(kPidNamespaceKey, 0, kMost));
    record.mPid = fields.Integer(kPidKey, 0, std::numeric_limits<std::int32_t>::max());
    record.mProcessStart = static_cast<std::uint64_t>(fields.Integer(kProcessStartKey, 0, kMost));
    record.mTakenAt = fields.Time(kTakenAtKey);
    if (!fields.AreGood()) return {};
    record.mIsReadable = true;
    return record;
}

std::optional<LockRecord> ReadLockRecord(FileSystem& fileSystem, const std::string& path) {
    try {
        return ParseLockRecord(fileSystem.ReadSmallFile(path, kLockFileLimit));
    } catch (const host::FileException& exception) {
        const int error = exception.SystemError();
        if (error == ENOENT || error == ENOTDIR) return {};
        // No lock file can have a name that is too long; that the whole path is too long says nothing.
        if (error == ENAMETOOLONG && path.size() - (path.rfind('/') + 1) > NAME_MAX) return {};
        return LockRecord();
    }
}

LockRecord MakeLockRecord(const Desktop& desktop, const host::UTF16String& user,
                          const host::UTF16String& machine) {
    LockRecord record;
    record.mIsReadable = true;
    record.mNonce = MakeNonce();
    record.mUser = user.substr(0, kLongestName);
    record.mMachine = machine.substr(0, kLongestName);
    record.mMachineID = desktop.MachineID();
    record.mBootID = desktop.BootID();
    const OwnProcess own = GetOwnProcess();
    record.mPidNamespace = own.mPidNamespace;
    record.mPid = own.mPid;
    record.mProcessStart = own.mStart;
    record.mTakenAt = std::chrono::system_clock::to_time_t(desktop.Now());
    return record;
}

bool AreOfOneProcess(const LockRecord& a, const LockRecord& b) {
    const auto identity = [](const LockRecord& record) {
        return std::tie(record.mMachineID, record.mBootID, record.mPidNamespace, record.mPid,
                        record.mProcessStart);
    };
    return a.mIsReadable && b.mIsReadable && !a.mMachineID.empty() && !a.mBootID.empty() &&
           a.mPidNamespace != 0 && a.mPid != 0 && identity(a) == identity(b);
}

bool IsOfThisMachine(const LockRecord& record, const Desktop& desktop) {
    return record.mIsReadable && !record.mMachineID.empty() && record.mMachineID == desktop.MachineID() &&
           !record.mMachine.empty() && record.mMachine == desktop.MachineName();
}

ProcessState FindProcessState(const LockRecord& record, const Desktop& desktop) {
    const std::string bootID = desktop.BootID();
    if (record.mBootID.empty() || bootID.empty()) return ProcessState::Unknown;
    if (record.mBootID != bootID) return ProcessState::Gone;
    if (record.mPidNamespace == 0 || record.mPidNamespace != GetOwnProcess().mPidNamespace)
        return ProcessState::Unknown;
    const std::optional<ProcessFacts> process = ReadProcessFacts(record.mPid);
    if (!process) return IsPidFree(record.mPid) ? ProcessState::Gone : ProcessState::Unknown;
    const bool isGone = process->mHasEnded || process->mStart != record.mProcessStart;
    return isGone ? ProcessState::Gone : ProcessState::Alive;
}

bool IsLockStale(const LockRecord& record, const Desktop& desktop) {
    return IsOfThisMachine(record, desktop) && FindProcessState(record, desktop) == ProcessState::Gone;
}

}  // namespace desk
