#pragma once

#include <optional>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

/// The edge to questions that the user answers. Everything the program asks passes through it. UI thread.
class ZUHOST_API Dialogs {
public:
    virtual ~Dialogs() = default;
    /// A message with an OK button.
    virtual void ShowMessage(const host::UTF16String& title, const host::UTF16String& text) = 0;
    /// Asks for an existing folder; empty when the user cancels. `startFolder` may be empty.
    virtual std::optional<host::UTF16String> AskFolder(const host::UTF16String& title,
                                                       const host::UTF16String& startFolder) = 0;
    /// Asks for the name and place of a folder to be made; empty when the user cancels.
    virtual std::optional<host::UTF16String> AskNewFolder(const host::UTF16String& title,
                                                          const host::UTF16String& startFolder) = 0;
};

}  // namespace desk
