#include "desk/project/production/BrokenLocksLog.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <cerrno>
#include <chrono>
#include <string>

#include "desk/core/durable/NewFile.h"
#include "desk/core/durable/PosixErrors.h"
#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/project/production/Production.h"
#include "desk/project/production/TrashRecords.h"
#include "host/project/ProductionTrash.h"
#include "host/project/SharedProjectsManager.h"

namespace desk {

namespace {

constexpr std::string_view kFileName = "broken-locks.jsonl";
/// Everybody who works in the production adds to it.
constexpr unsigned kMode = 0666;

std::string MakeLine(const std::string& project, const LockRecord& broken) {
    const Desktop& desktop = *GetServices().mDesktop;
    const QJsonObject line{
        {QStringLiteral("brokenAt"), ToTimeText(std::chrono::system_clock::to_time_t(desktop.Now()))},
        {QStringLiteral("user"), ToQString(desktop.UserName())},
        {QStringLiteral("machine"), ToQString(desktop.MachineName())},
        {QStringLiteral("project"), ToPercentEncoded(project)},
        {QStringLiteral("owner"), ToQString(broken.mUser)},
        {QStringLiteral("ownerMachine"), ToQString(broken.mMachine)},
        {QStringLiteral("takenAt"), broken.mIsReadable ? ToTimeText(broken.mTakenAt) : QString()},
        {QStringLiteral("nonce"), QString::fromStdString(broken.mNonce)}};
    return QJsonDocument(line).toJson(QJsonDocument::Compact).toStdString() + '\n';
}

/// Throws when something stands there that is no file.
void ThrowIfNoFile(FileSystem& fileSystem, const std::string& path) {
    const ItemKind kind = fileSystem.Status(path, false).mKind;
    if (kind != ItemKind::File) ThrowFileException("append to", path, kind == ItemKind::Link ? ELOOP : EINVAL);
}

/// Makes the file with this line where there is none.
void AddLine(FileSystem& fileSystem, const std::string& path, const std::string& line) {
    try {
        return MakeNewFile(path, line, kMode);
    } catch (const host::FileException& exception) {
        if (exception.SystemError() != EEXIST) throw;
    }
    ThrowIfNoFile(fileSystem, path);
    fileSystem.AppendToFile(path, line);
}

void Append(const std::string& trashFolder, const std::string& line) {
    FileSystem& fileSystem = *GetServices().mFileSystem;
    try {
        if (!IsTrashFolderThere(fileSystem, trashFolder)) return;
        MakeTrashRecordsFolder(fileSystem, trashFolder);
        AddLine(fileSystem, JoinPath(GetTrashRecordsFolder(trashFolder), kFileName), line);
    } catch (const host::FileException& exception) {
        Log(LogLevel::Warning, std::string("A broken lock is not recorded: ") + exception.what());
    }
}

}  // namespace

void LogBrokenLock(const host::UTF16String& project, const LockRecord& broken) {
    if (!host::IsWithinCurrentZuProductionFolder(project)) return;
    const std::string folder = host::UTF16to8(Production::Instance().GetFolder());
    GetServices().mWorkerPool->Submit([trashFolder = host::UTF16to8(host::GetZuProductionTrashDirectoryPath()),
                                       line = MakeLine(MakeRelative(host::UTF16to8(project), folder), broken)] {
        Append(trashFolder, line);
    });
}

}  // namespace desk
