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

    /// The next question has this title; the button with the label `answer` is pressed.
    void ExpectQuestion(std::string title, host::UTF16String answer, bool appliesToAll = false);
    /// The next question is for a line of text; answered with it, or cancelled.
    void ExpectText(std::string title, std::optional<host::UTF16String> answer);
    /// The next question is for files; none cancels.
    void ExpectFiles(std::string title, host::UTF16StringVec answer);
    void ExpectNewFile(std::string title, std::optional<host::UTF16String> answer);

    /// Whether the last question offered to apply the answer to all.
    bool LastOfferedApplyToAll() const { return mLastOfferedApplyToAll; }
    /// The text of the last message or question, in UTF-8.
    const std::string& LastText() const { return mLastText; }

    void ShowMessage(const host::UTF16String& title, const host::UTF16String& text,
                     desk::MessageKind kind) override;
    std::optional<host::UTF16String> AskFolder(const host::UTF16String& title,
                                               const host::UTF16String& startFolder) override;
    std::optional<host::UTF16String> AskNewFolder(const host::UTF16String& title,
                                                  const host::UTF16String& startFolder) override;
    desk::Answer Ask(const desk::Question& question) override;
    std::optional<host::UTF16String> AskText(const host::UTF16String& title, const host::UTF16String& label,
                                             const host::UTF16String& value) override;
    host::UTF16StringVec AskFiles(const host::UTF16String& title, const host::UTF16String& startFolder,
                                  const host::UTF16String& typeLabel,
                                  const host::UTF16String& pattern) override;
    std::optional<host::UTF16String> AskNewFile(const host::UTF16String& title,
                                                const host::UTF16String& path) override;
    /// Just waits.
    void WaitFor(const host::UTF16String& title, desk::WorkProgress& progress,
                 const std::future<void>& done) override;

private:
    struct Expectation {
        /// The kind and the title of the question.
        std::string mWhat;
        /// A path, a text, or a button's label.
        std::optional<host::UTF16String> mAnswer;
        host::UTF16StringVec mFiles;
        bool mAppliesToAll = false;
    };

    void Expect(const char* kind, const std::string& title, Expectation expectation);
    Expectation Take(const char* kind, const host::UTF16String& title);

    std::deque<Expectation> mExpected;
    std::string mLastText;
    bool mLastOfferedApplyToAll = false;
    desk::Dialogs* mBefore;
};
