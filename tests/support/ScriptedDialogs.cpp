#include "tests/support/ScriptedDialogs.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "desk/core/Services.h"

namespace {

constexpr const char* kMessage = "message";
constexpr const char* kFolder = "folder";
constexpr const char* kNewFolder = "new folder";
constexpr const char* kQuestion = "question";
constexpr const char* kText = "text";
constexpr const char* kFiles = "files";
constexpr const char* kNewFile = "new file";

}  // namespace

ScriptedDialogs::ScriptedDialogs() : mBefore(desk::GetServices().mDialogs) {
    desk::GetServices().mDialogs = this;
}

ScriptedDialogs::~ScriptedDialogs() {
    for (const Expectation& expected : mExpected)
        ADD_FAILURE() << "this question never came: " << expected.mWhat;
    desk::GetServices().mDialogs = mBefore;
}

void ScriptedDialogs::ExpectMessage(std::string title) {
    Expect(kMessage, title, {});
}

void ScriptedDialogs::ExpectFolder(std::string title, std::optional<host::UTF16String> answer) {
    Expect(kFolder, title, {{}, std::move(answer), {}});
}

void ScriptedDialogs::ExpectNewFolder(std::string title, std::optional<host::UTF16String> answer) {
    Expect(kNewFolder, title, {{}, std::move(answer), {}});
}

void ScriptedDialogs::ExpectQuestion(std::string title, host::UTF16String answer, bool appliesToAll) {
    Expect(kQuestion, title, {{}, std::move(answer), {}, appliesToAll});
}

void ScriptedDialogs::ExpectText(std::string title, std::optional<host::UTF16String> answer) {
    Expect(kText, title, {{}, std::move(answer), {}});
}

void ScriptedDialogs::ExpectFiles(std::string title, host::UTF16StringVec answer) {
    Expect(kFiles, title, {{}, {}, std::move(answer)});
}

void ScriptedDialogs::ExpectNewFile(std::string title, std::optional<host::UTF16String> answer) {
    Expect(kNewFile, title, {{}, std::move(answer), {}});
}

void ScriptedDialogs::ShowMessage(const host::UTF16String& title, const host::UTF16String& text,
                                  desk::MessageKind) {
    mLastText = host::UTF16to8(text);
    Take(kMessage, title);
}

desk::Answer ScriptedDialogs::Ask(const desk::Question& question) {
    mLastText = host::UTF16to8(question.mText);
    mLastOfferedApplyToAll = question.mOffersApplyToAll;
    const Expectation expected = Take(kQuestion, question.mTitle);
    const auto& buttons = question.mButtons;
    const auto pressed = std::find(buttons.begin(), buttons.end(), expected.mAnswer.value_or(u""));
    if (pressed != buttons.end())
        return {static_cast<std::size_t>(pressed - buttons.begin()), expected.mAppliesToAll};
    if (expected.mAnswer) ADD_FAILURE() << "no such button: " << host::UTF16to8(*expected.mAnswer);
    return {question.mCancel, false};
}

std::optional<host::UTF16String> ScriptedDialogs::AskText(const host::UTF16String& title,
                                                          const host::UTF16String&, const host::UTF16String&) {
    return Take(kText, title).mAnswer;
}

std::optional<host::UTF16String> ScriptedDialogs::AskFolder(const host::UTF16String& title,
                                                            const host::UTF16String&) {
    return Take(kFolder, title).mAnswer;
}

std::optional<host::UTF16String> ScriptedDialogs::AskNewFolder(const host::UTF16String& title,
                                                               const host::UTF16String&) {
    return Take(kNewFolder, title).mAnswer;
}

host::UTF16StringVec ScriptedDialogs::AskFiles(const host::UTF16String& title, const host::UTF16String&,
                                               const host::UTF16String&, const host::UTF16String&) {
    return Take(kFiles, title).mFiles;
}

std::optional<host::UTF16String> ScriptedDialogs::AskNewFile(const host::UTF16String& title,
                                                             const host::UTF16String&) {
    return Take(kNewFile, title).mAnswer;
}

void ScriptedDialogs::WaitFor(const host::UTF16String&, desk::WorkProgress&, const std::future<void>& done) {
    done.wait();
}

void ScriptedDialogs::Expect(const char* kind, const std::string& title, Expectation expectation) {
    expectation.mWhat = std::string(kind) + ": " + title;
    mExpected.push_back(std::move(expectation));
}

ScriptedDialogs::Expectation ScriptedDialogs::Take(const char* kind, const host::UTF16String& title) {
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
