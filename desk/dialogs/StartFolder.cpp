#include "desk/dialogs/StartFolder.h"

#include <QDir>
#include <future>
#include <memory>
#include <string>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/names/FolderPath.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/work/WorkerPool.h"
#include "host/files/FileException.h"

namespace desk {
namespace {

/// Asks for what the dialog will ask for, but for plain files: no volume is mounted on one.
void TouchItems(const std::string& folder) {
    FileSystem& fileSystem = *GetServices().mFileSystem;
    for (const FolderEntry& entry : fileSystem.ListFolder(folder)) {
        if (entry.mKind == ItemKind::File || entry.mKind == ItemKind::Other) continue;
        try {
            fileSystem.Status(JoinPath(folder, entry.mName), true);
        } catch (const host::FileException&) {
            // An error is an answer.
        }
    }
}

bool CanBeShown(const std::string& folder) {
    try {
        TouchItems(folder);
        return true;
    } catch (const host::FileException&) {
        return false;
    }
}

}  // namespace

QString FindStartFolder(const host::UTF16String& wanted, std::chrono::milliseconds limit) {
    const auto canBeShown = std::make_shared<std::promise<bool>>();
    std::future<bool> answer = canBeShown->get_future();
    const std::string folder = host::UTF16to8(wanted);
    GetServices().mWorkerPool->Submit([canBeShown, folder] { canBeShown->set_value(CanBeShown(folder)); });
    const bool hasAnswered = answer.wait_for(limit) == std::future_status::ready;
    if (!hasAnswered)
        Log(LogLevel::Info, "A dialog begins in the home folder: something in " + folder + " does not answer");
    return hasAnswered && answer.get() ? ToQString(wanted) : QDir::homePath();
}

}  // namespace desk
