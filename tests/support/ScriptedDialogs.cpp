#include "tests/support/ScriptedDialogs.h"

#include <gtest/gtest.h>

#include "desk/core/Services.h"

namespace {

constexpr const char* kMessage = "message";
constexpr const char* kFolder = "folder";
constexpr const char* kNewFolder = "new folder";

}  // namespace

ScriptedDialogs::ScriptedDialogs() : mBefore(desk::GetServices().mDialogs) {
    desk::GetServices().mDialogs = this;
}

ScriptedDialogs::~ScriptedDialogs() {
    for (const Question& question : mExpected) ADD_FAILURE() << "this question never came: " << question.mWhat;
    desk::GetServices().mDialogs = mBefore;
}

void ScriptedDialogs::ExpectMessage(std::string title) {
    Expect(kMessage, std::move(title), {});
}

void ScriptedDialogs::ExpectFolder(std::string title, std::optional<host::UTF16String> answer) {
    Expect(kFolder, std::move(title), std::move(answer));
}

void ScriptedDialogs::ExpectNewFolder(std::string title, std::optional<host::UTF16String> answer) {
    Expect(kNewFolder, std::move(title), std::move(answer));
}

void ScriptedDialogs::ShowMessage(const host::UTF16String& title, const host::UTF16String& text) {
    mLastText = host::UTF16to8(text);
    Ask(kMessage, title);
}

std::optional<host::UTF16String> ScriptedDialogs::AskFolder(const host::UTF16String& title,
                                                            const host::UTF16String&) {
    return Ask(kFolder, title);
}

std::optional<host::UTF16String> ScriptedDialogs::AskNewFolder(const host::UTF16String& title,
                                                               const host::UTF16String&) {
    return Ask(kNewFolder, title);
}

void ScriptedDialogs::Expect(const char* kind, std::string title, std::optional<host::UTF16String> answer) {
    mExpected.push_back({std::string(kind) + ": " + title, std::move(answer)});
}

std::optional<host::UTF16String> ScriptedDialogs::Ask(const char* kind, const host::UTF16String& title) {
    const std::string what = std::string(kind) + ": " + host::UTF16to8(title);
    if (mExpected.empty() || mExpected.front().mWhat != what) {
        ADD_FAILURE() << "unexpected question: " << what << " (" << mLastText
                      << "), expected: " << (mExpected.empty() ? "none" : mExpected.front().mWhat);
        return {};
    }
    const Question question = std::move(mExpected.front());
    mExpected.pop_front();
    return question.mAnswer;
}
