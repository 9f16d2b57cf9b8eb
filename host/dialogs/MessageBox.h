#pragma once

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace host {

class TopLevelWindow;

/// The one order of a message's texts in every host operation: first the title, then the text. Both are plain,
/// localised texts. All wait for the user's answer; events go on being handled meanwhile. UI thread.

/// Shows a message that something could not be done, with an OK button and a warning picture, over the main
/// window.
ZUHOST_API void MessageBox(const UTF16String& title, const UTF16String& text);

/// Buttons of a message box: only OK.
inline constexpr int kMessageBoxOK = 1;
/// Icons of a message box.
inline constexpr int kMessageBoxIconInformation = 0x40;

/// The same with a choice of buttons (`kMessageBoxOK`), an icon and the result that closing the box gives.
/// Returns the pressed button: 1 for OK.
ZUHOST_API int MessageBox(const UTF16String& title, const UTF16String& text, int buttons, int icon,
                          int defaultResult);

/// Asks a question with two labelled buttons. `parent` may be null. Returns 1 for the first, which is the
/// default, and 2 for the second, which also closing the box gives.
ZUHOST_API int Messagebox(TopLevelWindow* parent, const UTF16String& title, const UTF16String& text,
                          const UTF16String& firstButton, const UTF16String& secondButton);

}  // namespace host
