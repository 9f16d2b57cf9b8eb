#include "desk/project/production/ProjectCopy.h"

#include <cerrno>
#include <system_error>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/UniqueNames.h"
#include "desk/core/work/WorkProgress.h"
#include "desk/files/copy/ItemCopier.h"
#include "desk/files/disk/FileFailure.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"
#include "host/project/ProjectFiles.h"

namespace desk {

namespace {

/// How often a name may be taken by somebody else between our look and our copy.
constexpr int kTries = 100;

/// The file whose content is copied; throws when it is none.
std::string FindSource(const host::UTF16String& source) {
    std::string path = host::UTF16to8(source);
    FileSystem& fileSystem = *GetServices().mFileSystem;
    if (fileSystem.Status(path, false).mKind == ItemKind::Link) path = fileSystem.ResolveLinks(path);
    const ItemKind kind = fileSystem.Status(path, false).mKind;
    if (kind != ItemKind::File)
        throw host::FileException("copy", source, kind == ItemKind::Folder ? EISDIR : EINVAL);
    return path;
}

void CheckName(const host::UTF16String& destination) {
    const host::UTF16String name = host::PathUtils::GetFullFilePart(destination);
    const NameParts parts = SplitName(name);
    if (parts.mExtension.empty()) throw host::FileException("copy to", destination, EINVAL);
    if (MakeName(parts, {}) != name) throw host::FileException("copy to", destination, ENAMETOOLONG);
}

}  // namespace

void ProjectCopy::Run(WorkProgress& progress) noexcept {
    try {
        Copy(progress);
    } catch (const MoveInDoubt& doubt) {
        mError = doubt;
        mIsInDoubt = true;
    } catch (const host::FileException& exception) {
        mError = exception;
    } catch (const std::exception& exception) {
        mOtherError = exception.what();
    }
}

void ProjectCopy::Copy(WorkProgress& progress) {
    progress.SetItem(host::PathUtils::GetFullFilePart(mSource));
    CheckName(mDestination);
    const std::string source = FindSource(mSource);
    const host::UTF16String wanted = mDestination;
    const auto isTaken = [](const host::UTF16String& path) {
        return IsTaken(*GetServices().mFileSystem, path);
    };
    for (int tries = 1;; ++tries) {
        if (mMayRename && isTaken(wanted)) mDestination = MakeUniquePath(wanted, 1, u"_", isTaken);
        try {
            return CopyItem(source, host::UTF16to8(mDestination), progress);
        } catch (const host::FileException& exception) {
            if (!mMayRename || exception.SystemError() != EEXIST || tries == kTries) throw;
        }
    }
}

host::UTF16String ProjectCopy::DescribeFailure() const {
    if (!mError) return host::UTF8to16(mOtherError);
    if (mIsInDoubt) return DescribeDoubtfulCopy(mSource, mDestination, *mError);
    const int error = mError->SystemError();
    if (error == EISDIR || error == EINVAL)
        return host::ZString("$$$/Vantor/Desk/Copies/NoProject=This is not a project file.");
    return DescribeReason(*mError);
}

void ProjectCopy::TellFailure() const {
    Log(LogLevel::Warning, mError ? mError->what() : "copy " + host::UTF16to8(mSource) + ": " + mOtherError);
    if (mIsInDoubt) return TellUser(DescribeFailure());
    TellUser(host::ZString("$$$/Vantor/Desk/Copies/NotCopied=“@0” was not copied. @1",
                           {host::PathUtils::GetFullFilePart(mSource), DescribeFailure()}));
}

}  // namespace desk
