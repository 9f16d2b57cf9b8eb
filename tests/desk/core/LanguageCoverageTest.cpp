#include <gtest/gtest.h>

#include <QtWidgets>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

#include "desk/core/language/LanguageTable.h"
#include "desk/core/names/QtStrings.h"
#include "desk/core/settings/JsonFile.h"

namespace {

namespace fs = std::filesystem;

/// The keys among the string literals of a C++ or JSON source; adjacent literals are one.
std::set<std::string> KeysIn(const std::string& source) {
    static const QRegularExpression kComment(QStringLiteral(R"(^\s*//.*$)"),
                                             QRegularExpression::MultilineOption);
    static const QRegularExpression kJoint(QStringLiteral(R"_((?<!\\)"\s*")_"));
    static const QRegularExpression kKey(QStringLiteral(R"("\$\$\$/(?:[^"\\=]|\\.)*=(?:[^"\\]|\\.)*")"));
    std::set<std::string> keys;
    QRegularExpressionMatchIterator found =
        kKey.globalMatch(QString::fromStdString(source).remove(kComment).remove(kJoint));
    while (found.hasNext()) {
        const QJsonDocument literal = QJsonDocument::fromJson('[' + found.next().captured().toUtf8() + ']');
        keys.insert(literal.array().at(0).toString().toStdString());
    }
    return keys;
}

/// What a translation must keep: the placeholders, and the blanks and line ends around it.
QStringList Frame(const std::string& text) {
    static const QRegularExpression kKept(QStringLiteral(R"(@\d|^[ \n]+|[ \n]+$)"));
    QStringList frame;
    QRegularExpressionMatchIterator found = kKept.globalMatch(QString::fromStdString(text));
    while (found.hasNext()) frame << found.next().captured();
    frame.sort();
    frame.removeDuplicates();
    return frame;
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
        for (const std::string& text : KeysIn({std::istreambuf_iterator<char>(file), {}})) {
            const desk::LocalizationKey key = desk::ParseLocalizationKey(text);
            const auto [it, isNew] = keys.emplace(key.mName, key.mDefault);
            EXPECT_EQ(it->second, key.mDefault) << key.mName << " has two English texts (" << path << ')';
        }
    }
    return keys;
}

}  // namespace

TEST(LanguageCoverageTest, EveryTextIsGermanToo) {
    QFile file(QStringLiteral(":/languages/de.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const desk::JsonFile table = desk::ParseJsonObject(file.readAll().toStdString());
    ASSERT_EQ(table.mState, desk::JsonFile::State::Read) << table.mReason;
    for (const char* folder : {"Handlers/SharedProjects", "desk"}) {
        const auto keys = KeysOf(folder);
        EXPECT_GE(keys.size(), 30u) << "the scan has missed most keys of " << folder;
        for (const auto& [name, english] : keys) {
            const std::string german =
                table.mObject.value(desk::ToQStringFromUTF8(name)).toString().toStdString();
            EXPECT_NE(german, "") << "de.json has no text for " << name << " (" << english << ')';
            EXPECT_EQ(Frame(german), Frame(english)) << name;
            EXPECT_EQ((german + english).find('"'), std::string::npos) << name << ": names stand in “x” or „x“";
        }
    }
}
