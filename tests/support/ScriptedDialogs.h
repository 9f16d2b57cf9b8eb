#pragma once

#include <deque>
#include <string>
#include <vector>

#include "desk/dialogs/Dialogs.h"

/// Answers the program's questions from a script. A question that the script does not expect next fails the
/// test, and so does an expectation that is not met by the end. It is the process's `desk::Dialogs` while it
/// exists. UI thread.
class ScriptedDialogs : public desk::Dialogs {
public:
    ScriptedDialogs();
    ~ScriptedDialogs() override;

    /// The next question is a message with this title; OK is pressed.
    void ExpectMessage(std::string title);
    /// The next question is for a folder, under this title; answered with a path, or cancelled.
    void ExpectFolder(std::string title, std::optional<host::UTF16String> answer);
    void ExpectNewFolder(std::string title, std::optional<host::UTF16String> answer);

    /// The text of the last message, in UTF-8.
    const std::string& LastText() const { return mLastText; }

    void ShowMessage(const host::UTF16String& title, const host::UTF16String& text) override;
    std::optional<host::UTF16String> AskFolder(const host::UTF16String& title,
                                               const host::UTF16String& startFolder) override;
    std::optional<host::UTF16String> AskNewFolder(const host::UTF16String& title,
                                                  const host::UTF16String& startFolder) override;

private:
    struct Question {
        /// The kind and the title of the question.
        std::string mWhat;
        std::optional<host::UTF16String> mAnswer;
    };

    void Expect(const char* kind, std::string title, std::optional<host::UTF16String> answer);
    std::optional<host::UTF16String> Ask(const char* kind, const host::UTF16String& title);

    std::deque<Question> mExpected;
    std::string mLastText;
    desk::Dialogs* mBefore;
};
