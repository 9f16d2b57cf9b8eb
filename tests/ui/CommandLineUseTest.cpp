#include <fstream>

#include "host/framework/PluginEntry.h"
#include "tests/ui/ProgramRun.h"

namespace {

using testing::Test;

class CommandLineUse : public ProgramRun {
protected:
    static std::string ReadFile(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(CommandLineUse, AnswersWithoutADisplay) {
    const Result help = Run({"--help"});
    EXPECT_EQ(help.mExitCode, 0);
    EXPECT_NE(help.mOutput.find("--screenshot"), std::string::npos);
    EXPECT_NE(help.mOutput.find("[FOLDER]"), std::string::npos);
    EXPECT_EQ(help.mErrors, "");
    const Result version = Run({"--version"});
    EXPECT_EQ(version.mExitCode, 0);
    EXPECT_TRUE(version.mOutput.starts_with("Production Desk ")) << version.mOutput;
    EXPECT_FALSE(mHome.Exists("config")) << "asking must not write";
}

TEST_F(CommandLineUse, RefusesWrongUseWithOneLine) {
    mHome.Write("a-file");
    const struct {
        Arguments mArguments;
        const char* mNamed;
    } cases[] = {
        {{"--no-such-option"}, "no-such-option"},
        {{"--theme", "pink"}, "pink"},
        {{"--profile"}, "--profile"},
        {{"a", "b"}, "2"},
        {{"no-such-folder"}, "no-such-folder"},
        {{"--screenshot", "p.png", "a-file"}, "a-file"},
        {{"--screenshot", "p.png", "--plugin-dir", "no-plugins", "."}, "no-plugins"},
    };
    for (const auto& c : cases) {
        const Result result = Run(c.mArguments);
        EXPECT_EQ(result.mExitCode, 2) << c.mNamed;
        EXPECT_EQ(CountLines(result.mErrors), 1) << result.mErrors;
        EXPECT_NE(result.mErrors.find(c.mNamed), std::string::npos) << result.mErrors;
        EXPECT_EQ(result.mOutput, "");
    }
    EXPECT_FALSE(mHome.Exists("config"));
    EXPECT_FALSE(mHome.Exists("p.png"));
}

TEST_F(CommandLineUse, SaysHowToGetAPictureWithoutADisplay) {
    for (const char* display : {"", ":9731"}) {
        SetVariable("DISPLAY", display);
        const Result result = Run({mHome.Path()});
        EXPECT_EQ(result.mExitCode, 2);
        EXPECT_EQ(CountLines(result.mErrors), 1) << result.mErrors;
        EXPECT_NE(result.mErrors.find("--screenshot FILE.png"), std::string::npos) << result.mErrors;
    }
}

TEST_F(CommandLineUse, ListsThePanelsAndWhyOthersAreRefused) {
    const std::string panel = ReadFile(ZU_BINARY_DIR "/plugins/SharedProjects.so");
    ASSERT_FALSE(panel.empty());
    mHome.Write("mine/Text.so", "no library at all\n");
    mHome.Write("mine/Cut.so", panel.substr(0, 300));
    mHome.Write("mine/WithoutRecord.so", ReadFile(ZU_BINARY_DIR "/lib/libzuhost.so"));
    std::string other = panel;
    const auto owner = other.find(std::string(host::kPluginNoteOwner) + '\0');
    ASSERT_NE(owner, std::string::npos);
    other[owner + 8] = 77;
    mHome.Write("mine/OtherVersion.so", other);

    SetVariable("ZUHOST_PLUGIN_PATH", mHome.Path("mine"));
    const Result result = Run({"--list-plugins"});
    EXPECT_EQ(result.mExitCode, 0);
    std::map<std::string, std::string> lines;
    std::istringstream output(result.mOutput);
    for (std::string line; std::getline(output, line);)
        for (const char* name :
             {"SharedProjects.so", "Text.so", "Cut.so", "WithoutRecord.so", "OtherVersion.so"})
            if (line.find(std::string("/") + name) != std::string::npos) lines[name] = line;
    EXPECT_EQ(lines.size(), 5u) << result.mOutput;
    EXPECT_FALSE(lines["SharedProjects.so"].starts_with("refused")) << lines["SharedProjects.so"];
    for (const char* name : {"Text.so", "Cut.so", "WithoutRecord.so", "OtherVersion.so"})
        EXPECT_TRUE(lines[name].starts_with("refused: ")) << lines[name];
    EXPECT_NE(lines["WithoutRecord.so"].find("no entry record"), std::string::npos)
        << lines["WithoutRecord.so"];
    EXPECT_NE(lines["OtherVersion.so"].find("77"), std::string::npos) << lines["OtherVersion.so"];
}

}  // namespace
