#include <gtest/gtest.h>

#include "desk/app/CommandLine.h"
#include "desk/core/QtStrings.h"

namespace desk {
namespace {

QStringList Split(const char* line) {
    return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

TEST(CommandLine, Understands) {
    const CommandLine all = ParseCommandLine(
        Split("--screenshot p.png --user anna --profile=/p --plugin-dir /a --plugin-dir /b --open a --open b --language de "
              "--theme light --window-size 1024x700 -- -folder"));
    EXPECT_EQ(all.mError, QString());
    EXPECT_EQ(all.mAction, CommandLine::Action::Run);
    EXPECT_EQ(all.mScreenshot, "p.png");
    EXPECT_EQ(ToUTF8(all.mUser), "anna");
    EXPECT_EQ(all.mProfile, "/p");
    EXPECT_EQ(all.mPluginFolders, (std::vector<std::string>{"/a", "/b"}));
    EXPECT_EQ(all.mProjects, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(ToUTF8(all.mLanguage), "de");
    EXPECT_EQ(all.mTheme, CommandLine::ThemeChoice::Light);
    EXPECT_EQ(all.mWindowSize, QSize(1024, 700));
    EXPECT_EQ(all.mFolder, "-folder");

    EXPECT_EQ(ParseCommandLine(Split("-h")).mAction, CommandLine::Action::ShowHelp);
    EXPECT_EQ(ParseCommandLine(Split("--version")).mAction, CommandLine::Action::ShowVersion);
    EXPECT_EQ(ParseCommandLine(Split("--list-plugins")).mAction, CommandLine::Action::ListPlugins);
}

TEST(CommandLine, KeepsTheBytesOfAFolderThatIsNotUtf8) {
    EXPECT_EQ(ParseCommandLine({ToQStringFromUTF8("/r\xE9"
                                                  "el\xFF")})
                  .mFolder,
              "/r\xE9"
              "el\xFF");
}

TEST(CommandLine, RefusesWithOneLineThatNamesTheThing) {
    const struct {
        QStringList mArguments;
        const char* mNamed;
    } cases[] = {
        {Split("--help --bogus"), "bogus"},
        {Split("-platform xcb"), "platform"},
        {Split("--user"), "--user"},
        {Split("--user="), "--user"},
        {Split("--screenshot"), "--screenshot"},
        {Split("--help=yes"), "help"},
        {Split("--theme pink"), "pink"},
        {Split("--window-size big"), "big"},
        {Split("--window-size 0x0"), "0x0"},
        {Split("one two"), "2"},
        {{QString::fromLatin1("")}, "empty"},
        {Split("--plugin-dir="), "--plugin-dir"},
    };
    for (const auto& c : cases) {
        const QString error = ParseCommandLine(c.mArguments).mError;
        EXPECT_TRUE(error.contains(QString::fromLatin1(c.mNamed))) << c.mNamed << " in: " << ToUTF8(error);
        EXPECT_FALSE(error.contains(QLatin1Char('\n')));
    }
}

}  // namespace
}  // namespace desk
