#include "host/dialogs/SimpleInputBox.h"

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"

namespace host {
namespace {

/// Pasted text may have line breaks: those at the ends go, others become blanks.
UTF16String WithoutLineBreaks(UTF16String text) {
    constexpr char16_t kBreaks[] = u"\r\n\u0085\u2028\u2029";
    const std::size_t begin = text.find_first_not_of(kBreaks);
    if (begin == UTF16String::npos) return {};
    text = text.substr(begin, text.find_last_not_of(kBreaks) - begin + 1);
    for (std::size_t at = text.find_first_of(kBreaks); at != UTF16String::npos;
         at = text.find_first_of(kBreaks, at + 1))
        text.replace(at, text.compare(at, 2, u"\r\n") == 0 ? 2 : 1, u" ");
    return text;
}

}  // namespace

bool SimpleInputBox(TopLevelWindow*, const UTF16String& title, const UTF16String& label, UTF16String& value) {
    const auto text = desk::GetServices().mDialogs->AskText(title, label, value);
    if (!text) return false;
    value = WithoutLineBreaks(*text);
    return true;
}

}  // namespace host
