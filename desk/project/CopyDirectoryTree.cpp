#include <cerrno>
#include <string>
#include <vector>

#include "desk/core/Services.h"
#include "desk/core/WorkProgress.h"
#include "desk/dialogs/LongWork.h"
#include "desk/files/FileFailure.h"
#include "desk/files/FileSystem.h"
#include "desk/files/FolderPath.h"
#include "desk/files/HostNames.h"
#include "desk/files/ItemCopier.h"
#include "desk/files/PosixErrors.h"
#include "host/core/Localizer.h"
#include "host/core/Logging.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"
#include "host/project/ProductionItems.h"

namespace desk {

namespace {

/// Copies the content of a folder into an empty one. It is copied into a hidden folder there, as a whole, so
/// that what shows is complete.
class TreeCopy {
public:
    TreeCopy(const std::string& from, const std::string& to)
        : mFrom(from), mTo(to), mHidden(JoinPath<std::string>(to, MakeTemporaryName())) {}

    void Run(WorkProgress& progress) {
        progress.SetItem(host::UTF8to16(mFrom.substr(mFrom.rfind('/') + 1)));
        if (!GetServices().mFileSystem->ListFolder(mTo).empty()) ThrowFileException("copy to", mTo, ENOTEMPTY);
        try {
            CopyItem(mFrom, mHidden, progress);
            Publish();
            GetServices().mFileSystem->CopyFolderAttributes(mFrom, mTo);
        } catch (...) {
            Undo();
            throw;
        }
    }

private:
    void Publish() {
        for (const FolderEntry& entry : GetServices().mFileSystem->ListFolder(mHidden)) {
            const std::string place = JoinPath<std::string>(mTo, entry.mName);
            MoveOnVolume(JoinPath<std::string>(mHidden, entry.mName), place);
            mPublished.push_back(place);
        }
        RemoveTree(mHidden);
    }
    /// What somebody else has put into the folder meanwhile stays, and the folder with it.
    void Undo() noexcept {
        mPublished.push_back(mHidden);
        for (const std::string& path : mPublished) TryTo([&] { RemoveTree(path); });
        TryTo([this] { GetServices().mFileSystem->RemoveFromTree(mTo, {}, true); });
    }
    template <class Action>
    static void TryTo(Action action) noexcept {
        try {
            action();
        } catch (const host::FileException& exception) {
            if (exception.SystemError() != ENOENT) host::LogException(exception, __PRETTY_FUNCTION__);
        }
    }

    const std::string mFrom;
    const std::string mTo;
    const std::string mHidden;
    std::vector<std::string> mPublished;
};

}  // namespace

}  // namespace desk

namespace host {

void Utilities::CopyDirectoryTree(const UTF16String& from, const UTF16String& to) {
    const UTF16String source = PathUtils::ToNormalizedPath(from);
    desk::TreeCopy copy(UTF16to8(source), UTF16to8(PathUtils::ToNormalizedPath(to)));
    try {
        desk::RunLongWork(
            ZString("$$$/Vantor/Desk/Copies/CopyingFolder=Copying “@0”", {PathUtils::GetFullFilePart(source)}),
            [&copy](desk::WorkProgress& progress) { copy.Run(progress); });
    } catch (const FileException& exception) {
        desk::TellNotCopied(source, exception);
        throw;
    }
}

}  // namespace host
