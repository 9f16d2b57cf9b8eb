#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

class TopLevelWindow;

/// Asks for one line of text: `label` stands before the text box, which begins with `value`, all of it
/// selected. `parent` may be null. Returns true, with what was entered in `value`, when the user accepted; then
/// `value` has no line breaks. UI thread; events go on being handled meanwhile.
ZUHOST_API bool SimpleInputBox(TopLevelWindow* parent, const UTF16String& title, const UTF16String& label,
                               UTF16String& value);

}  // namespace host
