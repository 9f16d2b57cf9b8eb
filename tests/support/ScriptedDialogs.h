#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"

/// Answers the program's questions from a script. A question that the script does not expect next fails the
/// test, and so does an expectation that is not met by the end. It is the process's `desk::Dialogs` while it
/// exists. UI thread.
class ScriptedDialogs : public desk::Dialogs {
public:
    ScriptedDialogs() : mBefore(std::exchange(desk::GetServices().mDialogs, this)) {}
    ~ScriptedDialogs() override {
        for (const Expectation& expected : mExpected)
            ADD_FAILURE() << "this question never came: " << expected.mWhat;
        desk::GetServices().mDialogs = mBefore;
    }

    /// A path or a text; nothing cancels.
    using Line = std::optional<host::UTF16String>;

    /// The next question is a message with this title; OK is pressed.
    void ExpectMessage(const std::string& title) { Expect("message: " + title, {}); }
    /// The next question has this title; the button with the label `answer` is pressed.
    void ExpectQuestion(const std::string& title, host::UTF16String answer, bool appliesToAll = false) {
        Expect("question: " + title, std::move(answer));
        mExpected.back().mAppliesToAll = appliesToAll;
    }
    /// The next question is for a folder, for a line of text, or for a file, under this title.
    void ExpectFolder(const std::string& title, Line answer) { Expect("folder: " + title, answer); }
    void ExpectNewFolder(const std::string& title, Line answer) { Expect("new folder: " + title, answer); }
    void ExpectText(const std::string& title, Line answer) { Expect("text: " + title, answer); }
    void ExpectNewFile(const std::string& title, Line answer) { Expect("new file: " + title, answer); }
    /// The next question is for files; none cancels.
    void ExpectFiles(const std::string& title, host::UTF16StringVec answer) {
        Expect("files: " + title, {});
        mExpected.back().mFiles = std::move(answer);
    }

    /// What happens while a question is open.
    std::function<void()> mMeanwhile;
    /// What happens while long work is waited for, before it just waits.
    std::function<void(desk::WorkProgress&)> mWhileWaiting;

    /// Whether the last question offered to apply the answer to all.
    bool LastOfferedApplyToAll() const { return mLastOfferedApplyToAll; }
    /// The text of the last message or question, in UTF-8.
    const std::string& LastText() const { return mLastText; }

    using Text = const host::UTF16String&;
    void ShowMessage(Text title, Text text, desk::MessageKind) override {
        mLastText = host::UTF16to8(text);
        Take("message", title);
    }
    Line AskFolder(Text title, Text) override { return Take("folder", title).mAnswer; }
    Line AskNewFolder(Text title, Text) override { return Take("new folder", title).mAnswer; }
    Line AskText(Text title, Text, Text) override { return Take("text", title).mAnswer; }
    Line AskNewFile(Text title, Text) override { return Take("new file", title).mAnswer; }
    host::UTF16StringVec AskFiles(Text title, Text, Text, Text) override { return Take("files", title).mFiles; }
    desk::Answer Ask(const desk::Question& question) override {
        if (mMeanwhile) mMeanwhile();
        mLastText = host::UTF16to8(question.mText);
        mLastOfferedApplyToAll = question.mOffersApplyToAll;
        const Expectation expected = Take("question", question.mTitle);
        const auto pressed = std::ranges::find(question.mButtons, expected.mAnswer.value_or(u""));
        if (pressed != question.mButtons.end())
            return {static_cast<std::size_t>(pressed - question.mButtons.begin()), expected.mAppliesToAll};
        if (expected.mAnswer) ADD_FAILURE() << "no such button: " << host::UTF16to8(*expected.mAnswer);
        return {question.mCancel, false};
    }
    void WaitFor(Text, desk::WorkProgress& progress, const std::future<void>& done) override {
        if (mWhileWaiting) mWhileWaiting(progress);
        done.wait();
    }

private:
    struct Expectation {
        /// The kind and the title of the question.
        std::string mWhat;
        /// A path, a text, or a button's label.
        Line mAnswer;
        host::UTF16StringVec mFiles;
        bool mAppliesToAll = false;
    };

    void Expect(std::string what, Line answer) {
        mExpected.push_back({std::move(what), std::move(answer), {}});
    }
    Expectation Take(const char* kind, const host::UTF16String& title) {
        const std::string what = std::string(kind) + ": " + host::UTF16to8(title);
        if (mExpected.empty() || mExpected.front().mWhat != what) {
            ADD_FAILURE() << "unexpected question: " << what << " (" << mLastText
                          << "), expected: " << (mExpected.empty() ? "none" : mExpected.front().mWhat);
            return {};
        }
        Expectation expected = std::move(mExpected.front());
        mExpected.pop_front();
        return expected;
    }

    std::deque<Expectation> mExpected;
    std::string mLastText;
    bool mLastOfferedApplyToAll = false;
    desk::Dialogs* mBefore;
};
