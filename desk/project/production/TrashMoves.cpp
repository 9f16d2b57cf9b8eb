#include "desk/project/production/TrashMoves.h"

#include <cerrno>
#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <utility>

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/MainThread.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/RecordTexts.h"
#include "desk/core/work/WorkerPool.h"
#include "desk/files/copy/FileMoves.h"
#include "desk/project/production/Production.h"
#include "desk/project/production/TrashRecords.h"
#include "host/core/Logging.h"
#include "host/files/FileException.h"
#include "host/project/ProductionItems.h"
#include "host/project/ProductionTrash.h"

namespace desk {

namespace {

void LogOnce(const std::string& trashFolder, const std::string& reason) {
    static std::set<std::string> sLogged;
    if (sLogged.insert(trashFolder).second)
        Log(LogLevel::Warning, "Where what is in " + trashFolder + " came from is not recorded: " + reason);
}

void WriteOnWorker(const std::string& trashFolder, const TrashRecord& record) {
    GetServices().mWorkerPool->Submit([=] {
        try {
            WriteTrashRecord(*GetServices().mFileSystem, trashFolder, record);
        } catch (const host::FileException& exception) {
            GetServices().mMainThread->Post(
                [trashFolder, reason = std::string(exception.what())] { LogOnce(trashFolder, reason); });
        }
    });
}

void Record(const MovedItem& item) {
    if (!host::IsInZuProductionTrash(host::UTF8to16(item.mTo), false) ||
        host::IsInZuProductionTrash(host::UTF8to16(item.mFrom), false))
        return;
    const Desktop& desktop = *GetServices().mDesktop;
    const std::string trashFolder = host::UTF16to8(host::GetZuProductionTrashDirectoryPath());
    TrashRecord record;
    record.mName = MakeRelative(item.mTo, trashFolder);
    record.mFrom = MakeRelative(item.mFrom, host::UTF16to8(Production::Instance().GetFolder()));
    record.mUser = desktop.UserName();
    record.mMachine = desktop.MachineName();
    record.mMovedAt = std::chrono::system_clock::to_time_t(desktop.Now());
    WriteOnWorker(trashFolder, record);
}

std::function<void(const host::UTF16StringVec&)> sTryToMoveToTrash;

}  // namespace

void RecordMovesToTrash() {
    static bool sIsRecording = false;
    if (!std::exchange(sIsRecording, true)) AddMoveObserver(Record);
}

bool TryToMoveToTrash(const host::UTF16StringVec& paths) {
    // It may be taken away while it runs.
    const auto function = sTryToMoveToTrash;
    if (!function) return false;
    try {
        function(paths);
    } catch (...) {
        host::LogCurrentException(__PRETTY_FUNCTION__);
    }
    return true;
}

}  // namespace desk

namespace host {

void Scripting::SetTryToMoveToSharedProjectsTrashFn(std::function<void(const UTF16StringVec& paths)> fn) {
    desk::sTryToMoveToTrash = std::move(fn);
}

}  // namespace host
