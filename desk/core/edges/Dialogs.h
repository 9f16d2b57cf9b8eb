#pragma once

#include <future>
#include <optional>

#include "host/core/Export.h"
#include "host/core/Strings.h"

namespace desk {

class WorkProgress;

/// A question with labelled buttons. Texts are plain and localised.
struct Question {
    host::UTF16String mTitle;
    host::UTF16String mText;
    /// At least one; the first is the default.
    host::UTF16StringVec mButtons;
    /// The button (an index) that closing the dialog stands for.
    std::size_t mCancel = 0;
    /// Offers to apply the answer to all questions that follow.
    bool mOffersApplyToAll = false;
    /// The answer may lose something: the dialog warns.
    bool mIsWarning = false;
};

struct Answer {
    /// The pressed button, an index.
    std::size_t mButton = 0;
    bool mAppliesToAll = false;
};

/// What a message says, which its picture shows.
enum class MessageKind {
    Information,
    /// Something has failed, or was refused: the message warns.
    Failure,
};

/// The edge to questions that the user answers. Everything the program asks passes through it. UI thread.
class ZUHOST_API Dialogs {
public:
    virtual ~Dialogs() = default;

    /// A message with an OK button.
    virtual void ShowMessage(const host::UTF16String& title, const host::UTF16String& text,
                             MessageKind kind) = 0;
    virtual Answer Ask(const Question& question) = 0;
    /// Asks for one line of text, beginning with `value`, all selected; empty when the user cancels.
    virtual std::optional<host::UTF16String> AskText(const host::UTF16String& title,
                                                     const host::UTF16String& label,
                                                     const host::UTF16String& value) = 0;

    /// Asks for an existing folder; empty when the user cancels. `startFolder` may be empty.
    virtual std::optional<host::UTF16String> AskFolder(const host::UTF16String& title,
                                                       const host::UTF16String& startFolder) = 0;
    /// Asks for the name and place of a folder to be made; empty when the user cancels.
    virtual std::optional<host::UTF16String> AskNewFolder(const host::UTF16String& title,
                                                          const host::UTF16String& startFolder) = 0;
    /// Asks for existing files with a name that matches `pattern` ("*.zuproj", letter case ignored), whose kind
    /// is called `typeLabel`; empty when the user cancels.
    virtual host::UTF16StringVec AskFiles(const host::UTF16String& title, const host::UTF16String& startFolder,
                                          const host::UTF16String& typeLabel,
                                          const host::UTF16String& pattern) = 0;
    /// Asks for the name and place of a file to be made, beginning with `path`; empty when the user cancels.
    /// What to do with a name that is taken is left to the caller.
    virtual std::optional<host::UTF16String> AskNewFile(const host::UTF16String& title,
                                                        const host::UTF16String& path) = 0;

    /// Returns when `done` is ready, and lets no command in until then. Events are handled meanwhile; after
    /// half a second a dialog with `title` shows the progress and offers to cancel it.
    virtual void WaitFor(const host::UTF16String& title, WorkProgress& progress,
                         const std::future<void>& done) = 0;
};

}  // namespace desk
