#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

class TopLevelWindow;

/// Asks for one or more files. `typeLabel` names their kind ("… (*.zuproj)"), `pattern` and `extension`
/// ("*.ZUPROJ", ".zuproj") say which files can be chosen, letter case ignored. `parent` may be null. Returns
/// true, with the chosen paths in `paths`, when the user confirmed. UI thread; events go on being handled
/// meanwhile.
ZUHOST_API bool AskOpenFile(const UTF16String& title, UTF16StringVec& paths, const UTF16String& typeLabel,
                            const UTF16String& pattern, const UTF16String& extension, TopLevelWindow* parent);

}  // namespace host
