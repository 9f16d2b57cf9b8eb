#include "desk/project/production/TrashRecords.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>
#include <mutex>
#include <set>

#include "desk/core/durable/NewFile.h"
#include "desk/core/durable/PosixErrors.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/HostNames.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/project/lock/Leftovers.h"

namespace desk {

namespace {

constexpr std::string_view kExtension = ".json";
constexpr int kVersion = 2;
/// For everybody who works in the production.
constexpr unsigned kMode = 0644;

constexpr QLatin1String kVersionMember("version"), kItems("items"), kName("name"), kFrom("from"), kUser("user"),
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

/// No view lists this folder: what killed processes have left there goes when this one first adds to it.
void SweepOnce(FileSystem& fileSystem, const std::string& folder) {
    static std::mutex sMutex;
    static std::set<std::string> sSwept;
    {
        const std::lock_guard lock(sMutex);
        if (!sSwept.insert(folder).second) return;
    }
    if (const Desktop* desktop = GetServices().mDesktop) SweepLeftovers(fileSystem, *desktop, folder);
}

}  // namespace

bool IsTrashFolderThere(FileSystem& fileSystem, const std::string& trashFolder) {
    return IsFolderThere(fileSystem, trashFolder);
}

std::string GetTrashRecordsFolder(const std::string& trashFolder) {
    return JoinPath(trashFolder, kTrashRecordsName);
}

void MakeTrashRecordsFolder(FileSystem& fileSystem, const std::string& trashFolder) {
    MakeFolder(fileSystem, trashFolder);
    MakeFolder(fileSystem, GetTrashRecordsFolder(trashFolder));
}

void WriteTrashRecord(FileSystem& fileSystem, const std::string& trashFolder, const TrashRecord& record) {
    QJsonArray items;
    for (const TrashRecord::Item& item : record.mItems)
        items.append(QJsonObject{{kName, ToPercentEncoded(item.mName)}, {kFrom, ToPercentEncoded(item.mFrom)}});
    const QJsonObject object{{kVersionMember, kVersion},
                             {kItems, items},
                             {kUser, ToQString(record.mUser)},
                             {kMachine, ToQString(record.mMachine)},
                             {kMovedAt, ToTimeText(record.mMovedAt)}};
    MakeTrashRecordsFolder(fileSystem, trashFolder);
    const std::string folder = GetTrashRecordsFolder(trashFolder);
    SweepOnce(fileSystem, folder);
    MakeFileOfOwnName(fileSystem, JoinPath(folder, MakeNonce() + std::string(kExtension)),
                      QJsonDocument(object).toJson().toStdString(), kMode);
}

}  // namespace desk
