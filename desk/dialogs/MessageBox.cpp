#include "host/dialogs/MessageBox.h"

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"

namespace host {

namespace {

constexpr int kFirstButton = 1;
constexpr int kSecondButton = 2;

using desk::MessageKind;

}  // namespace

void MessageBox(const UTF16String& title, const UTF16String& text) {
    desk::GetServices().mDialogs->ShowMessage(title, text, MessageKind::Failure);
}

int MessageBox(const UTF16String& title, const UTF16String& text, int, int icon, int) {
    const bool isInformation = icon == kMessageBoxIconInformation;
    desk::GetServices().mDialogs->ShowMessage(title, text,
                                              isInformation ? MessageKind::Information : MessageKind::Failure);
    return kMessageBoxOK;
}

int Messagebox(TopLevelWindow*, const UTF16String& title, const UTF16String& text,
               const UTF16String& firstButton, const UTF16String& secondButton) {
    const desk::Answer answer = desk::GetServices().mDialogs->Ask(
        {.mTitle = title, .mText = text, .mButtons = {firstButton, secondButton}, .mCancel = 1});
    return answer.mButton == 0 ? kFirstButton : kSecondButton;
}

}  // namespace host
