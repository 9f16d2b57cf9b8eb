#pragma once

#include <string>
#include <vector>

#include "desk/core/edges/Dialogs.h"
#include "desk/core/edges/Services.h"
#include "host/core/Strings.h"

/// Answers every question with its default button and asks nobody; keeps what it was told. It is the process's
/// `desk::Dialogs` while it exists. UI thread.
class AnsweringDialogs : public desk::Dialogs {
public:
    AnsweringDialogs() : mBefore(desk::GetServices().mDialogs) { desk::GetServices().mDialogs = this; }
    ~AnsweringDialogs() override { desk::GetServices().mDialogs = mBefore; }

    /// The titles and texts of messages, in UTF-8, and of questions.
    std::vector<std::string> mTold, mAsked;
    /// How many questions for a new file are answered with the path that they offer; then they are cancelled.
    int mNewFiles = 0;

    using Text = const host::UTF16String&;
    using Line = std::optional<host::UTF16String>;
    void ShowMessage(Text title, Text text, desk::MessageKind) override {
        mTold.push_back(host::UTF16to8(title + u": " + text));
    }
    desk::Answer Ask(const desk::Question& question) override {
        mAsked.push_back(host::UTF16to8(question.mTitle + u": " + question.mText));
        return {0, false};
    }
    Line AskText(Text, Text, Text value) override { return value; }
    Line AskFolder(Text, Text) override { return {}; }
    Line AskNewFolder(Text, Text) override { return {}; }
    host::UTF16StringVec AskFiles(Text, Text, Text, Text) override { return {}; }
    Line AskNewFile(Text, Text path) override {
        if (mNewFiles == 0) return {};
        --mNewFiles;
        return path;
    }
    void WaitFor(Text, desk::WorkProgress&, const std::future<void>& done) override { done.wait(); }

private:
    desk::Dialogs* mBefore;
};
