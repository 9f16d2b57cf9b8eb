#pragma once

#include "desk/core/edges/Dialogs.h"

namespace desk {

/// The real edge to the user's answers: Qt's dialogs over the active window. Texts are shown as plain text,
/// with unprintable characters escaped.
class ZUHOST_API QtDialogs : public Dialogs {
public:
    void ShowMessage(const host::UTF16String& title, const host::UTF16String& text, MessageKind kind) override;
    Answer Ask(const Question& question) override;
    std::optional<host::UTF16String> AskText(const host::UTF16String& title, const host::UTF16String& label,
                                             const host::UTF16String& value) override;
    std::optional<host::UTF16String> AskFolder(const host::UTF16String& title,
                                               const host::UTF16String& startFolder) override;
    std::optional<host::UTF16String> AskNewFolder(const host::UTF16String& title,
                                                  const host::UTF16String& startFolder) override;
    host::UTF16StringVec AskFiles(const host::UTF16String& title, const host::UTF16String& startFolder,
                                  const host::UTF16String& typeLabel,
                                  const host::UTF16String& pattern) override;
    std::optional<host::UTF16String> AskNewFile(const host::UTF16String& title,
                                                const host::UTF16String& path) override;
    void WaitFor(const host::UTF16String& title, WorkProgress& progress,
                 const std::future<void>& done) override;
};

}  // namespace desk
