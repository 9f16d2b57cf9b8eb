#include "host/dialogs/AskOpenFile.h"

#include <algorithm>

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "desk/core/names/QtStrings.h"
#include "host/core/Localizer.h"
#include "host/dialogs/MessageBox.h"
#include "host/files/PathUtils.h"

namespace host {
namespace {

/// Where the user chose files last; the next question begins there.
UTF16String& LastFolder() {
    static UTF16String sFolder;
    return sFolder;
}

}  // namespace

bool AskOpenFile(const UTF16String& title, UTF16StringVec& paths, const UTF16String& typeLabel,
                 const UTF16String& pattern, const UTF16String& extension, TopLevelWindow*) {
    UTF16StringVec chosen = desk::GetServices().mDialogs->AskFiles(title, LastFolder(), typeLabel, pattern);
    if (chosen.empty()) return false;
    LastFolder() = PathUtils::GetFullDirectoryPart(chosen.front());
    // A name can be typed past the filter.
    const auto isOther = [&](const UTF16String& path) {
        return !desk::ToQString(path).endsWith(desk::ToQString(extension), Qt::CaseInsensitive);
    };
    const auto other = std::ranges::find_if(chosen, isOther);
    if (other != chosen.end()) {
        MessageBox(title, ZString("$$$/Desk/Dialogs/WrongKind=“@0” is of another kind: a name that ends "
                                  "in @1 is needed.",
                                  {PathUtils::GetFullFilePart(*other), extension}));
        return false;
    }
    paths = std::move(chosen);
    return true;
}

}  // namespace host
