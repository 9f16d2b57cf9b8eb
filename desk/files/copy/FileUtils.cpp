#include "host/files/FileUtils.h"

#include <cerrno>

#include "desk/core/durable/NewFile.h"
#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/work/AskVolume.h"
#include "desk/core/work/LongWork.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/files/disk/FileFailure.h"
#include "desk/files/live/LookAgain.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace host {

namespace {

void CopyOfKind(const UTF16String& from, const UTF16String& to, bool isFolder) {
    const UTF16String source = PathUtils::ToNormalizedPath(from);
    const UTF16String destination = PathUtils::ToNormalizedPath(to);
    const auto work = [&](desk::WorkProgress& progress) {
        const std::string path = UTF16to8(source);
        const desk::ItemKind kind = desk::GetServices().mFileSystem->Status(path, false).mKind;
        if (kind != desk::ItemKind::Link && (kind == desk::ItemKind::Folder) != isFolder)
            throw FileException("copy", source, isFolder ? ENOTDIR : EISDIR);
        desk::CopyItem(path, UTF16to8(destination), progress);
    };
    try {
        desk::RunLongWork(
            ZString("$$$/Vantor/Desk/Copies/CopyingFolder=Copying “@0”", {PathUtils::GetFullFilePart(source)}),
            work);
    } catch (const FileException& exception) {
        desk::TellNotCopied(source, exception);
        throw;
    }
    desk::LookAgainAround(destination);
}

}  // namespace

void FileUtils::Copy(const UTF16String& source, const UTF16String& destination) {
    CopyOfKind(source, destination, false);
}

void FileUtils::Copy(const Dir& source, const Dir& destination) {
    CopyOfKind(source.FullPath(), destination.FullPath(), true);
}

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
