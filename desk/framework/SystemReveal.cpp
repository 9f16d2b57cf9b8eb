#include "host/framework/SystemReveal.h"

#include "desk/core/Desktop.h"
#include "desk/core/Services.h"
#include "desk/core/UserNotice.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace host {
namespace {

using desk::Desktop;

void Reveal(const UTF16StringVec& paths, Desktop::Reveal reveal) {
    if (paths.empty()) return;
    std::vector<std::string> bytes;
    for (const UTF16String& path : paths) bytes.push_back(UTF16to8(PathUtils::ToNormalizedPath(path)));
    desk::GetServices().mDesktop->ShowInFileBrowser(
        bytes, reveal, [first = paths.front()](const std::string& why) {
            desk::TellUser(
                ZString("$$$/Desk/Reveal/Failed=\u201C@0\u201D cannot be shown in the file browser: @1",
                        {PathUtils::GetFullFilePart(first), UTF8to16(why)}));
        });
}

}  // namespace

void RevealAndSelectFile(const UTF16String& path) {
    Reveal({path}, Desktop::Reveal::Items);
}

void RevealAndSelectFiles(const UTF16StringVec& paths) {
    Reveal(paths, Desktop::Reveal::Items);
}

void RevealFolder(const UTF16String& folder) {
    Reveal({folder}, Desktop::Reveal::Folders);
}

}  // namespace host
