#include "host/dialogs/MessageBox.h"

#include "desk/core/Services.h"
#include "desk/dialogs/Dialogs.h"

namespace host {

namespace {

constexpr int kFirstButton = 1;
constexpr int kSecondButton = 2;

}  // namespace

void MessageBox(const UTF16String& title, const UTF16String& text) {
    desk::GetServices().mDialogs->ShowMessage(title, text);
}

int MessageBox(const UTF16String& title, const UTF16String& text, int, int, int) {
    MessageBox(title, text);
    return kMessageBoxOK;
}

int Messagebox(TopLevelWindow*, const UTF16String& title, const UTF16String& text,
               const UTF16String& firstButton, const UTF16String& secondButton) {
    const desk::Answer answer = desk::GetServices().mDialogs->Ask(
        {.mTitle = title, .mText = text, .mButtons = {firstButton, secondButton}, .mCancel = 1});
    return answer.mButton == 0 ? kFirstButton : kSecondButton;
}

}  // namespace host
