#pragma once

#include "desk/dialogs/Dialogs.h"

namespace desk {

/// The real edge to the user's answers: Qt's dialogs over the active window. Texts are shown as plain text,
/// with unprintable characters escaped.
class ZUHOST_API QtDialogs : public Dialogs {
public:
    void ShowMessage(const host::UTF16String& title, const host::UTF16String& text) override;
    std::optional<host::UTF16String> AskFolder(const host::UTF16String& title,
                                               const host::UTF16String& startFolder) override;
    std::optional<host::UTF16String> AskNewFolder(const host::UTF16String& title,
                                                  const host::UTF16String& startFolder) override;
};

}  // namespace desk
