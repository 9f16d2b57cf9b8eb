#include "host/framework/SystemReveal.h"

#include "desk/core/edges/Desktop.h"
#include "desk/core/edges/Services.h"
#include "desk/core/log/UserNotice.h"
#include "host/core/Localizer.h"
#include "host/files/PathUtils.h"

namespace host {
namespace {

using desk::Desktop;

void Reveal(const UTF16StringVec& paths, Desktop::Reveal reveal) {
    if (paths.empty()) return;
    std::vector<std::string> bytes;
    for (const UTF16String& path : paths) bytes.push_back(UTF16to8(PathUtils::ToNormalizedPath(path)));
    desk::GetServices().mDesktop->ShowInFileBrowser(bytes, reveal, [](const std::string& folder) {
        desk::TellUser(ZString("$$$/Desk/Reveal/Failed=No file browser could be opened to show “@0”.",
                               {UTF8to16(folder)}));
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
