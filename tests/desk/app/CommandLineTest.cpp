#include <gtest/gtest.h>

#include "desk/app/CommandLine.h"
#include "desk/core/names/QtStrings.h"

namespace desk {
namespace {

QStringList Split(const char* line) {
    return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

TEST(CommandLine, TakesOptionsTwiceAndPathsAsBytes) {
    const CommandLine all =
        ParseCommandLine(Split("--profile=/p --plugin-dir /a --plugin-dir /b --open a --open b -- -folder"));
    EXPECT_EQ(all.mError, QString());
    EXPECT_EQ(all.mProfile, "/p");
    EXPECT_EQ(all.mPluginFolders, (std::vector<std::string>{"/a", "/b"}));
    EXPECT_EQ(all.mProjects, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(all.mFolder, "-folder");
    EXPECT_EQ(ParseCommandLine({ToQStringFromUTF8("/r\xE9-l\xFF")}).mFolder, "/r\xE9-l\xFF");
}

TEST(CommandLine, RefusesWithOneLineThatNamesTheThing) {
    constexpr std::pair<const char*, const char*> kCases[] = {
        {"--help --bogus", "bogus"},      {"-platform xcb", "platform"}, {"--user=", "--user"},
        {"--screenshot", "--screenshot"}, {"--help=yes", "help"},        {"--theme pink", "pink"},
        {"--window-size big", "big"},     {"--window-size 0x0", "0x0"},  {"one two", "2"},
        {"--plugin-dir=", "--plugin-dir"}};
    for (const auto& [line, named] : kCases) {
        const QString error = ParseCommandLine(Split(line)).mError;
        EXPECT_TRUE(error.contains(QLatin1String(named))) << line << ": " << ToUTF8(error);
        EXPECT_FALSE(error.contains(QLatin1Char('\n')));
    }
    EXPECT_NE(ParseCommandLine({QString()}).mError, QString());
}

}  // namespace
}  // namespace desk
