#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

/// Shows a message with an OK button over the main window and waits until the user has answered.
/// The one order of a message's texts in every host operation: first the title, then the text. Both are
/// plain, localised texts. UI thread; events go on being handled meanwhile.
ZUHOST_API void MessageBox(const UTF16String& title, const UTF16String& text);

}  // namespace host
