#include "desk/project/TrashRecords.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>

#include "desk/core/JsonFile.h"
#include "desk/core/QtStrings.h"
#include "desk/files/FileSystem.h"
#include "desk/files/FolderPath.h"
#include "desk/files/HostNames.h"
#include "desk/files/PosixErrors.h"
#include "desk/project/RecordTexts.h"

namespace desk {

namespace {

constexpr std::string_view kExtension = ".json";
constexpr int kVersion = 1;
constexpr std::size_t kLimit = 16384;
/// For everybody who works in the production.
constexpr unsigned kMode = 0644;

constexpr QLatin1String kVersionMember("version"), kName("name"), kFrom("from"), kUser("user"),
    kMachine("machine"), kMovedAt("movedAt");

/// Throws when something else than a folder stands at `path`. False when nothing does.
bool IsFolderThere(FileSystem& fileSystem, const std::string& path) {
    try {
        const ItemKind kind = fileSystem.Status(path, false).mKind;
        if (kind == ItemKind::Folder) return true;
        ThrowFileException("use folder", path, kind == ItemKind::Link ? ELOOP : ENOTDIR);
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != ENOENT) throw;
        return false;
    }
}

void MakeFolder(FileSystem& fileSystem, const std::string& path) {
    if (IsFolderThere(fileSystem, path)) return;
    try {
        fileSystem.CreateFolder(path);
    } catch (const host::FileException& exception) {
        // Somebody else may have made it meanwhile.
        if (exception.SystemError() != EEXIST || !IsFolderThere(fileSystem, path)) throw;
    }
}

std::optional<TrashRecord> Parse(const std::string& bytes) {
    const JsonFile file = ParseJsonObject(bytes);
    const QJsonObject& object = file.mObject;
    if (file.mState != JsonFile::State::Read || object.value(kVersionMember).toInt() != kVersion) return {};
    TrashRecord record;
    record.mName = FromPercentEncoded(object.value(kName).toString());
    record.mFrom = FromPercentEncoded(object.value(kFrom).toString());
    record.mUser = ToUTF16(object.value(kUser).toString());
    record.mMachine = ToUTF16(object.value(kMachine).toString());
    const auto movedAt = FromTimeText(object.value(kMovedAt).toString());
    if (record.mName.empty() || record.mFrom.empty() || !movedAt) return {};
    record.mMovedAt = *movedAt;
    return record;
}

std::optional<TrashRecord> Read(FileSystem& fileSystem, const std::string& path) {
    try {
        return Parse(fileSystem.ReadSmallFile(path, kLimit));
    } catch (const host::FileException&) {
        return {};
    }
}

}  // namespace

std::string GetTrashRecordsFolder(const std::string& trashFolder) {
    return JoinPath(trashFolder, kTrashRecordsName);
}

void MakeTrashRecordsFolder(FileSystem& fileSystem, const std::string& trashFolder) {
    MakeFolder(fileSystem, trashFolder);
    MakeFolder(fileSystem, GetTrashRecordsFolder(trashFolder));
}

void WriteTrashRecord(FileSystem& fileSystem, const std::string& trashFolder, const TrashRecord& record) {
    const QJsonObject object{{kVersionMember, kVersion},
                             {kName, ToPercentEncoded(record.mName)},
                             {kFrom, ToPercentEncoded(record.mFrom)},
                             {kUser, ToQString(record.mUser)},
                             {kMachine, ToQString(record.mMachine)},
                             {kMovedAt, ToTimeText(record.mMovedAt)}};
    MakeTrashRecordsFolder(fileSystem, trashFolder);
    fileSystem.CreateNewFile(
        JoinPath(GetTrashRecordsFolder(trashFolder), MakeNonce() + std::string(kExtension)),
        QJsonDocument(object).toJson().toStdString(), kMode);
}

std::vector<TrashRecord> ReadTrashRecords(FileSystem& fileSystem, const std::string& trashFolder) {
    const std::string folder = GetTrashRecordsFolder(trashFolder);
    std::vector<TrashRecord> records;
    if (!IsFolderThere(fileSystem, folder)) return records;
    for (const FolderEntry& entry : fileSystem.ListFolder(folder)) {
        if (!entry.mName.ends_with(kExtension)) continue;
        if (auto record = Read(fileSystem, JoinPath(folder, std::string_view(entry.mName))))
            records.push_back(std::move(*record));
    }
    std::ranges::stable_sort(records, {}, &TrashRecord::mMovedAt);
    return records;
}

}  // namespace desk
