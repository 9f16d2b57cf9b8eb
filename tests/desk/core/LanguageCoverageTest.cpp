#include <gtest/gtest.h>

#include <QFile>
#include <QJsonObject>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>

#include "desk/core/JsonFile.h"
#include "desk/core/LanguageTable.h"
#include "desk/core/QtStrings.h"

namespace {

namespace fs = std::filesystem;

/// Finds the string literals of C++ and JSON sources; adjacent ones count as one.
class LiteralScanner {
public:
    explicit LiteralScanner(std::string_view text) : mText(text) {}

    std::set<std::string> Scan() {
        while (mAt < mText.size()) {
            if (StartsWith("//"))
                mAt = Find("\n", 0);
            else if (StartsWith("/*"))
                mAt = Find("*/", 2);
            else if (StartsWith("R\"("))
                TakeRawLiteral();
            else if (mText[mAt] == '"')
                TakeLiteral();
            else if (mText[mAt] == '\'' &&
                     (mAt == 0 || !std::isalnum(static_cast<unsigned char>(mText[mAt - 1]))))
                SkipCharacter();
            else
                TakeOther();
        }
        Finish();
        return mLiterals;
    }

private:
    bool StartsWith(std::string_view token) const { return mText.substr(mAt).starts_with(token); }
    std::size_t Find(std::string_view end, std::size_t skip) const {
        const std::size_t found = mText.find(end, mAt + skip);
        return found == std::string_view::npos ? mText.size() : found + end.size();
    }
    void Finish() {
        mLiterals.insert(mCurrent);
        mCurrent.clear();
    }
    void TakeOther() {
        if (!std::isspace(static_cast<unsigned char>(mText[mAt]))) Finish();
        ++mAt;
    }
    void SkipCharacter() {
        for (++mAt; mAt < mText.size() && mText[mAt] != '\''; ++mAt)
            if (mText[mAt] == '\\') ++mAt;
        ++mAt;
    }
    void TakeRawLiteral() {
        const std::size_t begin = mAt + 3;
        mAt = Find(")\"", 3);
        mCurrent += mText.substr(begin, mAt - 2 - begin);
    }
    void TakeLiteral() {
        for (++mAt; mAt < mText.size() && mText[mAt] != '"'; ++mAt)
            if (mText[mAt] == '\\' && mAt + 1 < mText.size())
                TakeEscape(mText[++mAt]);
            else
                mCurrent += mText[mAt];
        ++mAt;
    }
    void TakeEscape(char c) {
        if (c != 'u') {
            mCurrent += c == 'n' ? '\n' : c == 't' ? '\t' : c;
            return;
        }
        const std::string digits(mText.substr(mAt + 1, 4));
        mCurrent += host::UTF16to8(std::u16string(1, static_cast<char16_t>(std::stoul(digits, nullptr, 16))));
        mAt += 4;
    }

    std::string_view mText;
    std::size_t mAt = 0;
    std::string mCurrent;
    std::set<std::string> mLiterals;
};

/// What a translation must keep: the placeholders, and the blanks and line ends around it.
std::string Frame(const std::string& text) {
    std::set<std::string> placeholders;
    for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + 1))
        if (at + 1 < text.size() && std::isdigit(static_cast<unsigned char>(text[at + 1])))
            placeholders.insert(text.substr(at, 2));
    std::string frame;
    for (const std::string& placeholder : placeholders) frame += placeholder;
    const std::size_t first = text.find_first_not_of(" \n");
    const std::size_t last = text.find_last_not_of(" \n");
    if (first == std::string::npos) return frame;
    return text.substr(0, first) + '|' + frame + '|' + text.substr(last + 1);
}

/// The names of all keys of the sources below `folder`, with their English texts.
std::map<std::string, std::string> KeysOf(const std::string& folder) {
    std::map<std::string, std::string> keys;
    for (const auto& entry : fs::recursive_directory_iterator(fs::path(ZU_SOURCE_DIR) / folder)) {
        const fs::path& path = entry.path();
        const bool isSource =
            path.extension() == ".cpp" || path.extension() == ".h" || path.extension() == ".json";
        if (!isSource || path.parent_path().filename() == "languages") continue;
        std::ifstream file(path);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        for (const std::string& literal : LiteralScanner(text).Scan()) {
            if (!literal.starts_with("$$$/") || literal.find('=') == std::string::npos) continue;
            const desk::LocalizationKey key = desk::ParseLocalizationKey(literal);
            const auto [it, isNew] = keys.emplace(key.mName, key.mDefault);
            EXPECT_EQ(it->second, key.mDefault) << key.mName << " has two English texts (" << path << ')';
        }
    }
    return keys;
}

void ExpectTranslated(const std::string& folder, std::size_t atLeast) {
    QFile file(QStringLiteral(":/languages/de.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const desk::JsonFile table = desk::ParseJsonObject(file.readAll().toStdString());
    ASSERT_EQ(table.mState, desk::JsonFile::State::Read) << table.mReason;
    const auto keys = KeysOf(folder);
    EXPECT_GE(keys.size(), atLeast) << "the scan has missed most keys of " << folder;
    for (const auto& [name, english] : keys) {
        const QJsonValue german = table.mObject.value(desk::ToQStringFromUTF8(name));
        if (!german.isString() || german.toString().isEmpty())
            ADD_FAILURE() << "de.json has no text for " << name << " (" << english << ')';
        else
            EXPECT_EQ(Frame(desk::ToUTF8(german.toString())), Frame(english)) << name;
    }
}

}  // namespace

TEST(LanguageCoverageTest, TheScannerFindsKeysWhereverTheyStand) {
    const auto found = LiteralScanner(R"__(
        // "$$$/Comment=1"
        /* "$$$/Comment=2" */ const char c = '"'; const int n = 1'000;
        Localize("$$$/A/One=Te" // here
                 "xt \"quoted\"\n",
                 "$$$/A/Two=\u00e9"); x = R"($$$/A/Three=")";)__")
                           .Scan();
    EXPECT_EQ(found,
              (std::set<std::string>{"", "$$$/A/One=Text \"quoted\"\n", "$$$/A/Two=é", "$$$/A/Three=\""}));
    EXPECT_NE(Frame("Production: "), Frame("Produktion:"));
    EXPECT_NE(Frame("@0 of @1"), Frame("@0 von"));
    EXPECT_EQ(Frame("@0 of @1"), Frame("@1: @0"));
}

TEST(LanguageCoverageTest, EveryTextOfThePanelIsGermanToo) {
    ExpectTranslated("Handlers/SharedProjects", 30);
}

TEST(LanguageCoverageTest, EveryTextOfTheProgramIsGermanToo) {
    ExpectTranslated("desk", 20);
}
