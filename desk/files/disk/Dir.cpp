#include "desk/core/durable/NewFile.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/files/live/LookAgain.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/FileUtils.h"
#include "host/files/PathUtils.h"

namespace host {

void FileUtils::CreateNewDirectory(const UTF16String& path) {
    try {
        Dir(path).Create();
    } catch (const FileException& exception) {
        // Somebody may have made it meanwhile.
        if (!Dir(path).Exists()) desk::TellFolderNotMade(PathUtils::ToNormalizedPath(path), exception);
        throw;
    }
}

bool Dir::Exists() const {
    const auto isFolder = [path = UTF16to8(mPath)] {
        try {
            return desk::GetServices().mFileSystem->Status(path, true).mKind == desk::ItemKind::Folder;
        } catch (const FileException&) {
            return false;
        }
    };
    const UTF16String name = PathUtils::GetFullFilePart(mPath);
    return desk::AskVolume(ZString("$$$/Vantor/Desk/Files/Checking=Checking “@0”", {name}), "read status of",
                           mPath, isFolder);
}

void Dir::Create() const {
    const std::string path = UTF16to8(PathUtils::ToNormalizedPath(mPath));
    desk::RunLongWork(
        ZString("$$$/Vantor/Desk/Files/MakingFolder=Making Folder “@0”", {PathUtils::GetFullFilePart(mPath)}),
        [&](desk::WorkProgress&) { desk::MakeNewFolder(path); });
    desk::LookAgainAround(mPath);
}

}  // namespace host
