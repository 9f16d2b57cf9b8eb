#include "desk/app/FolderCheck.h"

#include <cerrno>
#include <filesystem>
#include <future>
#include <system_error>
#include <thread>

#include "desk/core/edges/FileSystem.h"
#include "desk/core/language/Localized.h"
#include "desk/core/names/QtStrings.h"
#include "desk/toolkit/Theme.h"
#include "host/core/Localizer.h"
#include "host/files/FileException.h"
#include "host/files/PathUtils.h"

namespace desk {

FolderCheck CheckFolder(FileSystem& fileSystem, const std::string& folder) noexcept {
    using Problem = FolderCheck::Problem;
    try {
        if (fileSystem.Status(folder, true).mKind != ItemKind::Folder) return {Problem::NoFolder, 0};
        fileSystem.TryFolder(folder);
        return {};
    } catch (const host::FileException& exception) {
        const int error = exception.SystemError();
        if (error == ENOTDIR) return {Problem::NoFolder, error};
        return {error == ENOENT ? Problem::Missing : Problem::Unreadable, error};
    } catch (...) {
        return {Problem::Unreadable, ENOMEM};
    }
}

FolderCheck CheckFolderWithin(FileSystem& fileSystem, const std::string& folder,
                              std::chrono::milliseconds limit) {
    std::promise<FolderCheck> promise;
    std::future<FolderCheck> result = promise.get_future();
    std::thread([&fileSystem, folder, done = std::move(promise)]() mutable {
        done.set_value(CheckFolder(fileSystem, folder));
    }).detach();
    if (result.wait_for(limit) != std::future_status::ready) return {FolderCheck::Problem::NoAnswer, 0};
    return result.get();
}

QString DescribeProblem(const FolderCheck& check, const std::string& folder) {
    using Problem = FolderCheck::Problem;
    const host::UTF16String path = ToUTF16(ToDisplayText(host::UTF8to16(folder)));
    const host::UTF16String reason = host::DescribeSystemError(check.mSystemError);
    switch (check.mProblem) {
        case Problem::None:
            break;
        case Problem::Missing:
            return Localized("$$$/Desk/Production/Missing=The folder “@0” does not exist.", {path});
        case Problem::NoFolder:
            return Localized("$$$/Desk/Production/NoFolder=“@0” is not a folder.", {path});
        case Problem::Unreadable:
            return Localized("$$$/Desk/Production/Unreadable=The folder “@0” cannot be read: @1.",
                             {path, reason});
        case Problem::NoAnswer:
            return Localized("$$$/Desk/Production/NoAnswer=The volume of the folder “@0” does not answer.",
                             {path});
    }
    return {};
}

std::string ToAbsolutePath(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return host::UTF16to8(host::PathUtils::ToNormalizedPath(host::UTF8to16(error ? path : absolute.string())));
}

}  // namespace desk
