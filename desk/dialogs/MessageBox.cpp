#include "host/dialogs/MessageBox.h"

#include "desk/core/Services.h"
#include "desk/dialogs/Dialogs.h"

namespace host {

void MessageBox(const UTF16String& title, const UTF16String& text) {
    desk::GetServices().mDialogs->ShowMessage(title, text);
}

}  // namespace host
