#include "desk/files/disk/FileFailure.h"

#include <algorithm>
#include <cerrno>

#include "desk/core/durable/VolumeMove.h"
#include "desk/core/log/Log.h"
#include "desk/core/log/UserNotice.h"
#include "desk/core/names/HostNames.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace desk {

namespace {

/// The user knows no temporary of ours, nor what is in it: its folder is what cannot be written to.
host::UTF16String KnownPath(const host::UTF16String& path) {
    for (std::size_t slash = path.find(u'/'); slash != host::UTF16String::npos;) {
        const std::size_t end = path.find(u'/', slash + 1);
        const std::string name = host::UTF16to8(path.substr(slash + 1, end - slash - 1));
        if (IsHiddenName(name, ItemKind::File)) return path.substr(0, std::max<std::size_t>(slash, 1));
        slash = end;
    }
    return path;
}

host::UTF16String Describe(const char* key, const host::UTF16String& path,
                           const host::FileException& exception) {
    const bool isInDoubt = dynamic_cast<const MoveInDoubt*>(&exception) != nullptr;
    Log(isInDoubt ? LogLevel::Warning : LogLevel::Info, exception.what());
    if (exception.SystemError() == ECANCELED) return {};
    return host::ZString(key, {host::PathUtils::GetFullFilePart(path), DescribeReason(exception)});
}

}  // namespace

host::UTF16String DescribeReason(const host::FileException& exception) {
    switch (exception.SystemError()) {
        case EEXIST:
            return host::ZString("$$$/Vantor/Desk/Copies/Exists=Something with that name is there already.");
        case ENAMETOOLONG: {
            // How long it may be, where it is known which name is meant.
            const host::UTF16String name = host::PathUtils::GetFullFilePart(exception.Path());
            const host::UTF16String reason = host::PathUtils::DescribeInvalidFileName(name);
            return reason.empty() ? host::ZString("$$$/Vantor/Desk/Copies/LongName=The name is too long.")
                                  : reason;
        }
        case ENOSPC:
        case EDQUOT:
            return host::ZString("$$$/Vantor/Desk/Copies/NoRoom=There is no room left on the volume.");
        case ELOOP:
            return host::ZString("$$$/Vantor/Desk/Files/IsLink=“@0” is a link, which is not followed here.",
                                 {host::PathUtils::GetFullFilePart(exception.Path())});
        case EBUSY:
            return host::ZString("$$$/Vantor/Desk/Files/Busy=“@0” is in use or was changed meanwhile.",
                                 {host::PathUtils::GetFullFilePart(exception.Path())});
        default:
            return host::ZString(
                "$$$/Vantor/Desk/Copies/Reason=@0 (@1)",
                {host::DescribeSystemError(exception.SystemError()), KnownPath(exception.Path())});
    }
}

host::UTF16String DescribeNotMoved(const host::UTF16String& path, const host::FileException& exception) {
    host::UTF16String text = Describe("$$$/Vantor/Desk/Files/NotMoved=“@0” was not moved. @1", path, exception);
    const auto* doubt = dynamic_cast<const MoveInDoubt*>(&exception);
    if (!doubt) return text;
    return host::ZString(
        "$$$/Vantor/Desk/Files/InDoubt=“@0” may or may not have been moved: it stands at “@1”, at “@2”, or at "
        "both. @3",
        {host::PathUtils::GetFullFilePart(path), doubt->From(), doubt->To(), DescribeReason(*doubt)});
}

void TellFolderNotMade(const host::UTF16String& path, const host::FileException& exception) {
    const char* const text =
        dynamic_cast<const MoveInDoubt*>(&exception)
            ? "$$$/Vantor/Desk/Files/FolderMayBeMade=The folder “@0” may have been made, or may not: the volume "
              "does not tell. @1"
            : "$$$/Vantor/Desk/Files/FolderNotMade=The folder “@0” could not be made. @1";
    if (const host::UTF16String told = Describe(text, path, exception); !told.empty()) TellUser(told);
}

}  // namespace desk
